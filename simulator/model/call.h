// A call for one device while it runs: what every exported function works on.
#pragma once

#include <functional>
#include <string>

#include "configuration/configuration.h"
#include "state/device_state.h"

namespace simulator {

struct Call {
  const DeviceConfiguration& device;
  DeviceState& state;
  std::string journal = {};    // more for the journal line: " name=value" each
  std::string complaint = {};  // a line for people, and for the journal
  // What takes its time: done when the transaction has succeeded. Its status is the call's.
  std::function<int32_t()> afterwards = {};
};

}  // namespace simulator
