#include "model/capture.h"

#include <cstring>

#include "model/clock.h"
#include "model/device_records.h"

namespace simulator {

CapturePlace CapturePlaceOf(const Call& call) {
  return {call.state.folder(), call.device.name};
}

CaptureSettings CurrentCaptureSettings(Call& call, bool full_frames) {
  CaptureSettings settings;
  memset(&settings, 0, sizeof settings);  // the padding too: settings are compared as bytes
  PathSettings& path = settings.path;
  path.features = Current<FeaturesRecord>(call, "features");
  path.filter = Current<PacketFilterRecord>(call, "packet_filter");
  path.types = Current<PacketTypeFilterRecord>(call, "packet_type_filter");
  path.dpi = Current<DpiFilterRecord>(call, "dpi_filter");
  memcpy(path.counters, CurrentRecord(call, "counters_v2").data(), sizeof path.counters);
  path.capabilities = call.device.capabilities;
  path.full_frames = full_frames;
  settings.clock_offset_ns = ClockOffsetNs(call);
  return settings;
}

// The first round does not keep others from writing, for mostly there is nothing to tell. The
// second does, so that settings reach the capture in their order.
bool FollowConfiguration(Call& call) {
  const CapturePlace place = CapturePlaceOf(call);
  for (const bool writing : {false, true}) {
    if (!CaptureIsRunning(place)) return true;
    CaptureSettings settings;
    if (call.state.Begin(writing)) settings = CurrentCaptureSettings(call, false);
    if (writing && !call.state.failed()) ChangeCapture(place, settings);
    if (!call.state.Commit()) return false;
    if (CaptureFollows(place, settings)) return true;
  }
  return true;
}

}  // namespace simulator
