// Direct capture. The facts of a device hold its configuration; a process in the background does
// the work and reports on it.
#include "model/capture.h"

#include <algorithm>
#include <cstring>

#include "journal/wide_text.h"
#include "library/call_frame.h"
#include "model/device_records.h"
#include "model/facts.h"

using namespace simulator;
using corvane::TextArgument;
using corvane::Utf8Of;

namespace {

constexpr const char* kSettings = "dump_settings";

// The numbers of the two configuration records.
struct DumpSettings {
  uint64_t max_file_size;  // bytes, 0 for no limit
  uint64_t max_cache;      // bytes
  uint32_t file_count;     // 0 for no limit
  uint32_t max_duration;   // seconds a file, 0 for no limit
  uint32_t loop;
  uint32_t full_frames;
};

// ---- Configuration

// A text of a configuration record.
struct DumpText {
  const char* name;  // in the journal; the fact has "dump_" before it
  const wchar_t* text;
};

// The two configuration records name their numbers alike.
template <class Config>
DumpSettings SettingsOf(const Config& config) {
  return {.max_file_size = config.max_file_size,
          .max_cache = config.max_cache,
          .file_count = config.file_count,
          .max_duration = config.max_duration,
          .loop = config.loop,
          .full_frames = config.full_frames};
}

std::string TextFact(Call& call, const char* name) {
  const auto bytes =
      call.state.Fact(call.device.name, std::string("dump_") + name, DeviceState::kAnySize);
  return bytes ? std::string(bytes->begin(), std::find(bytes->begin(), bytes->end(), '\0')) : "";
}

void SetTexts(Call& call, std::initializer_list<DumpText> texts) {
  for (const char* fact : {"dump_file_name", "dump_directory", "dump_pattern"}) {
    call.state.ForgetFact(call.device.name, fact);
  }
  for (const DumpText& text : texts) {
    const std::string utf8 = Utf8Of(text.text);
    const char* end = utf8.c_str() + utf8.size() + 1;  // a fact has at least one byte
    call.state.SetFact(call.device.name, std::string("dump_") + text.name,
                       Bytes(utf8.c_str(), end));
  }
}

// record: the configuration without its pointers, which mean nothing to a reader of the journal.
template <class Config>
int32_t Configure(const char* function, DeviceHandle device, const Config& record,
                  std::initializer_list<DumpText> texts) {
  std::string arguments = HexArgument("record", &record, sizeof record);
  for (const DumpText& text : texts) arguments += TextArgument(text.name, text.text);
  return DeviceCall(function, device, Access::kWrite, 0, arguments, [&](Call& call) -> int32_t {
    for (const DumpText& text : texts) {
      if (text.text == nullptr) return kInvalidArgument;
    }
    if (LookAtCapture(call).runs) return kCaptureRuns;
    SetFact(call, kSettings, SettingsOf(record));
    SetTexts(call, texts);
    return CORVANE_OK;
  });
}

// ---- Status

// The cache maximum comes from the configuration, which may be newer than the last capture.
DiskDumpStatus CurrentStatus(Call& call) {
  if (IsGivenRaw(call, "disk_dump_status")) {
    return Current<DiskDumpStatus>(call, "disk_dump_status");
  }
  DiskDumpStatus status = LookAtCapture(call).report.status;
  DumpSettings settings = {};
  if (ReadFact(call, kSettings, settings)) status.max_cache = settings.max_cache;
  PutGiven(call, "disk_dump_status", &status);
  return status;
}

CaptureTarget TargetOf(Call& call, const DumpSettings& settings) {
  CaptureTarget target;
  target.file_name = TextFact(call, "file_name");
  target.directory = TextFact(call, "directory");
  target.pattern = TextFact(call, "pattern");
  target.max_file_size = settings.max_file_size;
  target.file_count = settings.file_count;
  target.max_duration = settings.max_duration;
  target.loop = settings.loop != 0;
  target.max_cache = settings.max_cache;
  target.device_name = call.device.name;
  std::replace(target.device_name.begin(), target.device_name.end(), ':', '-');
  return target;
}

int32_t StartDump(Call& call) {
  DumpSettings settings;
  if (LookAtCapture(call).runs) return kCaptureRuns;
  if (!ReadFact(call, kSettings, settings)) return kInvalidArgument;
  CaptureOrder order = {};
  order.settings = CurrentCaptureSettings(call, settings.full_frames != 0);
  order.target = TargetOf(call, settings);
  std::copy(std::begin(call.device.ports), std::end(call.device.ports), order.source.ports);
  order.source.mix_rate = call.device.traffic_rate;
  call.afterwards = [&call, order]() -> int32_t {
    std::string reason;
    if (StartCapture(CapturePlaceOf(call), order, reason)) return CORVANE_OK;
    if (reason.ends_with(kAnotherRuns)) return kCaptureRuns;
    call.complaint = "cannot start the capture: " + reason;
    return kCaptureFailed;
  };
  return CORVANE_OK;
}

int32_t StopDump(Call& call) {
  const bool ended = EndCapture(call, StopCapture);
  LookAtCapture(call);
  return ended ? int32_t{CORVANE_OK} : kCaptureFailed;
}

}  // namespace

extern "C" {

int32_t CorvaneAPIDiskDumpGetStatus(DeviceHandle device, DiskDumpStatus* status) {
  return ReportCall(__func__, device, 0, status, CurrentStatus);
}

int32_t CorvaneAPIDiskDumpSetConfig(DeviceHandle device, DiskDumpConfig config) {
  const DumpText name = {"file_name", config.file_name};
  config.file_name = nullptr;
  return Configure(__func__, device, config, {name});
}

int32_t CorvaneAPIDiskDumpSetConfigEx(DeviceHandle device, DiskDumpConfigEx config) {
  const DumpText directory = {"directory", config.directory};
  const DumpText pattern = {"pattern", config.pattern};
  config.directory = config.pattern = nullptr;
  return Configure(__func__, device, config, {directory, pattern});
}

int32_t CorvaneAPIDiskDumpStart(DeviceHandle device) {
  return DeviceCall(__func__, device, Access::kWrite, 0, "", StartDump);
}

int32_t CorvaneAPIDiskDumpStop(DeviceHandle device) {
  return DeviceCall(__func__, device, Access::kRead, 0, "", StopDump);
}

}  // extern "C"
