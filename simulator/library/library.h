// The opened simulator: its configuration and state, and the frame in which every exported function
// runs (fault, device look-up, transaction, journal).
#pragma once

#include <cstdint>
#include <cstring>
#include <functional>
#include <string>

#include "configuration/configuration.h"
#include "device/corvane_api.h"
#include "state/device_state.h"

// The simulator's own statuses, beside those of enum CorvaneStatus.
inline constexpr int32_t kNotOpen = -20;       // the library is not initialised
inline constexpr int32_t kNotSupported = -21;  // by this device
inline constexpr int32_t kInvalidArgument =
    -22;  // a null pointer, an index out of range, nothing to act on
// The device state cannot be read or written: a line on standard error says why.
inline constexpr int32_t kStateFailed = -23;
inline constexpr int32_t kCaptureRuns = -24;    // a direct capture runs already
inline constexpr int32_t kCaptureFailed = -25;  // a direct capture cannot be started or stopped

// One call for one device while it runs.
struct Call {
  const DeviceConfiguration& device;
  DeviceState& state;
  std::string& journal;  // more for the journal line: " name=value" each
};

enum class Access : uint8_t { kRead, kWrite };  // what the call does to the state

// Runs the body for the device as one transaction and returns its status, or fails before it: as a
// fault demands, or because the library is not open, the device not there, a capability missing,
// the state not to be had. A failing body leaves no trace in the state; a running capture follows
// what a succeeding one changed. Writes the journal line, with the arguments given.
int32_t DeviceCall(const char* function, DeviceHandle handle, Access access, uint32_t capabilities,
                   const std::string& arguments, const std::function<int32_t(Call& call)>& body);

// A call that fills *out for the device: the body gets a zeroed record. What it filled goes to the
// journal and, when it succeeds, to the caller.
template <class Out, class Body>
int32_t FillCall(const char* function, DeviceHandle handle, uint32_t capabilities,
                 const std::string& arguments, Out* out, Body body);

// A journal line of a call that concerns no device. True when the call is to fail, with the status.
bool PlainCall(const char* function, const std::string& arguments, int32_t& status);

// " name=00ff..." for the journal.
std::string HexArgument(const char* name, const void* bytes, size_t size);

// The current record of the device: from its state, else from the configuration file, else as it
// left the factory. It has the size of its layout in any case; when the state has it in another
// one, the call fails in the end.
Bytes CurrentRecord(Call& call, const char* record);

// The same as a record of its type.
template <class Record>
Record Current(Call& call, const char* name);

// The versions that the last update left, else those of the configuration file.
VersionRecord CurrentVersions(Call& call);

// True when the configuration file gives the record as a whole: then nothing in it is live.
bool IsGivenRaw(const Call& call, const char* record);

// Milliseconds since the epoch on the host's clock.
int64_t HostMs();

// When the device was started, in milliseconds since the epoch; later than now while it restarts,
// or when the host's clock was set back. Never negative; 0 for a device that was never used.
int64_t StartedMs(Call& call);
void MarkStarted(Call& call, int64_t when_ms);

// A number as a fact in the state, and back (0 when there is none).
Bytes FactOf(int64_t number);
int64_t NumberFact(Call& call, const char* name);

// One line on standard error; returns false.
bool Complain(const std::string& text);
// The same, but each text once a process.
bool ComplainOnce(const std::string& text);

bool OpenLibrary();  // false with one line on standard error
void CloseLibrary();
bool LibraryIsOpen();
const Configuration& OpenConfiguration();

// Puts a new handle for each attached device, in order, into handles. False when the state cannot
// be read.
bool AttachedDevices(std::vector<DeviceHandle>& handles);
// No device is found by the handle any more.
void EndHandle(DeviceHandle handle);

// ---- Implementation of the templates.

template <class Record>
Record Current(Call& call, const char* name) {
  Record record;
  memcpy(&record, CurrentRecord(call, name).data(), sizeof record);
  return record;
}

template <class Out, class Body>
int32_t FillCall(const char* function, DeviceHandle handle, uint32_t capabilities,
                 const std::string& arguments, Out* out, Body body) {
  return DeviceCall(function, handle, Access::kRead, capabilities, arguments, [&](Call& call) {
    if (out == nullptr) return kInvalidArgument;
    Out record = {};
    const int32_t status = body(call, record);
    if (status != CORVANE_OK) return status;
    if (call.state.failed()) return kStateFailed;
    call.journal += HexArgument("record", &record, sizeof record);
    memcpy(out, &record, sizeof record);
    return int32_t{CORVANE_OK};
  });
}
