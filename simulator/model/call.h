// A call for one device while it runs: what every exported function works on.
#pragma once

#include <string>

#include "configuration/configuration.h"
#include "state/device_state.h"

namespace simulator {

struct Call {
  const DeviceConfiguration& device;
  DeviceState& state;
  std::string& journal;  // more for the journal line: " name=value" each
};

}  // namespace simulator
