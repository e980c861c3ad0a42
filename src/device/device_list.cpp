#include "device/device_list.h"

#include "device/wait.h"

namespace corvane {

namespace {

constexpr uint32_t kWaitMs = 100;

// Gives its list back, as no handle was taken from it.
bool AnyDeviceAttached() {
  DeviceList* const devices = CorvaneAPIGetDevicesList();
  if (devices == nullptr) return false;
  const bool any = devices->count > 0;
  CorvaneApiDeviceListFree(devices);
  return any;
}

void WaitForDevices(int attempts) {
  for (int attempt = 0; attempt < attempts; ++attempt) {
    if (AnyDeviceAttached()) return;
    Wait(kWaitMs);
  }
}

}  // namespace

const DeviceList* AttachedDevices(int attempts) {
  WaitForDevices(attempts);
  return CorvaneAPIGetDevicesList();
}

}  // namespace corvane
