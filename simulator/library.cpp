#include "library.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>

#include "capture_settings.h"
#include "factory_records.h"
#include "functions.h"

std::string StateFolder() {
  if (const char* folder = getenv("CORVANE_SIM_STATE"); folder != nullptr && *folder != '\0') {
    return folder;
  }
  if (const char* state = getenv("XDG_STATE_HOME"); state != nullptr && *state == '/') {
    return std::string(state) + "/corvane-simulator";
  }
  const char* home = getenv("HOME");
  return std::string(home == nullptr ? "/tmp" : home) + "/.local/state/corvane-simulator";
}

bool Complain(const std::string& text) {
  fprintf(stderr, "corvane-simulator: %s\n", text.c_str());
  return false;
}

namespace {

constexpr DeviceHandle kFirstHandle = 0xC0540000;  // nothing that an index could be taken for
constexpr const char* kStarted = "started";

struct Library {
  Configuration configuration;
  DeviceState state;
  std::map<std::string, int64_t, std::less<>> calls;  // how often each function was called
};

Library& TheLibrary() {
  static Library library;
  return library;
}

std::optional<Configuration> LoadConfiguration() {
  const char* path = getenv("CORVANE_SIM_CONFIG");
  ConfigurationError error;
  const bool named = path != nullptr && *path != '\0';
  auto configuration = named ? ReadConfigurationFile(path, error)
                             : ReadConfiguration(kBuiltinConfiguration, "", error);
  if (!configuration) {
    const std::string line = error.line == 0 ? "" : std::to_string(error.line) + ":";
    Complain(std::string(named ? path : "built-in configuration") + ":" + line + " " +
             error.reason);
  }
  return configuration;
}

// One write a line, so that the lines of concurrent programs do not mix.
void WriteJournal(const std::string& line) {
  const std::string& path = TheLibrary().configuration.journal;
  if (path.empty()) return;
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file < 0 || write(file, line.data(), line.size()) < 0) {
    Complain("cannot write the journal " + path + ": " + strerror(errno));
  }
  if (file >= 0) close(file);
}

// The fault that this call of the function hits; null for none.
const Fault* FindFault(std::string_view function, std::string_view device, int64_t call) {
  for (const Fault& fault : TheLibrary().configuration.faults) {
    if (fault.function != function) continue;
    if (fault.device && *fault.device != device) continue;
    if (fault.call == 0 || fault.call == call) return &fault;
  }
  return nullptr;
}

const DeviceConfiguration* FindDevice(DeviceHandle handle) {
  const auto& devices = TheLibrary().configuration.devices;
  if (handle < kFirstHandle || handle - kFirstHandle >= devices.size()) return nullptr;
  return &devices[handle - kFirstHandle];
}

// A start further ahead than a restart takes means that the host's clock was set back.
bool IsAway(Call& call) {
  const int64_t ahead = StartedMs(call) - HostMs();
  return ahead > 0 && ahead <= call.device.boot_ms;
}

// The body inside its transaction.
int32_t RunInTransaction(Call& call, Access access, const std::function<int32_t(Call&)>& body) {
  if (!call.state.Begin(access == Access::kWrite)) return kStateFailed;
  const int32_t status = IsAway(call) ? CORVANE_DEVICE_NOT_FOUND : body(call);
  if (status == CORVANE_OK || status == CORVANE_UPDATE_IN_PROGRESS) {
    // Before others may write: settings reach a running capture in their order.
    if (access == Access::kWrite) TellCapture(call);
    return call.state.Commit() ? status : kStateFailed;
  }
  call.state.Rollback();
  return status;
}

// Devices that were never used before start now.
bool StartDevices() {
  Library& library = TheLibrary();
  std::string unused;
  std::vector<const DeviceConfiguration*> unstarted;
  if (!library.state.Begin(false)) return false;
  for (const DeviceConfiguration& device : library.configuration.devices) {
    Call call = {device, library.state, unused};
    if (StartedMs(call) == 0) unstarted.push_back(&device);
  }
  if (!library.state.Commit()) return false;
  if (unstarted.empty()) return true;
  if (!library.state.Begin(true)) return false;
  for (const DeviceConfiguration* device : unstarted) {
    Call call = {*device, library.state, unused};
    MarkStarted(call, HostMs());
  }
  return library.state.Commit();
}

}  // namespace

bool OpenLibrary() {
  Library& library = TheLibrary();
  auto configuration = LoadConfiguration();
  if (!configuration) return false;
  library.configuration = std::move(*configuration);
  std::string reason;
  if (!library.state.Open(StateFolder(), reason)) return Complain(reason);
  return StartDevices() || Complain("cannot use the device state in " + StateFolder());
}

void CloseLibrary() {
  TheLibrary().state.Close();
}
bool LibraryIsOpen() {
  return TheLibrary().state.is_open();
}
const Configuration& OpenConfiguration() {
  return TheLibrary().configuration;
}

std::string HexArgument(const char* name, const void* bytes, size_t size) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string text = std::string(" ") + name + "=";
  for (size_t i = 0; i < size; ++i) {
    const uint8_t byte = static_cast<const uint8_t*>(bytes)[i];
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0xF];
  }
  return text;
}

int32_t DeviceCall(const char* function, DeviceHandle handle, Access access, uint32_t capabilities,
                   const std::string& arguments, const std::function<int32_t(Call&)>& body) {
  Library& library = TheLibrary();
  const int64_t count = ++library.calls[function];
  const DeviceConfiguration* device = FindDevice(handle);
  const std::string name = device == nullptr ? "none" : device->name;
  std::string line = std::string(function) + " device=" + name + arguments;

  int32_t status = CORVANE_OK;
  if (const Fault* fault = FindFault(function, name, count); fault != nullptr) {
    status = fault->status;
  } else if (!LibraryIsOpen()) {
    status = kNotOpen;
  } else if (device == nullptr) {
    status = CORVANE_DEVICE_NOT_FOUND;
  } else if ((device->capabilities & capabilities) != capabilities) {
    status = kNotSupported;
  } else {
    Call call = {*device, library.state, line};
    status = RunInTransaction(call, access, body);
  }
  WriteJournal(line + " status=" + std::to_string(status) + "\n");
  return status;
}

bool PlainCall(const char* function, const std::string& arguments, int32_t& status) {
  const int64_t count = ++TheLibrary().calls[function];
  const Fault* fault = FindFault(function, "", count);
  status = fault == nullptr ? CORVANE_OK : fault->status;
  WriteJournal(function + arguments + " status=" + std::to_string(status) + "\n");
  return fault != nullptr;
}

Bytes CurrentRecord(Call& call, const char* record) {
  if (auto stored = call.state.Configuration(call.device.name, record)) return *stored;
  const auto initial = call.device.records.find(record);
  if (initial != call.device.records.end()) return initial->second.bytes;
  return FactoryRecord(record, call.device.capabilities);
}

bool IsGivenRaw(const Call& call, const char* record) {
  const auto given = call.device.records.find(record);
  return given != call.device.records.end() && given->second.raw;
}

int64_t HostMs() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

int64_t StartedMs(Call& call) {
  return NumberFact(call, kStarted);
}

void MarkStarted(Call& call, int64_t when_ms) {
  call.state.SetFact(call.device.name, kStarted, FactOf(when_ms));
}

Bytes FactOf(int64_t number) {
  Bytes bytes(sizeof number);
  memcpy(bytes.data(), &number, sizeof number);
  return bytes;
}

int64_t NumberFact(Call& call, const char* name) {
  const auto bytes = call.state.Fact(call.device.name, name);
  int64_t number = 0;
  if (bytes && bytes->size() == sizeof number) memcpy(&number, bytes->data(), sizeof number);
  return number;
}

bool AttachedDevices(std::vector<DeviceHandle>& handles) {
  Library& library = TheLibrary();
  if (!library.state.Begin(false)) return false;
  std::string unused;
  for (size_t i = 0; i < library.configuration.devices.size(); ++i) {
    Call call = {library.configuration.devices[i], library.state, unused};
    if (!IsAway(call)) handles.push_back(kFirstHandle + i);
  }
  return library.state.Commit();
}
