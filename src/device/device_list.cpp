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

bool AnyDeviceAttached() {
  const DeviceListPtr devices = GetDevices();
  return devices != nullptr && devices->count > 0;
}

}  // namespace

DeviceListPtr GetDevices() {
  return DeviceListPtr(CorvaneAPIGetDevicesList());
}

void WaitForDevices() {
  for (int attempt = 0; attempt < kWaitAttempts; ++attempt) {
    if (AnyDeviceAttached()) return;
    Wait(kWaitMs);
  }
}

int ListDevices(const CommandNode&) {
  const Session session;
  WaitForDevices();
  const DeviceListPtr devices = GetDevices();
  printf("Found %d corvanes\n", devices == nullptr ? 0 : devices->count);
  const DeviceNode* node = devices == nullptr ? nullptr : devices->first;
  for (int position = 0; node != nullptr; node = node->next, ++position) {
    printf("%d : ", position);
    PrintModelAndMac(node->handle);
  }
  return kSuccess;
}
