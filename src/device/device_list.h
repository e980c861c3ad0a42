// The attached devices.
#pragma once

#include <memory>

#include "device/corvane_api.h"

struct DeviceListDeleter {
  void operator()(DeviceList* list) const { CorvaneApiDeviceListFree(list); }
};
using DeviceListPtr = std::unique_ptr<DeviceList, DeviceListDeleter>;

// The devices attached now; null when the library has no list to give.
DeviceListPtr GetDevices();

// Waits until a device is attached, about five seconds at most; says nothing when none came.
void WaitForDevices();
