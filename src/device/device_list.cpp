#include "device/device_list.h"

#include "device/wait.h"

namespace corvane {

namespace {

constexpr int kWaitAttempts = 50;
constexpr uint32_t kWaitMs = 100;

// Gives its list back, as no handle was taken from it.
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

}  // namespace corvane
