// The results of handlers, which become the exit status (so kRejected leaves as 255). Any other
// result is a status of the device library passed through.
#pragma once

inline constexpr int kSuccess = 0;
inline constexpr int kRejected = -1;         // usage error, or values that do not go together
inline constexpr int kNoFirmwareFile = -3;   // update without a file
inline constexpr int kNoDevice = -4;         // not selected or not found
inline constexpr int kUnsupported = -5;      // missing capability or option, or an invalid value
inline constexpr int kAlreadyRunning = -12;  // a direct capture
