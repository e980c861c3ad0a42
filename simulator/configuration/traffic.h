// The [device.traffic] and [device.update] tables of a configuration file: the frames at the
// device's ports, and how long a firmware update takes.
#pragma once

#include "configuration/configuration.h"
#include "configuration/keys.h"

// Readers of configuration_keys.h, for the tables' nodes.
bool ReadTraffic(Where node, DeviceConfiguration& device, ConfigurationError& error);
bool ReadUpdate(Where node, DeviceConfiguration& device, ConfigurationError& error);
