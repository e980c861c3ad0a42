#include "timing/nmea.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "console/output.h"
#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "device/wait.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr int32_t kCapacity = 128;
constexpr uint32_t kIdleMs = 1;

// Copies the receiver's output until the library reports an error or the output cannot be written;
// returns the result. Every chunk is flushed, so that the reader of a pipe gets
// a sentence when the receiver sends it.
int Stream(DeviceHandle device) {
  int32_t count = 0;
  char buffer[kCapacity + 1];
  CorvaneAPIGPSOutputFlush(device);
  for (;;) {
    memset(buffer, '0', sizeof buffer);
    const int status = CorvaneAPIGPSOutputRead(device, buffer, kCapacity, &count);
    if (status == CORVANE_GPS_OUTPUT_NOT_SUPPORTED) {
      return Fail(kRejected, "GPS output interface not supported");
    }
    if (status != kSuccess) return Fail(kRejected, "Error while reading GPS output interface");
    if (count <= 0) {
      Wait(kIdleMs);
      continue;
    }
    buffer[std::min(count, kCapacity)] = '\0';
    fputs(buffer, stdout);
    if (!FlushOutput()) return kSuccess;  // FinishOutput() tells of it
  }
}

}  // namespace

int Nmea(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  return session.has_device() ? Stream(session.device()) : kNoDevice;
}

}  // namespace corvane
