#include "model/facts.h"

#include <algorithm>

#include "model/clock.h"

namespace simulator {
namespace {

constexpr const char* kStarted = "started";

}  // namespace

int64_t StartedMs(Call& call) {
  int64_t when_ms = 0;
  ReadFact(call, kStarted, when_ms);
  return std::max<int64_t>(0, when_ms);
}

void MarkStarted(Call& call, int64_t when_ms) {
  SetFact(call, kStarted, when_ms);
}

// A start further ahead than a restart takes means that the host's clock was set back.
bool IsAway(Call& call) {
  const int64_t ahead = StartedMs(call) - HostMs();
  return ahead > 0 && ahead <= call.device.boot_ms;
}

bool WantsStart(Call& call) {
  return StartedMs(call) == 0 || StartedMs(call) > HostMs() + call.device.boot_ms;
}

}  // namespace simulator
