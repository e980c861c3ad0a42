// The frame in which every exported function runs: fault, device look-up, transaction, journal
// line.
#pragma once

#include <cstring>
#include <functional>
#include <string>

#include "device/corvane_api.h"
#include "model/call.h"

namespace simulator {

// The simulator's own statuses, beside those of enum CorvaneStatus.
inline constexpr int32_t kNotOpen = -20;       // the library is not initialised
inline constexpr int32_t kNotSupported = -21;  // by this device
inline constexpr int32_t kInvalidArgument =
    -22;  // a null pointer, an index out of range, nothing to work on
// The device state cannot be read or written: a line on standard error says why.
inline constexpr int32_t kStateFailed = -23;
inline constexpr int32_t kCaptureRuns = -24;    // a direct capture runs already
inline constexpr int32_t kCaptureFailed = -25;  // a direct capture cannot be started or stopped

enum class Access : uint8_t { kRead, kWrite };  // what the call does to the state

// Runs the body for the device as one transaction and returns its status, or fails before it:
// because of a fault, or because the library is not open, the device is not there, a capability is
// missing or the state cannot be used. A body that fails leaves no trace in the state; what one
// that succeeds changed reaches a running capture. Writes the journal line, with the arguments
// given.
int32_t DeviceCall(const char* function, DeviceHandle handle, Access access, uint32_t capabilities,
                   const std::string& arguments, const std::function<int32_t(Call& call)>& body);

// Writes the journal line of a call that concerns no device. Returns its status: that of the fault
// that makes it fail, else CORVANE_OK.
int32_t PlainCall(const char* function, const std::string& arguments = "");

// True when a fault keeps the device from the list of this call of CorvaneAPIGetDevicesList.
bool IsTakenAway(std::string_view device);

// " name=00ff..." for the journal; empty when there is none.
std::string HexArgument(const char* name, const void* bytes, size_t size);

// A call that fills *out for the device: the body gets a zeroed record. What it filled goes to the
// journal and, when it succeeds, to the caller.
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

// The same for a body that returns the record and cannot fail.
template <class Out, class Body>
int32_t ReportCall(const char* function, DeviceHandle handle, uint32_t capabilities, Out* out,
                   Body body) {
  return FillCall(function, handle, capabilities, "", out, [&](Call& call, Out& record) {
    record = body(call);
    return CORVANE_OK;
  });
}

}  // namespace simulator
