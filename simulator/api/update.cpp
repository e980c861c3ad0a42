// Firmware update. The file is read when the update starts; the progress calls report the result.
#include <algorithm>
#include <cstring>

#include "journal/wide_text.h"
#include "library/call_frame.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/facts.h"
#include "model/firmware_file.h"

using namespace simulator;
using corvane::TextArgument;
using corvane::Utf8Of;

namespace {

constexpr const char* kUpdate = "update";

// The fact that an update was started.
struct Update {
  int64_t start_ms;        // on the host's clock
  VersionRecord versions;  // the device's after the update
  int32_t status;          // how it ends
};

VersionRecord UpdatedVersions(Call& call, const FirmwareFile& firmware) {
  VersionRecord versions = CurrentVersions(call);
  memcpy(versions.sw_firmware, firmware.sw_firmware, sizeof versions.sw_firmware);
  versions.hw_firmware = firmware.hw_firmware.value_or(versions.hw_firmware);
  return versions;
}

int32_t StartUpdate(Call& call, const FirmwareFile& firmware) {
  Update update = {HostMs(), UpdatedVersions(call, firmware), firmware.status};
  if (update.status == CORVANE_OK && firmware.type_code != call.device.type_code) {
    update.status = CORVANE_UPDATE_FILE_INVALID;
  }
  SetFact(call, kUpdate, update);
  return CORVANE_OK;
}

// The device stores its new versions for good, at the end.
int32_t FinishUpdate(Call& call, const Update& update) {
  call.state.SetConfiguration(call.device.name, "versions", BytesOf(update.versions));
  call.state.SaveConfiguration(call.device.name, "versions");
  return CORVANE_OK;
}

int32_t UpdateProgress(Call& call, int32_t& percent) {
  Update update;
  if (!ReadFact(call, kUpdate, update)) return kInvalidArgument;
  if (update.status != CORVANE_OK) return update.status;
  const int64_t now_ms = HostMs();
  if (update.start_ms > now_ms) {  // the host's clock was set back
    update.start_ms = now_ms;
    SetFact(call, kUpdate, update);
  }
  const int64_t elapsed_ms = now_ms - std::max<int64_t>(0, update.start_ms);
  const bool running = elapsed_ms < call.device.update_ms;
  percent = running ? static_cast<int32_t>(elapsed_ms * 100 / call.device.update_ms) : 100;
  call.journal += " percent=" + std::to_string(percent);
  return running ? CORVANE_UPDATE_IN_PROGRESS : FinishUpdate(call, update);
}

}  // namespace

extern "C" {

int32_t CorvaneAPIFirmwareUpdateStart(DeviceHandle device, const wchar_t* path) {
  const FirmwareFile firmware = path == nullptr ? FirmwareFile{} : ReadFirmwareFile(Utf8Of(path));
  return DeviceCall(__func__, device, Access::kWrite, CORVANE_CAP_UPDATE,
                    TextArgument("path", path), [&](Call& call) {
                      if (path == nullptr) return kInvalidArgument;
                      return StartUpdate(call, firmware);
                    });
}

int32_t CorvaneAPIFirmwareUpdateGetProgress(DeviceHandle device, int32_t* percent) {
  return DeviceCall(__func__, device, Access::kWrite, CORVANE_CAP_UPDATE, "", [&](Call& call) {
    if (percent == nullptr) return kInvalidArgument;
    return UpdateProgress(call, *percent);
  });
}

}  // extern "C"
