// The [device.gps] table of a configuration file: where the device's antenna stands.
#pragma once

#include "configuration.h"
#include "configuration_keys.h"

// A reader of configuration_keys.h, for the table's node.
bool ReadGps(Where node, DeviceConfiguration& device, ConfigurationError& error);
