#include "capture/firmware_update.h"

#include <csignal>
#include <cstdio>
#include <iterator>

#include "capture/wide_string.h"
#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "device/wait.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr uint32_t kProgressMs = 200;

// Shows the progress until the library reports the end; returns what it reports.
int FollowProgress(DeviceHandle device) {
  constexpr const char* kSpinner[] = {"-", "\\", "|", "/"};
  for (size_t turn = 0;; turn = (turn + 1) % std::size(kSpinner)) {
    int32_t percent = 0;
    const int status = CorvaneAPIFirmwareUpdateGetProgress(device, &percent);
    if (status != CORVANE_UPDATE_IN_PROGRESS) return status;
    printf("Progress : %d%% %s  \r", percent, kSpinner[turn]);
    Wait(kProgressMs);
  }
}

int FailUpdate(int status) {
  puts("\nFirmware update failed");
  switch (status) {
    case CORVANE_DEVICE_NOT_FOUND:
      return Fail(status, "Corvane device not found");
    case CORVANE_UPDATE_FILE_INVALID:
      return Fail(status, "Firmware file is not valid (or not for this device model)");
    case CORVANE_UPDATE_FILE_UNREADABLE:
      return Fail(status, "Failed to open firmware file");
    default:
      return status;
  }
}

}  // namespace

int FirmwareUpdate(const CommandNode& leaf) {
  const auto firmware = Text(leaf, kFirmwareFile.key, nullptr);
  if (!firmware) return Fail(kNoFirmwareFile, "No firmware file specified");
  const wchar_t* path = ToWideString(*firmware);
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;

  // A reader of the progress that goes away must not end a running update.
  signal(SIGPIPE, SIG_IGN);
  int status = CorvaneAPIFirmwareUpdateStart(session.device(), path);
  if (status != kSuccess) return Fail(status, "Failed to start firmware update");
  puts(
      "Firmware update started. Do NOT unplug your device, do NOT interrupt the process.\n"
      "If the process gets interrupted, do NOT unplug your device and try again.");
  status = FollowProgress(session.device());
  if (status != kSuccess) return FailUpdate(status);
  puts(
      "Progress : 100%  \n"
      "Firmware update success. Please disconnect and reconnect your device");
  return kSuccess;
}

}  // namespace corvane
