// The tables of a configuration file. Each reader takes a table's node and returns false, with the
// error filled, when something in the table is wrong.
#pragma once

#include "configuration/configuration.h"
#include "configuration/keys.h"

namespace simulator {

// [[device]], [[event]] and [[fault]]: what they describe is added to the configuration.
bool AddDevice(Where node, Configuration& configuration, ConfigurationError& error);
bool AddEvent(Where node, Configuration& configuration, ConfigurationError& error);
bool AddFault(Where node, Configuration& configuration, ConfigurationError& error);

// A MAC address as text: the device's address and name.
bool ReadMac(Where node, DeviceConfiguration& device, ConfigurationError& error);

// Spells the device that the table is for, if there is one, as its [[device]] is named. False, with
// the error filled, when there is none of that name.
bool FindDevice(Where node, const Configuration& configuration, std::optional<std::string>& device,
                ConfigurationError& error);

// [device.gps], where the antenna stands, and gps_output, what every read of its output gives.
bool ReadGps(Where node, DeviceConfiguration& device, ConfigurationError& error);
bool ReadGpsOutput(Where node, DeviceConfiguration& device, ConfigurationError& error);

// [device.port_a] and [device.port_b]: where the frames at the ports come from.
bool ReadPortA(Where node, DeviceConfiguration& device, ConfigurationError& error);
bool ReadPortB(Where node, DeviceConfiguration& device, ConfigurationError& error);

}  // namespace simulator
