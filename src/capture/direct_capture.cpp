#include "capture/direct_capture.h"

#include <cinttypes>
#include <cstdio>
#include <variant>

#include "capture/capture_start.h"
#include "capture/wide_string.h"
#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr const char* kDefaultPattern = "capture_%N_%Y%M%D%H%m%s.pcapng";

// Converts the user's megabytes to bytes. There is no range check: a negative number becomes a
// huge one.
uint64_t Bytes(int megabytes) {
  return static_cast<uint64_t>(int64_t{megabytes}) << 20;
}

// The settings that both configuration records hold, in places of their own.
template <class Config>
Config CommonSettings(const CommandNode& leaf) {
  Config config = {};
  config.file_count = static_cast<uint32_t>(Integer(leaf, kCaptureCount.key, 1));
  config.max_file_size = Bytes(Integer(leaf, kCaptureSize.key, 0));
  config.loop = IsGiven(leaf, kCaptureLoop.key) ? 1 : 0;
  config.max_cache = Bytes(Integer(leaf, kCaptureMaxCache.key, 100));
  config.max_duration = static_cast<uint32_t>(Integer(leaf, kCaptureMaxDuration.key, 0));
  config.full_frames = IsGiven(leaf, kCaptureFullFrames.key) ? 1 : 0;
  return config;
}

// A name wins over a folder, which is then ignored together with the pattern.
std::variant<DiskDumpConfig, DiskDumpConfigEx> Config(const CommandNode& leaf) {
  if (IsGiven(leaf, kCaptureName.key)) {
    auto config = CommonSettings<DiskDumpConfig>(leaf);
    config.file_name = ToWideString(TextOr(leaf, kCaptureName.key, ""));
    return config;
  }
  auto config = CommonSettings<DiskDumpConfigEx>(leaf);
  config.directory = ToWideString(TextOr(leaf, kCaptureDir.key, ""));
  config.pattern = ToWideString(TextOr(leaf, kCapturePattern.key, kDefaultPattern));
  return config;
}

}  // namespace

int DirectCaptureStatus(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  DiskDumpStatus capture = {};
  const int status = CorvaneAPIDiskDumpGetStatus(session.device(), &capture);
  if (status != kSuccess) return Fail(status, "Failed: cannot get status");
  puts("Direct capture status :");
  printf("\tEnabled : %d\n", capture.enabled != 0 ? 1 : 0);
  printf("\tError : %d\n", capture.error != 0 ? 1 : 0);
  printf("\tCache used : %" PRIu64 "\n", capture.cache_used);
  printf("\tMaximum cache : %" PRIu64 "\n", capture.max_cache);
  printf("\tBytes Written : %" PRIu64 "\n", capture.bytes_written);
  printf("\tFiles Written : %" PRIu64 "\n", capture.files_written);
  return kSuccess;
}

int DirectCaptureStart(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!IsGiven(leaf, kCaptureName.key) && !IsGiven(leaf, kCaptureDir.key)) {
    return Fail(kBadValue,
                "Failed: You must specify either a full file name using --name or an output "
                "directory using --dir");
  }
  const CaptureStart start = StartCapture(session.device(), Config(leaf));
  return Fail(start.status, start.line);
}

int DirectCaptureStop(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const int status = CorvaneAPIDiskDumpStop(session.device());
  puts(status == kSuccess ? "Capture stopped" : "Failed: cannot stop capture");
  return status;
}

}  // namespace corvane
