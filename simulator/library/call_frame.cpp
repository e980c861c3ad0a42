#include "library/call_frame.h"

#include <cerrno>
#include <map>

#include "library/complaints.h"
#include "library/journal.h"
#include "library/library.h"
#include "model/capture.h"
#include "model/facts.h"

namespace simulator {
namespace {

// How often the function was called in this process, this call included.
int64_t CountCall(const char* function) {
  static std::map<std::string, int64_t, std::less<>> calls;
  return ++calls[function];
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

int32_t FailState(const DeviceState& state) {
  ComplainOnce(state.failure());
  return kStateFailed;
}

// Runs the body in a transaction. It does not run when the state cannot be read, for it may do more
// than change the state.
int32_t RunInTransaction(Call& call, Access access, const std::function<int32_t(Call&)>& body) {
  if (!call.state.Begin(access == Access::kWrite)) return FailState(call.state);
  int32_t status = IsAway(call) ? CORVANE_DEVICE_NOT_FOUND : CORVANE_OK;
  if (status == CORVANE_OK && !call.state.failed()) status = body(call);
  const bool ok = status == CORVANE_OK || status == CORVANE_UPDATE_IN_PROGRESS;
  if (!ok && !call.state.failed()) {
    call.state.Rollback();
    return status;
  }
  if (!call.state.Commit()) return FailState(call.state);
  if (access == Access::kWrite && !FollowConfiguration(call)) ComplainOnce(call.state.failure());
  return status;
}

}  // namespace

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
  const int64_t count = CountCall(function);
  const DeviceConfiguration* device = FindDevice(handle);
  const std::string name = device == nullptr ? "none" : device->name;
  std::string line = std::string(function) + " device=" + name + arguments;

  int32_t status = CORVANE_OK;
  if (const Fault* fault = FindFault(function, name, count); fault != nullptr) {
    status = fault->status;
  } else if (!library.state.is_open()) {
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
  const int64_t count = CountCall(function);
  const Fault* fault = FindFault(function, "", count);
  status = fault == nullptr ? CORVANE_OK : fault->status;
  Journal(function + arguments + " status=" + std::to_string(status) + "\n");
  return fault != nullptr;
}

}  // namespace simulator
