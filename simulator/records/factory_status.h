// What a simulated device reports of its ports, its PoE pairs and its timing hardware.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "device/corvane_api.h"

namespace simulator {

// Mark a field that follows the rest of the device when the record is read, unless the
// configuration file gives it: an integer, a byte, a number that is not one.
inline constexpr uint32_t kLive = 0x4C495645;
inline constexpr uint8_t kLiveByte = 0xFE;

// Writes the value to a field that is marked.
template <class Field, class Value>
void FillLive(Field& field, Value value) {
  bool live = false;
  if constexpr (sizeof(Field) == 1) {
    live = field == kLiveByte;
  } else if constexpr (std::is_integral_v<Field>) {
    live = static_cast<uint32_t>(field) == kLive;
  } else {
    live = std::isnan(field);
  }
  if (live) field = static_cast<Field>(value);
}

// Copper ports for a device with a PHY, cages with modules for one with SFP, else nothing valid.
LinkStatusRecord FactoryLinkStatus(uint32_t capabilities);

// A powered device of 10 W behind the tap: the pairs 0 and 1 feed it, 2 and 3 return the current.
PoeMeasures FactoryPoeMeasures();

// A receiver with a fix in all directions, and no PPS from elsewhere.
TimingStatusRecord FactoryTimingStatus();

}  // namespace simulator
