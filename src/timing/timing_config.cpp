#include "timing/timing_config.h"

#include <cmath>
#include <cstdio>
#include <iterator>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr double kNsPerStep = 0.23283064365386963;  // 10^9 / 2^32: what ppscomp counts
constexpr int kMostSteps = 215;

// The compensation in steps, truncated toward zero; false when it is out of range.
bool SetCompensation(double nanoseconds, FeaturesRecord& features) {
  const double steps = -(nanoseconds / kNsPerStep);
  const bool in_range = steps > -1.0 && steps < kMostSteps + 1.0;  // false for a NaN
  if (!in_range) return false;
  features.ppscomp = static_cast<uint16_t>(static_cast<int>(steps));
  return true;
}

// Without one the field becomes 0: unlike the other timing fields it is not preserved.
bool ApplyCompensation(const CommandNode& leaf, FeaturesRecord& features) {
  return SetCompensation(Real(leaf, kPpsCompensation.parameter.key, 0.0), features);
}

const char* SourceName(uint32_t code) {
  return code < std::size(kTimestampSources) ? kTimestampSources[code] : "Unknown";
}

void PrintFlag(const char* label, uint32_t field, const char* yes, const char* no) {
  printf("\t%s : %s\n", label, field == 1 ? yes : no);
}

const char* ChoiceName(const TimingChoice& row, const FeaturesRecord& features) {
  return NameOf(row.choices, features.*row.field);
}

void PrintConfiguration(const FeaturesRecord& features) {
  puts("Timing configuration :");
  printf("\t%s : %s\n", kTimestampInitialization.label,
         ChoiceName(kTimestampInitialization, features));
  for (const auto& row : kTimingSwitches) PrintFlag(row.label, features.*row.field, "on", "off");
  printf("\tPPS compensation : %.02f ns\n", features.ppscomp * -kNsPerStep);
  printf("\tTimestamp on");
  const char* separator = " : ";
  for (const TimingChoice& row : kPortTimestampPlaces) {
    printf("%s%s : %s", separator, row.label, ChoiceName(row, features));
    separator = "   ";
  }
  putchar('\n');
}

const char* GpsModuleWord(uint32_t gps_module) {
  if (gps_module == 0) return "yes";
  return gps_module == 2 ? "locked" : "no";
}

const char* GpsFixWord(uint32_t gps_fix) {
  if (gps_fix == 2) return "3D fix";
  return gps_fix == 1 ? "2D fix" : "no";
}

void PrintStatus(const TimingStatusRecord& timing) {
  puts("\nTiming status :");
  printf("\tGPS module detected : %s\n", GpsModuleWord(timing.gps_module));
  printf("\tGPS fix : %s\n", GpsFixWord(timing.gps_fix));
  PrintFlag("GPS PPS", timing.gps_pps, "detected", "not detected");
  PrintFlag("External PPS", timing.external_pps, "detected", "not detected");
  printf("\tTimestamp source : %s\n", SourceName(timing.timestamp_source));
  PrintFlag("Timestamp synchronized", timing.synchronized, "yes", "no");
  printf("\tSatellites : GPS : %d GLONASS : %d Used : %d\n",
         static_cast<int>(timing.satellites_gps), static_cast<int>(timing.satellites_glonass),
         static_cast<int>(timing.satellites_used));
  printf("\tDeviation from PPS : %.01f ns\n", timing.pps_deviation);
  printf("\tCurrent RTC time : %02u/%02u/%04u %02u:%02u:%02u (UTC)\n", timing.rtc_day,
         timing.rtc_month, timing.rtc_year, timing.rtc_hour, timing.rtc_minute, timing.rtc_second);
}

}  // namespace

// Rounded up to hundredths, far less than a step, so that truncation gives the same step.
std::optional<Value> ShowCompensation(const FeaturesRecord& features) {
  return features.ppscomp == 0 ? 0.0 : std::ceil(features.ppscomp * kNsPerStep * 100) / -100;
}

std::string StoreCompensation(const Value& value, const DeviceKind&, FeaturesRecord& features) {
  const auto* real = std::get_if<double>(&value);
  const auto whole = NumberIn(value, -kMostSteps, 0);
  const bool given = real != nullptr || whole;
  const double nanoseconds = real != nullptr ? *real : static_cast<double>(whole.value_or(0));
  if (given && SetCompensation(nanoseconds, features)) return "";
  return "nanoseconds from -50.29 to 0";
}

int TimingConfig(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_GPS)) return Fail(kUnsupported, kTimingUnsupported);
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane Features configuration");

  ApplyChoice(leaf, kTimestampInitialization, features);
  ApplySwitches(leaf, kTimingSwitches, features);
  if (!ApplyCompensation(leaf, features)) {
    return Fail(kBadValue,
                "Invalid PPS compensation delay specified. The delay must be in [-50.6;0] ns.");
  }
  for (const TimingChoice& row : kPortTimestampPlaces) ApplyChoice(leaf, row, features);
  status = CorvaneAPISetDeviceFeatures(session.device(), features);
  if (status != kSuccess) puts("Failed to set Corvane Features configuration");
  return status;
}

int TimingSave(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_GPS)) return Fail(kUnsupported, kTimingUnsupported);
  const int status = CorvaneAPISaveDeviceFeatures(session.device());
  if (status != kSuccess) puts("Failed to save Corvane timing configuration");
  return status;
}

int TimingStatus(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_GPS)) return Fail(kUnsupported, kTimingUnsupported);
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane timing configuration");
  TimingStatusRecord timing = {};
  status = CorvaneAPIGetTimingStatus(session.device(), &timing);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane timing status");
  PrintConfiguration(features);
  PrintStatus(timing);
  return kSuccess;
}

}  // namespace corvane
