// Direct capture. The facts of a device hold its configuration, when the capture that runs was
// started, and what the last one left.
#include <cstring>

#include "disk_dump.h"
#include "library.h"
#include "wide_text.h"

namespace {

constexpr const char* kSettings = "dump_settings";
constexpr const char* kStart = "dump_start";  // host's time, ms
constexpr const char* kLast = "dump_last";    // the status when the last capture was stopped

template <class Record>
void SetRecordFact(Call& call, const char* name, const Record& record) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&record);
  call.state.SetFact(call.device.name, name, Bytes(bytes, bytes + sizeof record));
}

// False, with the record unchanged, when there is no such fact.
template <class Record>
bool RecordFact(Call& call, const char* name, Record& record) {
  const auto bytes = call.state.Fact(call.device.name, name);
  if (!bytes || bytes->size() != sizeof record) return false;
  memcpy(&record, bytes->data(), sizeof record);
  return true;
}

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

bool IsRunning(Call& call) {
  return NumberFact(call, kStart) != 0;
}

void SetTexts(Call& call, std::initializer_list<DumpText> texts) {
  for (const char* fact : {"dump_file_name", "dump_directory", "dump_pattern"}) {
    call.state.ForgetFact(call.device.name, fact);
  }
  for (const DumpText& text : texts) {
    const std::string utf8 = Utf8Of(text.text);
    const char* end = utf8.c_str() + utf8.size() + 1;  // a fact has a byte at least
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
    if (IsRunning(call)) return kCaptureRuns;
    SetRecordFact(call, kSettings, SettingsOf(record));
    SetTexts(call, texts);
    return CORVANE_OK;
  });
}

// ---- Status

DiskDumpStatus CurrentStatus(Call& call) {
  DumpSettings settings = {};
  DiskDumpStatus status = {};
  const bool configured = RecordFact(call, kSettings, settings);
  if (const int64_t start_ms = NumberFact(call, kStart); start_ms != 0) {
    const int64_t device_ms = StartedMs(call);
    const DumpSpan span = {start_ms - device_ms, HostMs() - device_ms};
    return RunningDump(TrafficCycle(), call.device.traffic_rate, settings, span);
  }
  RecordFact(call, kLast, status);
  if (configured) status.max_cache = settings.max_cache;
  return status;
}

int32_t FillStatus(Call& call, DiskDumpStatus& status) {
  if (IsGivenRaw(call, "disk_dump_status")) {
    memcpy(&status, CurrentRecord(call, "disk_dump_status").data(), sizeof status);
  } else {
    status = CurrentStatus(call);
  }
  return CORVANE_OK;
}

int32_t StartDump(Call& call) {
  DumpSettings settings;
  if (IsRunning(call)) return kCaptureRuns;
  if (!RecordFact(call, kSettings, settings)) return kInvalidArgument;
  call.state.SetFact(call.device.name, kStart, FactOf(HostMs()));
  return CORVANE_OK;
}

// Stopping writes out the cache; the other numbers stay to be read.
int32_t StopDump(Call& call) {
  if (!IsRunning(call)) return CORVANE_OK;
  DiskDumpStatus status = CurrentStatus(call);
  status.enabled = 0;
  status.cache_used = 0;
  SetRecordFact(call, kLast, status);
  call.state.ForgetFact(call.device.name, kStart);
  return CORVANE_OK;
}

}  // namespace

extern "C" {

int32_t CorvaneAPIDiskDumpGetStatus(DeviceHandle device, DiskDumpStatus* status) {
  return FillCall(__func__, device, 0, "", status, FillStatus);
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
  return DeviceCall(__func__, device, Access::kWrite, 0, "", StopDump);
}

}  // extern "C"
