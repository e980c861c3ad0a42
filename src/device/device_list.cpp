#include "device/device_list.h"

#include <cstdio>

#include "device/identity.h"
#include "device/session.h"
#include "device/status.h"
#include "device/wait.h"
#include "shell/handlers.h"

namespace {

constexpr int kWaitAttempts = 50;
constexpr uint32_t kWaitMs = 100;

// Asks with a list of its own, which no handle is taken from.
bool AnyDeviceAttached() {
  DeviceList* const devices = CorvaneAPIGetDevicesList();
  if (devices == nullptr) return false;
  const bool any = devices->count > 0;
  CorvaneApiDeviceListFree(devices);
  return any;
}

void WaitForDevices() {
  for (int attempt = 0; attempt < kWaitAttempts; ++attempt) {
    if (AnyDeviceAttached()) return;
    Wait(kWaitMs);
  }
}

}  // namespace

const DeviceList* AttachedDevices() {
  WaitForDevices();
  return CorvaneAPIGetDevicesList();
}

int ListDevices(const CommandNode&) {
  const Session session;
  const DeviceList* devices = AttachedDevices();
  printf("Found %d corvanes\n", devices == nullptr ? 0 : devices->count);
  const DeviceNode* node = devices == nullptr ? nullptr : devices->first;
  for (int position = 0; node != nullptr; node = node->next, ++position) {
    printf("%d : ", position);
    PrintModelAndMac(node->handle);
  }
  return kSuccess;
}
