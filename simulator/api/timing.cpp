// The device's clock and its timing hardware.
#include "model/timing.h"

#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/past.h"

using namespace simulator;

namespace {

// The GPS receiver knows the time when it has a fix; with every other source the caller gives it.
bool IsSettable(Call& call, const TimingTimeRecord& time) {
  if (time.time_source == CORVANE_TIME_GPS) {
    return IsGivenRaw(call, "timing_status") || CurrentReceiver(call).gps_fix != 0;
  }
  const bool known = time.time_source == CORVANE_TIME_SYSTEM ||
                     time.time_source == CORVANE_TIME_MANUAL ||
                     time.time_source == CORVANE_TIME_SNTP;
  return known && time.nanoseconds < kSecond;
}

int64_t OffsetOf(const TimingTimeRecord& time) {
  if (time.time_source == CORVANE_TIME_GPS) return 0;
  return time.seconds * kSecond + time.nanoseconds - HostNs();
}

}  // namespace

extern "C" {

int32_t CorvaneAPIGetTimingStatus(DeviceHandle device, TimingStatusRecord* status) {
  return ReportCall(__func__, device, CORVANE_CAP_GPS, status, CurrentTimingStatus);
}

int32_t CorvaneAPISetTimingTime(DeviceHandle device, TimingTimeRecord time) {
  const std::string arguments = HexArgument("record", &time, sizeof time);
  return DeviceCall(__func__, device, Access::kWrite, CORVANE_CAP_GPS, arguments, [&](Call& call) {
    if (!IsSettable(call, time)) return kInvalidArgument;
    SetClock(call, time.time_source, OffsetOf(time));
    NoteClockSet(call);
    return int32_t{CORVANE_OK};
  });
}

}  // extern "C"
