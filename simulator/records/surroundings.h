// What is around a simulated device: the record "surroundings" of its table.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"

namespace simulator {

struct Surroundings {
  uint32_t cables[CORVANE_PORTS];       // 0: not plugged in
  uint32_t modules[CORVANE_PORTS];      // of the SFP cages; 0: an empty one
  PortControl partners[CORVANE_PORTS];  // the other end of each cable, set up like a port
};

}  // namespace simulator
