#include "model/clock.h"

#include <algorithm>

#include "model/facts.h"

namespace simulator {
namespace {

constexpr const char* kOffset = "clock_offset";
constexpr const char* kSource = "clock_source";
// More than any clock can be set ahead or behind: a damaged offset must not overflow.
constexpr int64_t kMostOffset = int64_t{1} << 62;

}  // namespace

int64_t HostMs() {
  return HostNs() / 1'000'000;
}

int64_t ClockOffsetNs(Call& call) {
  int64_t offset_ns = 0;
  ReadFact(call, kOffset, offset_ns);
  return std::clamp(offset_ns, -kMostOffset, kMostOffset);
}

int64_t DeviceNs(Call& call) {
  return std::max<int64_t>(0, HostNs() + ClockOffsetNs(call));
}

std::optional<uint32_t> ClockSource(Call& call) {
  int64_t source = 0;
  if (!ReadFact(call, kSource, source)) return std::nullopt;
  return static_cast<uint32_t>(source);
}

void SetClock(Call& call, uint32_t source, int64_t offset_ns) {
  SetFact(call, kOffset, offset_ns);
  SetFact(call, kSource, int64_t{source});
}

}  // namespace simulator
