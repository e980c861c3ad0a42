#include <strings.h>

#include <cstdio>
#include <iterator>

#include "device/capabilities.h"
#include "device/report.h"
#include "device/session.h"
#include "device/status.h"
#include "shell/handlers.h"
#include "timing/timing.h"

namespace {

constexpr double kNsPerStep = 0.23283064365386963;  // 10^9 / 2^32: what ppscomp counts
constexpr int kMostSteps = 215;

// A word of the command line, the code that the record holds for it and the word of the report.
struct Choice {
  const char* word;
  uint32_t code;
};

constexpr Choice kSources[] = {{"system", CORVANE_TIME_SYSTEM},
                               {"rtc", CORVANE_TIME_RTC},
                               {"gps", CORVANE_TIME_GPS},
                               {"none", CORVANE_TIME_NONE}};
constexpr Choice kPlaces[] = {{"capture", 0}, {"ingress", 1}, {"egress", 2}};

constexpr const char* kInitializations[] = {"Initialize from system time", "Initialize from RTC",
                                            "Initialize from GPS", "Do not initialize",
                                            "Initialize manually"};
constexpr const char* kPlaceNames[] = {"Capture", "Ingress", "Egress"};
constexpr const char* kTimestampSources[] = {"System clock",     "RTC", "GPS", "Not initialized",
                                             "Manual timestamp", "SNTP"};

// A word that is no choice leaves the field alone.
template <size_t kCount>
void ApplyChoice(const CommandNode& leaf, const char* key, const Choice (&choices)[kCount],
                 uint32_t& field) {
  const std::string word = TextOr(leaf, key, "");
  for (const Choice& choice : choices) {
    if (strcasecmp(word.c_str(), choice.word) == 0) field = choice.code;
  }
}

// The compensation in steps, truncated toward zero; false when a given one is out of range. Without
// one the field becomes 0: unlike the other timing fields it is not preserved.
bool ApplyCompensation(const CommandNode& leaf, FeaturesRecord& features) {
  const double steps = -(Real(leaf, "ppscomp", 0.0) / kNsPerStep);
  const bool in_range = steps > -1.0 && steps < kMostSteps + 1.0;  // false for a NaN
  if (!in_range) return false;
  features.ppscomp = static_cast<uint16_t>(static_cast<int>(steps));
  return true;
}

template <size_t kCount>
const char* NameOf(const char* const (&names)[kCount], uint32_t code) {
  return code < kCount ? names[code] : "Unknown";
}

void PrintFlag(const char* label, uint32_t field, const char* yes, const char* no) {
  printf("\t%s : %s\n", label, field == 1 ? yes : no);
}

void PrintConfiguration(const FeaturesRecord& features) {
  puts("Timing configuration :");
  printf("\tTimestamp initialization : %s\n", NameOf(kInitializations, features.tssource));
  PrintFlag("Wait for sync", features.waitforsync, "on", "off");
  PrintFlag("Force PPS generation", features.forcepps, "on", "off");
  PrintFlag("PPS port output", features.ppsoutput, "on", "off");
  printf("\tPPS compensation : %.02f ns\n", features.ppscomp * -kNsPerStep);
  printf("\tTimestamp on : Port A : %s   Port B : %s\n", NameOf(kPlaceNames, features.portAts),
         NameOf(kPlaceNames, features.portBts));
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
  printf("\tTimestamp source : %s\n", NameOf(kTimestampSources, timing.timestamp_source));
  PrintFlag("Timestamp synchronized", timing.synchronized, "yes", "no");
  printf("\tSatellites : GPS : %d GLONASS : %d Used : %d\n",
         static_cast<int>(timing.satellites_gps), static_cast<int>(timing.satellites_glonass),
         static_cast<int>(timing.satellites_used));
  printf("\tDeviation from PPS : %.01f ns\n", timing.pps_deviation);
  printf("\tCurrent RTC time : %02u/%02u/%04u %02u:%02u:%02u (UTC)\n", timing.rtc_day,
         timing.rtc_month, timing.rtc_year, timing.rtc_hour, timing.rtc_minute, timing.rtc_second);
}

}  // namespace

int TimingConfig(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), kGps)) return Fail(kUnsupported, kTimingUnsupported);
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane Features configuration");

  ApplyChoice(leaf, "tssource", kSources, features.tssource);
  ApplySwitch(leaf, "waitforsync", features.waitforsync);
  ApplySwitch(leaf, "forcepps", features.forcepps);
  ApplySwitch(leaf, "ppsoutput", features.ppsoutput);
  if (!ApplyCompensation(leaf, features)) {
    return Fail(kBadValue,
                "Invalid PPS compensation delay specified. The delay must be in [-50.6;0] ns.");
  }
  ApplyChoice(leaf, "portAts", kPlaces, features.portAts);
  ApplyChoice(leaf, "portBts", kPlaces, features.portBts);
  status = CorvaneAPISetDeviceFeatures(session.device(), features);
  if (status != kSuccess) puts("Failed to set Corvane Features configuration");
  return status;
}

int TimingSave(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), kGps)) return Fail(kUnsupported, kTimingUnsupported);
  const int status = CorvaneAPISaveDeviceFeatures(session.device());
  if (status != kSuccess) puts("Failed to save Corvane timing configuration");
  return status;
}

int TimingStatus(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), kGps)) return Fail(kUnsupported, kTimingUnsupported);
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
