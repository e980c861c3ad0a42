// The counters of the traffic: those of the capture that runs; without one, each shows what it
// would have counted of the built-in mix with its present conditions since the device started.
#include <algorithm>
#include <cstring>

#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/capture.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/facts.h"
#include "traffic/mix_counts.h"

using namespace simulator;

namespace {

constexpr int64_t kNsPerMs = 1'000'000;

void FillCounters(Call& call, uint64_t frames, StatisticsRecord& statistics) {
  const Bytes counters = CurrentRecord(call, "counters_v2");
  statistics.version = 2;
  for (size_t i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    CounterV2Config counter;
    memcpy(&counter, counters.data() + i * sizeof counter, sizeof counter);
    statistics.counters.v2[i] = CounterValue(TrafficCycle(), frames, counter);
  }
}

void FillPorts(int64_t elapsed_ms, uint64_t frames, StatisticsRecord& statistics) {
  statistics.version = 1;
  statistics.counters.v1.link_up_ms = static_cast<uint64_t>(elapsed_ms);
  for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
    statistics.counters.v1.ports[port] = CountPort(TrafficCycle(), frames, port);
  }
}

// True when the traffic is the built-in mix at its own times: only then are its counts known
// without a capture.
bool HasMix(const DeviceConfiguration& device) {
  return device.ports[0].kind == SourceKind::kUnset && device.ports[1].kind == SourceKind::kUnset;
}

void FillFromCapture(const CaptureReport& capture, uint32_t capabilities, int64_t elapsed_ms,
                     StatisticsRecord& statistics) {
  statistics.sw_dropped = capture.frames_lost;
  if ((capabilities & CORVANE_CAP_STATISTICS_V2) != 0) {
    statistics.version = 2;
    memcpy(statistics.counters.v2, capture.counts.counters, sizeof capture.counts.counters);
    return;
  }
  statistics.version = 1;
  statistics.counters.v1.link_up_ms = static_cast<uint64_t>(elapsed_ms);
  memcpy(statistics.counters.v1.ports, capture.counts.ports, sizeof capture.counts.ports);
}

int32_t FillStatistics(Call& call, StatisticsRecord& statistics) {
  if (IsGivenRaw(call, "statistics")) {
    memcpy(&statistics, CurrentRecord(call, "statistics").data(), sizeof statistics);
    return CORVANE_OK;
  }
  const uint32_t capabilities = call.device.capabilities;
  if ((capabilities & (CORVANE_CAP_STATISTICS_V1 | CORVANE_CAP_STATISTICS_V2)) == 0)
    return kNotSupported;
  // The host's clock may have been set back.
  const int64_t elapsed_ms = std::max(HostMs() - StartedMs(call), int64_t{0});
  const uint64_t frames = FramesAfter(elapsed_ms, call.device.traffic_rate);
  statistics.timestamp = static_cast<uint64_t>(elapsed_ms * kNsPerMs);
  const CaptureReport capture = ReadCapture(CapturePlaceOf(call));
  if (capture.state == CaptureState::kRunning || !HasMix(call.device)) {
    FillFromCapture(capture, capabilities, elapsed_ms, statistics);
  } else if ((capabilities & CORVANE_CAP_STATISTICS_V2) != 0) {
    FillCounters(call, frames, statistics);
  } else {
    FillPorts(elapsed_ms, frames, statistics);
  }
  return CORVANE_OK;
}

}  // namespace

extern "C" {

int32_t CorvaneAPIGetStatistics(DeviceHandle device, StatisticsRecord* statistics) {
  return FillCall(__func__, device, 0, "", statistics, FillStatistics);
}

}  // extern "C"
