#include "model/capture.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <span>

#include "device/capabilities.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/link.h"
#include "model/past.h"
#include "model/timing.h"

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
  path.full_frames = full_frames && HasCapability(call, CORVANE_CAP_FULL_FRAMES);
  path.loops = IsLoopback(call);
  const Links links = CurrentLinks(call);
  path.passes = PresentOf(call).passes;
  for (size_t port = 0; port < CORVANE_PORTS; ++port) {
    path.bits_per_second[port] = BitsPerSecond(links[port]);
  }
  path.stamping = CurrentStamping(call);
  settings.clock_offset_ns = ClockOffsetNs(call);
  return settings;
}

CaptureView LookAtCapture(Call& call) {
  CaptureView view = ReadCapture(CapturePlaceOf(call));
  if (!view.refusal.empty()) call.state.Fail("cannot look at the capture: " + view.refusal);
  if (!view.failure.empty()) {
    call.complaint = "the capture of " + call.device.name + " failed: " + view.failure;
  }
  return view;
}

bool EndCapture(Call& call, int (&end)(const CapturePlace& place)) {
  const int error = end(CapturePlaceOf(call));
  if (error == EACCES || error == EPERM) {
    call.state.Fail("cannot stop the capture of " + call.device.name + ": " + strerror(error));
  }
  return error == 0;
}

// The first round does not keep others from writing, for mostly there is nothing to tell. The
// second does, so that settings reach the capture in their order.
bool FollowConfiguration(Call& call) {
  for (const bool writing : {false, true}) {
    CapturePage page;
    if (!OpenToChange(CapturePlaceOf(call), page)) return true;
    CaptureSettings settings;
    if (call.state.Begin(writing)) settings = CurrentCaptureSettings(call, false);
    auto& given = page.shared().settings;
    if (writing && !call.state.failed()) given.Store(settings);
    if (!call.state.Commit()) return false;
    const CaptureSettings last = given.Load();
    if (std::ranges::equal(std::as_bytes(std::span(&last, 1)),
                           std::as_bytes(std::span(&settings, 1)))) {
      return true;
    }
  }
  return true;
}

}  // namespace simulator
