#include "capture_settings.h"

#include "device_clock.h"

CapturePlace CapturePlaceOf(const Call& call) {
  return {StateFolder(), call.device.name};
}

CaptureSettings CurrentCaptureSettings(Call& call, bool full_frames) {
  CaptureSettings settings = {};
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

void TellCapture(Call& call) {
  const CapturePlace place = CapturePlaceOf(call);
  if (CaptureIsRunning(place)) ChangeCapture(place, CurrentCaptureSettings(call, false));
}
