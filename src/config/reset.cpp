#include <cstdio>

#include "device/session.h"
#include "device/status.h"
#include "shell/handlers.h"

// The message does not depend on the outcome; the status does.
int Reset(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const int status = CorvaneAPIRestartDevice(session.device());
  puts("The device was reset");
  return status;
}
