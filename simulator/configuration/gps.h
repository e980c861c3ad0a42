// The GPS tables of a device in a configuration file: where its antenna stands, and what every read
// of its output gives.
#pragma once

#include "configuration/configuration.h"
#include "configuration/keys.h"

// Readers of configuration_keys.h, for the tables' nodes.
bool ReadGps(Where node, DeviceConfiguration& device, ConfigurationError& error);
bool ReadGpsOutput(Where node, DeviceConfiguration& device, ConfigurationError& error);
