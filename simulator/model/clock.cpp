#include "model/clock.h"

#include <algorithm>
#include <chrono>

namespace {

constexpr const char* kOffset = "clock_offset";
constexpr const char* kSource = "clock_source";
// More than any clock can be set ahead or behind; what is damaged must not overflow.
constexpr int64_t kMostOffset = int64_t{1} << 62;

}  // namespace

int64_t HostNs() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

int64_t ClockOffsetNs(Call& call) {
  return std::clamp(NumberFact(call, kOffset), -kMostOffset, kMostOffset);
}

int64_t DeviceNs(Call& call) {
  return std::max<int64_t>(0, HostNs() + ClockOffsetNs(call));
}

std::optional<uint32_t> ClockSource(Call& call) {
  if (!call.state.Fact(call.device.name, kSource, sizeof(int64_t))) return std::nullopt;
  return static_cast<uint32_t>(NumberFact(call, kSource));
}

void SetClock(Call& call, uint32_t source, int64_t offset_ns) {
  call.state.SetFact(call.device.name, kOffset, FactOf(offset_ns));
  call.state.SetFact(call.device.name, kSource, FactOf(source));
}
