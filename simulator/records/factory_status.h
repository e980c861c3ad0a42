// What a simulated device reports of its ports, its PoE pairs and its timing hardware.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"

namespace simulator {

// Marks a field that follows the rest of the device (its features, its port control, its clock)
// when the record is read, unless the configuration file gives it.
inline constexpr uint32_t kLive = UINT32_MAX;

// Copper ports for a device with a PHY, two cages with modules for one with SFP, else nothing
// valid.
LinkStatusRecord FactoryLinkStatus(uint32_t capabilities);

// A powered device of 10 W behind the tap: the pairs 0 and 1 feed it, 2 and 3 return the current.
PoeMeasures FactoryPoeMeasures();

// A receiver that is locked, its clock steered by its PPS.
TimingStatusRecord FactoryTimingStatus();

}  // namespace simulator
