// The attached devices.
#pragma once

#include "device/corvane_api.h"

namespace corvane {

// Waits until a device is attached, looking so many times, a tenth of a second apart, and returns
// the devices attached then; says nothing when none came. Null when the library has no list to
// give.
//
// The list is never released: a library may end its handles with the list that they came from, and
// they are in use to the end of the run.
const DeviceList* AttachedDevices(int attempts = 50);

}  // namespace corvane
