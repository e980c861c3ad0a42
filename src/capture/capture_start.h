// The start of a direct capture, for the command and for programs beside it.
#pragma once

#include <variant>

#include "device/corvane_api.h"

namespace corvane {

struct CaptureStart {
  int status;        // 0, kAlreadyRunning or the library's
  const char* line;  // how it went, for people
};

// Configures and starts a capture of the device, unless one runs: that is left alone. The texts
// that the configuration points to stay valid to the end of the process.
CaptureStart StartCapture(DeviceHandle device,
                          const std::variant<DiskDumpConfig, DiskDumpConfigEx>& config);

}  // namespace corvane
