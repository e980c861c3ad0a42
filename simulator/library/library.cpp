#include "library/library.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <set>

#include "configuration/functions.h"
#include "library/journal.h"
#include "model/capture.h"
#include "records/factory_records.h"
#include "state/folder.h"

bool Complain(const std::string& text) {
  fprintf(stderr, "corvane-simulator: %s\n", text.c_str());
  return false;
}

bool ComplainOnce(const std::string& text) {
  static std::set<std::string, std::less<>> told;
  return told.insert(text).second && Complain(text);
}

namespace {

constexpr DeviceHandle kFirstHandle = 0xC0540000;  // nothing that an index could be taken for
constexpr const char* kStarted = "started";

struct Library {
  Configuration configuration;
  DeviceState state;
  std::map<std::string, int64_t, std::less<>> calls;           // how often each function was called
  std::map<DeviceHandle, const DeviceConfiguration*> handles;  // of the lists that callers hold
  DeviceHandle next_handle = kFirstHandle;
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

void Journal(const std::string& line) {
  const std::string& path = TheLibrary().configuration.journal;
  if (path.empty() || WriteJournal(path, line)) return;
  ComplainOnce("cannot write the journal " + path + ": " + strerror(errno));
}

// The fault that this call of the function hits; null for none.
const Fault* FindFault(std::string_view function, std::string_view device, int64_t call) {
  for (const Fault& fault : TheLibrary().configuration.faults) {
    if (fault.function != function) continue;
    if (fault.device && *fault.device != device) continue;
    if (call >= fault.from && (fault.call == 0 || fault.call == call)) return &fault;
  }
  return nullptr;
}

// Null for a handle that was never given, or whose list was given back.
const DeviceConfiguration* FindDevice(DeviceHandle handle) {
  const auto& handles = TheLibrary().handles;
  const auto found = handles.find(handle);
  return found == handles.end() ? nullptr : found->second;
}

// A start further ahead than a restart takes means that the host's clock was set back.
bool IsAway(Call& call) {
  const int64_t ahead = StartedMs(call) - HostMs();
  return ahead > 0 && ahead <= call.device.boot_ms;
}

int32_t FailState(const DeviceState& state) {
  ComplainOnce(state.failure());
  return kStateFailed;
}

// The body inside its transaction. It does not run on a state that cannot be read: it may do more
// than to change it.
int32_t RunInTransaction(Call& call, Access access, const std::function<int32_t(Call&)>& body) {
  if (!call.state.Begin(access == Access::kWrite)) return FailState(call.state);
  int32_t status = IsAway(call) ? CORVANE_DEVICE_NOT_FOUND : CORVANE_OK;
  if (status == CORVANE_OK && !call.state.failed()) status = body(call);
  const bool well = status == CORVANE_OK || status == CORVANE_UPDATE_IN_PROGRESS;
  if (!well && !call.state.failed()) {
    call.state.Rollback();
    return status;
  }
  if (!call.state.Commit()) return FailState(call.state);
  if (access == Access::kWrite) FollowConfiguration(call);
  return status;
}

// True for a device that was never used, and for one that started later than now and is not away:
// the host's clock was set back, and it would stand still until then.
bool WantsStart(Call& call) {
  return StartedMs(call) == 0 || StartedMs(call) > HostMs() + call.device.boot_ms;
}

// Calls the function for every device in one transaction.
bool ForDevices(bool writing, const std::function<void(Call& call)>& function) {
  Library& library = TheLibrary();
  std::string unused;
  if (!library.state.Begin(writing)) return false;
  for (const DeviceConfiguration& device : library.configuration.devices) {
    Call call = {device, library.state, unused};
    function(call);
  }
  return library.state.Commit();
}

bool StartDevices() {
  bool wanted = false;
  if (!ForDevices(false, [&](Call& call) { wanted = wanted || WantsStart(call); })) return false;
  return !wanted || ForDevices(true, [](Call& call) {
    if (WantsStart(call)) MarkStarted(call, HostMs());
  });
}

// In a program without standard streams the library's files would take their places, and what is
// printed would go there.
void FillStandardStreams() {
  int file = open("/dev/null", O_RDWR);
  while (file >= 0 && file <= STDERR_FILENO) file = dup(file);
  if (file >= 0) close(file);
}

// A program that changed a configuration may have been killed before its capture knew.
void FollowConfigurations() {
  Library& library = TheLibrary();
  std::string unused;
  for (const DeviceConfiguration& device : library.configuration.devices) {
    Call call = {device, library.state, unused};
    FollowConfiguration(call);
  }
}

}  // namespace

bool OpenLibrary() {
  Library& library = TheLibrary();
  FillStandardStreams();
  auto configuration = LoadConfiguration();
  if (!configuration) return false;
  library.configuration = std::move(*configuration);
  std::string reason;
  const auto lock_wait_ms = static_cast<int>(library.configuration.lock_wait_ms);
  const auto folder = UseStateFolder(reason);
  if (!folder || !library.state.Open(*folder, lock_wait_ms, reason)) return Complain(reason);
  if (!StartDevices()) {
    Complain(library.state.failure());
    CloseLibrary();
    return false;
  }
  FollowConfigurations();
  return true;
}

void CloseLibrary() {
  TheLibrary().state.Close();
  TheLibrary().handles.clear();
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
  Journal(line + " status=" + std::to_string(status) + "\n");
  return status;
}

bool PlainCall(const char* function, const std::string& arguments, int32_t& status) {
  const int64_t count = ++TheLibrary().calls[function];
  const Fault* fault = FindFault(function, "", count);
  status = fault == nullptr ? CORVANE_OK : fault->status;
  Journal(function + arguments + " status=" + std::to_string(status) + "\n");
  return fault != nullptr;
}

Bytes CurrentRecord(Call& call, const char* record) {
  const size_t size = FindLayout(record)->size;
  if (auto stored = call.state.Configuration(call.device.name, record, size)) return *stored;
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
  return std::max<int64_t>(0, NumberFact(call, kStarted));
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
  int64_t number = 0;
  const auto bytes = call.state.Fact(call.device.name, name, sizeof number);
  if (bytes) memcpy(&number, bytes->data(), sizeof number);
  return number;
}

bool AttachedDevices(std::vector<DeviceHandle>& handles) {
  Library& library = TheLibrary();
  const bool ok = ForDevices(false, [&](Call& call) {
    if (IsAway(call)) return;
    handles.push_back(library.next_handle);
    library.handles[library.next_handle++] = &call.device;
  });
  return ok || ComplainOnce(library.state.failure());
}

void EndHandle(DeviceHandle handle) {
  TheLibrary().handles.erase(handle);
}
