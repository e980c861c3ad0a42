#include "config/reset.h"

#include <cstdio>

#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

// The message does not depend on the outcome; the status does.
int Reset(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const int status = CorvaneAPIRestartDevice(session.device());
  puts("The device was reset");
  return status;
}

}  // namespace corvane
