#include "timing/time_setting.h"

#include <strings.h>
#include <sys/time.h>

#include <cstdio>
#include <vector>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/device_list.h"
#include "device/selection.h"
#include "device/session.h"
#include "device/wait.h"
#include "line/device_option.h"
#include "timing/sntp_client.h"
#include "timing/timing_config.h"

namespace corvane {

namespace {

constexpr const char* kDefaultServer = "pool.ntp.org";
constexpr int kSntpAttempts = 10;
constexpr uint32_t kSntpRetryMs = 100;
// An answer counts when it falls into the middle of a second, from the first to the last of these.
constexpr uint32_t kEarliestNs = 200'000'000;
constexpr uint32_t kLatestNs = 700'000'000;

struct Targets {
  bool all = false;
  std::vector<DeviceHandle> devices;
};

// What a device that has no timing does to the result.
enum class WithoutTiming : uint8_t { kFails, kIsPassedOver };

struct Messages {
  const char* updated;
  const char* failed;
};

// The devices of --device, one or all. Unlike other commands this prints nothing when it finds one.
int SelectTargets(const CommandNode& leaf, Targets& targets) {
  const std::string text = DeviceText(leaf).value_or("0");
  targets.all = strcasecmp(text.c_str(), "all") == 0;
  if (!targets.all) {
    const DeviceHandle device = ResolveDevice(text.c_str());
    if (device == CORVANE_NO_DEVICE) return FailSelection();
    targets.devices.push_back(device);
    return kSuccess;
  }
  const DeviceList* list = AttachedDevices();
  if (list == nullptr) return FailSelection();
  for (const DeviceNode* node = list->first; node != nullptr; node = node->next) {
    targets.devices.push_back(node->handle);
  }
  return kSuccess;
}

// Sets the clock of every target; make_time makes a new record for each. The last call decides the
// result; a device without timing counts as a failing call or not at all.
template <class MakeTime>
int SetTimes(const Targets& targets, const Messages& messages, WithoutTiming without_timing,
             MakeTime make_time) {
  int result = kSuccess;
  int position = 0;
  for (const DeviceHandle device : targets.devices) {
    if (targets.all) printf("Corvane %d: ", position++);
    if (!Supports(device, CORVANE_CAP_GPS)) {
      puts(kTimingUnsupported);
      if (without_timing == WithoutTiming::kFails) result = kUnsupported;
      continue;
    }
    result = CorvaneAPISetTimingTime(device, make_time());
    puts(result == kSuccess ? messages.updated : messages.failed);
  }
  return result;
}

// Asks the server until an answer counts. False after the last attempt.
bool ObtainTime(const std::string& server, TimingTimeRecord& time) {
  for (int attempt = 0; attempt < kSntpAttempts; ++attempt) {
    if (QuerySntp(server.c_str(), time.seconds, time.nanoseconds) != 0) {
      puts("Failed to get time from SNTP, retrying");
    } else if (time.nanoseconds >= kEarliestNs && time.nanoseconds <= kLatestNs) {
      return true;
    }
    Wait(kSntpRetryMs);
  }
  return false;
}

TimingTimeRecord SystemTime() {
  timeval now = {};
  gettimeofday(&now, nullptr);
  return {CORVANE_TIME_SYSTEM, static_cast<uint32_t>(now.tv_sec),
          static_cast<uint32_t>(now.tv_usec) * 1000};
}

}  // namespace

int TimingSetSntp(const CommandNode& leaf) {
  const Session session;
  Targets targets;
  const int status = SelectTargets(leaf, targets);
  if (status != kSuccess) return status;
  TimingTimeRecord time = {CORVANE_TIME_SNTP, 0, 0};
  if (!ObtainTime(TextOr(leaf, kSntpServer.key, kDefaultServer), time)) {
    return Fail(kRejected, "SNTP : Failed to get time from server");
  }
  puts("SNTP : time obtained from server");
  return SetTimes(targets, {"Time updated", "Failed to set time from SNTP"}, WithoutTiming::kFails,
                  [&time] { return time; });
}

int TimingSetGps(const CommandNode& leaf) {
  const Session session;
  Targets targets;
  const int status = SelectTargets(leaf, targets);
  if (status != kSuccess) return status;
  return SetTimes(targets, {"Time source updated", "Failed to set time from GPS"},
                  WithoutTiming::kIsPassedOver, [] {
                    return TimingTimeRecord{CORVANE_TIME_GPS, 0, 0};
                  });
}

int TimingSetManual(const CommandNode& leaf) {
  const Session session;
  Targets targets;
  const int status = SelectTargets(leaf, targets);
  if (status != kSuccess) return status;
  const TimingTimeRecord time = {CORVANE_TIME_MANUAL,
                                 static_cast<uint32_t>(Integer(leaf, kTimestamp.key, 0)),
                                 static_cast<uint32_t>(Integer(leaf, kTimestampNs.key, 0))};
  return SetTimes(targets, {"Time updated", "Failed to set manual timestamp"},
                  WithoutTiming::kIsPassedOver, [&time] { return time; });
}

int TimingSetSystem(const CommandNode& leaf) {
  const Session session;
  Targets targets;
  const int status = SelectTargets(leaf, targets);
  if (status != kSuccess) return status;
  return SetTimes(targets, {"Time updated", "Failed to set system timestamp"},
                  WithoutTiming::kIsPassedOver, SystemTime);
}

}  // namespace corvane
