#include "library/library.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <functional>

#include "library/complaints.h"
#include "model/capture.h"
#include "model/clock.h"
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

bool AttachedDevices(std::vector<DeviceHandle>& handles) {
  static DeviceHandle next_handle = kFirstHandle;
  Library& library = TheLibrary();
  const bool ok = ForDevices(false, [&](Call& call) {
    if (IsAway(call)) return;
    handles.push_back(next_handle);
    library.handles[next_handle++] = &call.device;
  });
  return ok || ComplainOnce(library.state.failure());
}

}  // namespace simulator
