// The counters of the traffic: those of the capture that runs; without one, each shows what it
// would have counted of the built-in mix with its present conditions since the device started.
#include <cstring>

#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/capture.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/facts.h"
#include "model/link.h"
#include "model/past.h"

using namespace simulator;

namespace {

void FillCounters(Call& call, const MixFrames& frames, StatisticsRecord& statistics) {
  const auto counters = Current<Counters>(call, "counters_v2");
  for (size_t i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    statistics.counters.v2[i] = CounterValue(TrafficCycle(), frames, counters[i]);
  }
}

void FillPorts(const MixFrames& frames, StatisticsRecord& statistics) {
  for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
    statistics.counters.v1.ports[port] = CountPort(TrafficCycle(), frames, port);
  }
}

// True when the traffic is the built-in mix at its own times: only then are its counts known
// without a capture.
bool HasMix(const DeviceConfiguration& device) {
  return device.ports[0].kind == SourceKind::kUnset && device.ports[1].kind == SourceKind::kUnset;
}

void FillFromCapture(const CaptureReport& capture, StatisticsRecord& statistics) {
  statistics.sw_dropped = capture.frames_lost;
  if (statistics.version == 2) {
    memcpy(statistics.counters.v2, capture.counts.counters, sizeof capture.counts.counters);
  } else {
    memcpy(statistics.counters.v1.ports, capture.counts.ports, sizeof capture.counts.ports);
  }
}

int32_t FillStatistics(Call& call, StatisticsRecord& statistics) {
  if (IsGivenRaw(call, "statistics")) {
    statistics = Current<StatisticsRecord>(call, "statistics");
    return CORVANE_OK;
  }
  if (!HasCapability(call, CORVANE_CAP_STATISTICS_V1 | CORVANE_CAP_STATISTICS_V2))
    return kNotSupported;
  const Past past = PastUpTo(call, HostMs());
  const int64_t elapsed_ms = past.when_ms - StartedMs(call);
  statistics.version = HasCapability(call, CORVANE_CAP_STATISTICS_V2) ? 2 : 1;
  statistics.timestamp = static_cast<uint64_t>(elapsed_ms * kNsPerMs);
  if (statistics.version == 1) {
    statistics.counters.v1.link_up_ms = static_cast<uint64_t>(past.all_up_ms);
    statistics.counters.v1.link_down_ms = static_cast<uint64_t>(elapsed_ms - past.all_up_ms);
  }
  const CaptureReport capture = LookAtCapture(call).report;
  if (capture.state == CaptureState::kRunning || !HasMix(call.device)) {
    FillFromCapture(capture, statistics);
  } else if (statistics.version == 2) {
    FillCounters(call, past.frames, statistics);
  } else {
    FillPorts(past.frames, statistics);
  }
  PutGiven(call, "statistics", &statistics);
  return CORVANE_OK;
}

}  // namespace

extern "C" {

int32_t CorvaneAPIGetStatistics(DeviceHandle device, StatisticsRecord* statistics) {
  return FillCall(__func__, device, 0, "", statistics, FillStatistics);
}

}  // extern "C"
