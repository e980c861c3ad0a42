#include "model/timing.h"

#include <algorithm>
#include <cmath>

#include "device/capabilities.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/facts.h"
#include "model/link.h"
#include "model/past.h"
#include "records/factory_status.h"

namespace simulator {
namespace {

constexpr double kFreeNsAMs = 1;                          // what a clock that runs free gains
constexpr double kCompensationStep = 1e9 / 4294967296.0;  // ns: 2^-32 s
constexpr double kSteeredDeviation = 4.2;                 // ns

enum : uint32_t { kModulePresent = 0, kModuleAbsent = 1, kModuleLocked = 2 };

// A position in the plane takes three satellites, one in space four.
uint32_t FixOf(const TimingStatusRecord& receiver) {
  const uint32_t possible = receiver.satellites_used >= 4   ? 2
                            : receiver.satellites_used == 3 ? 1
                                                            : 0;
  const bool claims = receiver.gps_fix == 1 || receiver.gps_fix == 2;
  return claims ? std::min(receiver.gps_fix, possible) : 0;
}

bool IsGivenTime(uint32_t source) {
  return source == CORVANE_TIME_MANUAL;
}

// Until it is set, the clock starts from the source that the features name; not at all when that
// has no time yet, or when the device is to wait for a reference.
uint32_t SourceOf(Call& call, const FeaturesRecord& features, const TimingStatusRecord& receiver,
                  bool reference) {
  if (const auto set = ClockSource(call)) return *set;
  const bool has_no_time = features.tssource == CORVANE_TIME_GPS && receiver.gps_fix == 0;
  const bool waits = features.waitforsync == 1 && !reference;
  return has_no_time || waits ? uint32_t{CORVANE_TIME_NONE} : features.tssource;
}

void FillRtc(int64_t device_ns, TimingStatusRecord& status) {
  const tm utc = UtcOf(device_ns / kSecond);
  FillLive(status.rtc_hour, utc.tm_hour);
  FillLive(status.rtc_minute, utc.tm_min);
  FillLive(status.rtc_second, utc.tm_sec);
  FillLive(status.rtc_year, utc.tm_year + 1900);
  FillLive(status.rtc_month, utc.tm_mon + 1);
  FillLive(status.rtc_day, utc.tm_mday);
}

double Compensation(const FeaturesRecord& features) {
  return features.ppscomp * kCompensationStep;
}

// Against the pulses that are there; those that the device makes itself are never off.
double DeviationOf(Call& call, const FeaturesRecord& features, const Reference& reference) {
  if (!reference.is_there || features.forcepps == 1) return 0;
  if (reference.steers) return kSteeredDeviation - Compensation(features);
  const Past past = PastUpTo(call, HostMs());
  const int64_t free_ms = std::max<int64_t>(0, past.when_ms - past.free_since_ms);
  return static_cast<double>(free_ms) * kFreeNsAMs;
}

// Where a frame gets its time stamp: at the capture, some time after it came in at the port and
// some before it has left.
int64_t PlaceNs(uint32_t place) {
  constexpr int64_t kPlaces[] = {0, -400, 800};
  return place < std::size(kPlaces) ? kPlaces[place] : 0;
}

}  // namespace

bool HasModule(const TimingStatusRecord& receiver) {
  return receiver.gps_module == kModulePresent || receiver.gps_module == kModuleLocked;
}

TimingStatusRecord CurrentReceiver(Call& call) {
  auto receiver = Current<TimingStatusRecord>(call, "timing_status");
  const uint64_t in_view = uint64_t{receiver.satellites_gps} + receiver.satellites_glonass;
  receiver.satellites_used =
      static_cast<uint32_t>(std::min<uint64_t>(receiver.satellites_used, in_view));
  FillLive(receiver.gps_module, FixOf(receiver) != 0 ? kModuleLocked : kModulePresent);
  receiver.gps_fix = HasModule(receiver) ? FixOf(receiver) : 0;
  if (receiver.gps_fix == 0) receiver.satellites_used = 0;
  FillLive(receiver.gps_pps, receiver.gps_fix != 0 ? 1 : 0);
  return receiver;
}

// Without a timing board the time stamps are the host's; only network time steers them.
Reference CurrentReference(Call& call) {
  if (!HasCapability(call, CORVANE_CAP_GPS)) {
    const bool network = HasCapability(call, CORVANE_CAP_NTP_TIMESTAMPS);
    return {network, network, CORVANE_TIME_SYSTEM};
  }
  const auto features = Current<FeaturesRecord>(call, "features");
  const TimingStatusRecord receiver = CurrentReceiver(call);
  const bool external = receiver.external_pps == 1 && features.ppsoutput != 1;
  Reference reference;
  reference.is_there = external || (receiver.gps_pps == 1 && receiver.gps_fix != 0);
  reference.source = SourceOf(call, features, receiver, reference.is_there);
  reference.steers = reference.is_there && features.syncts == 1 && features.forcepps != 1 &&
                     !IsGivenTime(reference.source) && reference.source != CORVANE_TIME_NONE;
  return reference;
}

TimingStatusRecord CurrentTimingStatus(Call& call) {
  if (IsGivenRaw(call, "timing_status")) return Current<TimingStatusRecord>(call, "timing_status");
  const auto features = Current<FeaturesRecord>(call, "features");
  const Reference reference = CurrentReference(call);
  TimingStatusRecord status = CurrentReceiver(call);
  if (features.ppsoutput == 1) status.external_pps = 0;  // one socket for both
  FillLive(status.synchronized, reference.steers ? 1 : 0);
  FillLive(status.pps_deviation, DeviationOf(call, features, reference));
  FillLive(status.timestamp_source, reference.source);
  FillRtc(DeviceNs(call), status);
  return status;
}

Stamping CurrentStamping(Call& call) {
  const auto features = Current<FeaturesRecord>(call, "features");
  const Reference reference = CurrentReference(call);
  const bool by_host = features.ts != 1;
  const bool board = HasCapability(call, CORVANE_CAP_GPS);
  const bool waits = board && reference.source == CORVANE_TIME_NONE;
  const int64_t own_offset = waits ? -StartedMs(call) * kNsPerMs : ClockOffsetNs(call);
  const bool is_right = by_host || reference.steers || waits;
  const int64_t compensation = board ? std::llround(Compensation(features)) : 0;
  Stamping stamping;
  stamping.offset_ns = by_host ? 0 : own_offset;
  stamping.free_since_ns = is_right ? 0 : PastUpTo(call, 0).free_since_ms * kNsPerMs;
  stamping.port_ns[0] = PlaceNs(features.portAts) - compensation;
  stamping.port_ns[1] = PlaceNs(features.portBts) - compensation;
  stamping.by_host = by_host ? 1 : 0;
  return stamping;
}

}  // namespace simulator
