#include "model/past.h"

#include <algorithm>

#include "device/capabilities.h"
#include "model/clock.h"
#include "model/facts.h"
#include "model/link.h"
#include "model/timing.h"

namespace simulator {
namespace {

constexpr const char* kPast = "past";

Past StoredPast(Call& call) {
  Past past;
  past.when_ms = past.free_since_ms = StartedMs(call);
  ReadFact(call, kPast, past);
  return past;
}

Past Continue(const Past& stored, const Present& present, int64_t now_ms) {
  Past past = stored;
  past.when_ms = std::max(now_ms, stored.when_ms);  // the host's clock may have been set back
  const int64_t elapsed_ms = past.when_ms - stored.when_ms;
  if (present.all_up) past.all_up_ms += elapsed_ms;
  if (present.steered) past.free_since_ms = past.when_ms;
  for (int port = 0; port < CORVANE_PORTS; ++port) {
    const uint64_t frames = FramesAfter(elapsed_ms, present.rates[port]);
    past.frames.arrived[port] += frames;
    if (present.passes) past.frames.passed[port] += frames;
  }
  return past;
}

}  // namespace

Present PresentOf(Call& call) {
  const Links links = CurrentLinks(call);
  const bool two = HasCapability(call, CORVANE_CAP_DUAL_PORTS);
  Present present;
  present.all_up = links[0].speed != kLinkDown && (!two || links[1].speed != kLinkDown);
  present.passes = two && present.all_up && IsInline(call);
  present.steered = CurrentReference(call).steers;
  for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
    const int64_t most = MixRateAt(TrafficCycle(), port, BitsPerSecond(links[port]));
    const int64_t rate = std::min(call.device.traffic_rate, most);
    present.rates[port] = IsLoopback(call) ? 2 * rate : rate;
  }
  return present;
}

Past PastUpTo(Call& call, int64_t now_ms) {
  return Continue(StoredPast(call), PresentOf(call), now_ms);
}

BeforeChange LookBack(Call& call, int64_t now_ms) {
  const Present present = PresentOf(call);
  return {present, Continue(StoredPast(call), present, now_ms)};
}

void NoteChange(Call& call, const BeforeChange& before) {
  if (PresentOf(call) != before.present) SetFact(call, kPast, before.past);
}

void NoteClockSet(Call& call) {
  Past past = PastUpTo(call, HostMs());
  past.free_since_ms = past.when_ms;
  SetFact(call, kPast, past);
}

}  // namespace simulator
