// The results of handlers, which become the exit status (so kRejected leaves as 255). Any other
// result is a status of the device library passed through.
#pragma once

namespace corvane {

inline constexpr int kSuccess = 0;
inline constexpr int kOutputLost = 1;  // in place of success, see FinishOutput()
inline constexpr int kRejected = -1;
inline constexpr int kNoFirmwareFile = -3;
inline constexpr int kNoDevice = -4;
inline constexpr int kUnsupported = -5;  // by the device
inline constexpr int kBadValue = -5;     // wrong or missing; scripts rely on the same number
inline constexpr int kAlreadyRunning = -12;

// What each means, as the manual says it.
struct StatusMeaning {
  int status;
  const char* meaning;
};

inline constexpr StatusMeaning kStatusMeanings[] = {
    {kSuccess, "done"},
    {kOutputLost, "done, but standard output could not be written; standard error says why"},
    {kRejected, "refused or failed, for one of the reasons below"},
    {kNoFirmwareFile, "an update without a firmware file (a wrong command line, 255, comes first)"},
    {kNoDevice, "no such device"},
    {kUnsupported, "the device cannot do this, or a value or an option is missing or invalid"},
    {kAlreadyRunning, "a direct capture runs already"},
};

}  // namespace corvane
