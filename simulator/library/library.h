// The opened simulator: its configuration, the state of its devices and the handles that callers
// hold.
#pragma once

#include <map>
#include <vector>

#include "configuration/configuration.h"
#include "device/corvane_api.h"
#include "state/device_state.h"

namespace simulator {

struct Library {
  Configuration configuration;
  DeviceState state;                                           // open while the library is
  int64_t first_use_ms = 0;                                    // of the state folder
  std::map<DeviceHandle, const DeviceConfiguration*> handles;  // of the lists that callers hold
};

// The only one in this process.
Library& TheLibrary();

// False, with one line on standard error, when the configuration or the state cannot be used.
bool OpenLibrary();
void CloseLibrary();

// Makes a new handle for each attached device and puts them, in order, into handles. False when the
// state cannot be read.
bool AttachedDevices(std::vector<DeviceHandle>& handles);

}  // namespace simulator
