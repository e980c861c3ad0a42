// The device's clock and its timing hardware.
#include <ctime>

#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "records/factory_status.h"

using namespace simulator;

namespace {

constexpr int64_t kSecond = 1'000'000'000;  // ns

// The GPS receiver knows the time; with every other source the caller gives it.
bool IsSettable(const TimingTimeRecord& time) {
  if (time.time_source == CORVANE_TIME_GPS) return true;
  const bool known = time.time_source == CORVANE_TIME_SYSTEM ||
                     time.time_source == CORVANE_TIME_MANUAL ||
                     time.time_source == CORVANE_TIME_SNTP;
  return known && time.nanoseconds < kSecond;
}

int64_t OffsetOf(const TimingTimeRecord& time) {
  if (time.time_source == CORVANE_TIME_GPS) return 0;
  return time.seconds * kSecond + time.nanoseconds - HostNs();
}

void FillRtc(int64_t device_ns, TimingStatusRecord& status) {
  const auto seconds = static_cast<time_t>(device_ns / kSecond);
  tm utc = {};
  gmtime_r(&seconds, &utc);
  status.rtc_hour = static_cast<uint32_t>(utc.tm_hour);
  status.rtc_minute = static_cast<uint32_t>(utc.tm_min);
  status.rtc_second = static_cast<uint32_t>(utc.tm_sec);
  status.rtc_year = static_cast<uint32_t>(utc.tm_year + 1900);
  status.rtc_month = static_cast<uint32_t>(utc.tm_mon + 1);
  status.rtc_day = static_cast<uint32_t>(utc.tm_mday);
}

// Until the clock is set, its source is the one that the features name; both use the same codes.
uint32_t LiveSource(Call& call) {
  if (const auto source = ClockSource(call)) return *source;
  return Current<FeaturesRecord>(call, "features").tssource;
}

void FillTimingStatus(Call& call, TimingStatusRecord& status) {
  status = Current<TimingStatusRecord>(call, "timing_status");
  if (IsGivenRaw(call, "timing_status")) return;
  if (status.timestamp_source == kLive) status.timestamp_source = LiveSource(call);
  FillRtc(DeviceNs(call), status);
}

}  // namespace

extern "C" {

int32_t CorvaneAPIGetTimingStatus(DeviceHandle device, TimingStatusRecord* status) {
  return FillCall(__func__, device, CORVANE_CAP_GPS, "", status,
                  [](Call& call, TimingStatusRecord& record) {
                    FillTimingStatus(call, record);
                    return CORVANE_OK;
                  });
}

int32_t CorvaneAPISetTimingTime(DeviceHandle device, TimingTimeRecord time) {
  const std::string arguments = HexArgument("record", &time, sizeof time);
  return DeviceCall(__func__, device, Access::kWrite, CORVANE_CAP_GPS, arguments, [&](Call& call) {
    if (!IsSettable(time)) return kInvalidArgument;
    SetClock(call, time.time_source, OffsetOf(time));
    return int32_t{CORVANE_OK};
  });
}

}  // extern "C"
