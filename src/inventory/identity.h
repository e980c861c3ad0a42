// What a device is, as the list command prints it.
#pragma once

#include "device/corvane_api.h"

namespace corvane {

// Prints the type code, the model's name and the MAC address of a device and ends the line. What
// cannot be read or is not known prints as an error text instead.
void PrintModelAndMac(DeviceHandle device);

}  // namespace corvane
