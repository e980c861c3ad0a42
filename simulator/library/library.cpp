#include "library/library.h"

#include <fcntl.h>
#include <strings.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include "library/call_frame.h"
#include "library/complaints.h"
#include "model/capture.h"
#include "model/clock.h"
#include "model/events.h"
#include "model/facts.h"
#include "state/folder.h"

namespace simulator {
namespace {

constexpr DeviceHandle kFirstHandle = 0xC0540000;  // unlike any index

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

// Calls the function for every device in one transaction.
bool ForDevices(bool writing, const std::function<void(Call& call)>& function) {
  Library& library = TheLibrary();
  if (!library.state.Begin(writing)) return false;
  for (const DeviceConfiguration& device : library.configuration.devices) {
    Call call = {device, library.state};
    function(call);
  }
  return library.state.Commit();
}

// An event that the environment names happens now: CORVANE_SIM_EVENT has its fields, and
// CORVANE_SIM_EVENT_DEVICE a device's MAC address or its index, 0 by default.
bool ApplyNamedEvent() {
  const char* text = getenv("CORVANE_SIM_EVENT");
  if (text == nullptr || *text == '\0') return true;
  const char* named = getenv("CORVANE_SIM_EVENT_DEVICE");
  const std::string device = named == nullptr || *named == '\0' ? "0" : named;
  ConfigurationError error;
  const auto event = ReadEvent(text, error);
  if (!event) return Complain("event: " + error.reason);
  bool found = false;
  size_t index = 0;
  const bool ok = ForDevices(true, [&](Call& call) {
    const bool is_named = strcasecmp(device.c_str(), call.device.name.c_str()) == 0;
    if (device != std::to_string(index++) && !is_named) return;
    found = true;
    ApplyEvent(call, *event, HostMs());
  });
  if (!ok) return Complain(TheLibrary().state.failure());
  return found || Complain("event: there is no device " + device);
}

bool StartDevices() {
  bool wanted = false;
  if (!ForDevices(false, [&](Call& call) { wanted = wanted || WantsStart(call); })) return false;
  return !wanted || ForDevices(true, [](Call& call) {
    if (WantsStart(call)) MarkStarted(call, HostMs());
  });
}

// When the state folder was first used, on the host's clock: now when nobody noted it before, or a
// time that cannot be. A user who may not write leaves that to others.
int64_t FirstUseMs(DeviceState& state) {
  int64_t first_ms = 0;
  for (const bool writing : {false, true}) {
    if (first_ms != 0 || !state.Begin(writing)) break;
    const bool noted = ReadFact(state, "", "first_use", first_ms);
    if (writing && !noted) state.SetFact("", "first_use", BytesOf(first_ms = HostMs()));
    state.Commit();
  }
  const int64_t now_ms = HostMs();
  return first_ms > 0 && first_ms <= now_ms ? first_ms : now_ms;
}

// All time passes as the configuration wants it, from the first use on.
void StartTime() {
  Library& library = TheLibrary();
  SetTimeScale(0, 1);
  library.first_use_ms = FirstUseMs(library.state);
  SetTimeScale(library.first_use_ms * 1'000'000, library.configuration.time_scale);
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
  for (const DeviceConfiguration& device : library.configuration.devices) {
    Call call = {device, library.state};
    if (!FollowConfiguration(call)) ComplainOnce(call.state.failure());
  }
}

}  // namespace

Library& TheLibrary() {
  static Library library;
  return library;
}

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
  StartTime();
  const bool started = StartDevices();
  if (!started) Complain(library.state.failure());
  if (!started || !ApplyNamedEvent()) {
    CloseLibrary();
    return false;
  }
  ApplyDueEvents(library.configuration, library.state, library.first_use_ms);
  FollowConfigurations();
  return true;
}

void CloseLibrary() {
  TheLibrary().state.Close();
  TheLibrary().handles.clear();
}

bool AttachedDevices(std::vector<DeviceHandle>& handles) {
  static DeviceHandle next_handle = kFirstHandle;
  Library& library = TheLibrary();
  const bool ok = ForDevices(false, [&](Call& call) {
    if (IsAway(call) || IsTakenAway(call.device.name)) return;
    handles.push_back(next_handle);
    library.handles[next_handle++] = &call.device;
  });
  return ok || ComplainOnce(library.state.failure());
}

}  // namespace simulator
