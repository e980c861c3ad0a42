#include "library/call_frame.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <map>
#include <thread>

#include "journal/journal.h"
#include "library/complaints.h"
#include "library/library.h"
#include "model/capture.h"
#include "model/clock.h"
#include "model/events.h"
#include "model/facts.h"

namespace simulator {
namespace {

// ---- Faults

// The last call's number among the calls of its function.
struct CallNumber {
  int64_t in_run;
  int64_t ever;  // since the state folder counts them; in the run when it does not
};

CallNumber& NumberOf(const std::string& function) {
  static std::map<std::string, CallNumber> numbers;
  return numbers[function];
}

// Counts the call, in the state folder too when a fault wants it.
void CountCall(const std::string& function) {
  CallNumber& number = NumberOf(function);
  number.ever = ++number.in_run;
  Library& library = TheLibrary();
  const auto counts = [&](const Fault& each) {
    return each.persistent && each.function == function;
  };
  if (!library.state.is_open() || std::ranges::none_of(library.configuration.faults, counts))
    return;
  const int64_t count = library.state.CountUp("calls of " + function);
  if (count > 0) number.ever = count;
  if (count == 0) ComplainOnce(library.state.failure());
}

bool Hits(const Fault& fault, const std::string& function, std::string_view device) {
  if (!fault.function.empty() && fault.function != function) return false;
  if (fault.device && *fault.device != device) return false;
  const CallNumber& number = NumberOf(function);
  const int64_t call = fault.persistent ? number.ever : number.in_run;
  if (call < fault.from || call - fault.from >= fault.times) return false;
  if (fault.call != 0 && fault.call != call) return false;
  const int64_t age_ms = std::max<int64_t>(0, HostMs() - TheLibrary().first_use_ms);
  return age_ms >= fault.after_ms && age_ms - fault.after_ms < fault.for_ms;
}

// Waits as long as the faults that hit this call say. Returns the status of the first that has one,
// else CORVANE_OK. The device is empty for a call that concerns none.
int32_t SufferFaults(const std::string& function, std::string_view device) {
  int64_t delay_ms = 0;
  int32_t status = CORVANE_OK;
  CountCall(function);
  for (const Fault& fault : TheLibrary().configuration.faults) {
    if (status != CORVANE_OK || !Hits(fault, function, device)) continue;
    delay_ms += fault.delay_ms;
    status = fault.status;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
  return status;
}

// ---- The journal

// Calls that programs make while they wait for something.
constexpr std::string_view kPolls[] = {"CorvaneAPIGPSOutputRead", "CorvaneApiSleepMs",
                                       "CorvaneAPIFirmwareUpdateGetProgress"};

bool IsJournaled(std::string_view function) {
  const Configuration& configuration = TheLibrary().configuration;
  if (configuration.journal.empty()) return false;
  return !configuration.journal_quiet || std::ranges::count(kPolls, function) == 0;
}

// Ends the function's line and writes it.
void Journal(std::string_view function, std::string& line, int32_t status) {
  const Configuration& configuration = TheLibrary().configuration;
  if (!IsJournaled(function)) return;
  line += " status=" + std::to_string(status);
  if (configuration.journal_times) line += corvane::TimeArgument(HostNs());
  if (corvane::WriteJournal(configuration.journal, line += '\n')) return;
  ComplainOnce("cannot write the journal " + configuration.journal + ": " + strerror(errno));
}

// ---- The call

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
  const Library& library = TheLibrary();
  ApplyDueEvents(library.configuration, call.state, library.first_use_ms);
  if (!call.state.Begin(access == Access::kWrite)) return FailState(call.state);
  int32_t status = IsAway(call) ? CORVANE_DEVICE_NOT_FOUND : CORVANE_OK;
  if (status == CORVANE_OK && !call.state.failed()) status = body(call);
  const bool ok = status == CORVANE_OK || status == CORVANE_UPDATE_IN_PROGRESS;
  if (!ok && !call.state.failed()) {
    call.state.Rollback();
    return status;
  }
  if (!call.state.Commit()) return FailState(call.state);
  if (ok && call.afterwards) status = call.afterwards();
  if (access == Access::kWrite && !FollowConfiguration(call)) ComplainOnce(call.state.failure());
  return status;
}

}  // namespace

bool IsTakenAway(std::string_view device) {
  return std::ranges::any_of(TheLibrary().configuration.faults, [=](const Fault& each) {
    return each.away && Hits(each, "CorvaneAPIGetDevicesList", device);
  });
}

std::string HexArgument(const char* name, const void* bytes, size_t size) {
  if (TheLibrary().configuration.journal.empty()) return "";
  return corvane::HexArgument(name, bytes, size);
}

int32_t DeviceCall(const char* function, DeviceHandle handle, Access access, uint32_t capabilities,
                   const std::string& arguments, const std::function<int32_t(Call&)>& body) {
  Library& library = TheLibrary();
  const DeviceConfiguration* device = FindDevice(handle);
  const std::string_view name = device == nullptr ? "none" : std::string_view(device->name);
  std::string line;
  if (IsJournaled(function)) line.append(function).append(" device=").append(name) += arguments;

  int32_t status = SufferFaults(function, name);
  if (status != CORVANE_OK) {
    // Nothing happens.
  } else if (!library.state.is_open()) {
    status = kNotOpen;
  } else if (device == nullptr) {
    status = CORVANE_DEVICE_NOT_FOUND;
  } else if ((device->capabilities & capabilities) != capabilities) {
    status = kNotSupported;
  } else {
    Call call = {*device, library.state};
    status = RunInTransaction(call, access, body);
    line += call.journal;
    if (!call.complaint.empty()) {
      Complain(call.complaint);
      line += corvane::QuotedArgument("reason", call.complaint);
    }
  }
  Journal(function, line, status);
  return status;
}

int32_t PlainCall(const char* function, const std::string& arguments) {
  std::string line = function + arguments;
  const int32_t status = SufferFaults(function, "");
  Journal(function, line, status);
  return status;
}

}  // namespace simulator
