#include <cstring>

#include "device/capabilities.h"
#include "tap/filters.h"

namespace simulator {
namespace {

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
    if (Rarity(value_[i]) > Rarity(value_[anchor_])) anchor_ = i;
  }
}

bool DpiFilter::MatchesAt(const uint8_t* window) const {
  for (size_t i = 0; i < size_; ++i) {
    if (((window[i] ^ value_[i]) & mask_[i]) != 0) return false;
  }
  return true;
}

// Looks for the rarest demanded byte first.
bool DpiFilter::Keeps(const uint8_t* bytes, size_t length) const {
  if (size_ == 0) return true;
  if (length < size_) return false;
  const uint8_t* at = bytes + anchor_;
  const uint8_t* const end = at + (length - size_ + 1);
  for (; at != end; ++at) {
    at = static_cast<const uint8_t*>(memchr(at, value_[anchor_], static_cast<size_t>(end - at)));
    if (at == nullptr) return false;
    if (MatchesAt(at - anchor_)) return true;
  }
  return false;
}

}  // namespace simulator
