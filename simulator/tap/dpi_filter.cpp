#include <cstring>

#include "device/capabilities.h"
#include "tap/filters.h"

namespace simulator {
namespace {

constexpr size_t kBlock = 16;  // positions compared at once
using Block = uint8_t __attribute__((vector_size(kBlock)));

Block Load(const uint8_t* bytes) {
  Block block;
  memcpy(&block, bytes, sizeof block);
  return block;
}

bool AnySet(Block block) {
  uint64_t halves[2];
  memcpy(halves, &block, sizeof halves);
  return (halves[0] | halves[1]) != 0;
}

// How rare the byte is in frames: padding is everywhere.
int Rarity(uint8_t byte) {
  if (byte == 0) return 0;
  return byte == 0xFF || byte == ' ' ? 1 : 2;
}

}  // namespace

DpiFilter::DpiFilter(const DpiFilterRecord& record, uint32_t capabilities) {
  const uint32_t demanded = record.mask & 0xFFFF;
  if (record.enabled != 1 || demanded == 0 || (capabilities & CORVANE_CAP_FILTER) == 0) return;
  const auto first = static_cast<size_t>(__builtin_ctz(demanded));
  const auto last = static_cast<size_t>(31 - __builtin_clz(demanded));
  size_ = last - first + 1;
  for (size_t i = 0; i < size_; ++i) {
    if ((demanded >> (first + i) & 1) == 0) continue;
    value_[i] = record.data[first + i];
    mask_[i] = 0xFF;
    if (Rarity(value_[i]) > Rarity(value_[anchors_[0]])) anchors_[0] = i;
  }
  // The second anchor is as far from the first as possible, where it depends on it least.
  anchors_[1] = anchors_[0] == 0 ? size_ - 1 : 0;
  for (size_t i = 0; i < size_; ++i) {
    if (mask_[i] == 0 || i == anchors_[0]) continue;
    if (Rarity(value_[i]) >= Rarity(value_[anchors_[1]])) anchors_[1] = i;
  }
}

bool DpiFilter::MatchesAt(const uint8_t* window) const {
  for (size_t i = 0; i < size_; ++i) {
    if (((window[i] ^ value_[i]) & mask_[i]) != 0) return false;
  }
  return true;
}

// True when the pattern begins at a position from first up to, not including, last.
bool DpiFilter::FindsFrom(const uint8_t* first, const uint8_t* last) const {
  for (; first != last; ++first) {
    if (MatchesAt(first)) return true;
  }
  return false;
}

// For most blocks of positions one comparison shows that no position in them has both anchors.
bool DpiFilter::Keeps(const uint8_t* bytes, size_t length) const {
  if (size_ == 0) return true;
  if (length < size_) return false;
  const uint8_t* const last = bytes + (length - size_ + 1);
  const Block wanted[2] = {Block{} + value_[anchors_[0]], Block{} + value_[anchors_[1]]};
  for (; last - bytes >= static_cast<ptrdiff_t>(kBlock); bytes += kBlock) {
    const auto both =
        (Load(bytes + anchors_[0]) == wanted[0]) & (Load(bytes + anchors_[1]) == wanted[1]);
    if (AnySet(reinterpret_cast<Block>(both)) && FindsFrom(bytes, bytes + kBlock)) return true;
  }
  return FindsFrom(bytes, last);
}

}  // namespace simulator
