// The [device.port_a] and [device.port_b] tables of a configuration file: where the frames at the
// ports come from.
#pragma once

#include "configuration/configuration.h"
#include "configuration/keys.h"

// Readers of configuration_keys.h, for the tables' nodes.
bool ReadPortA(Where node, DeviceConfiguration& device, ConfigurationError& error);
bool ReadPortB(Where node, DeviceConfiguration& device, ConfigurationError& error);
