// The device library, looked up while the program runs: it may lack functions, or not be there.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "device/corvane_api_functions.h"

namespace lab {

using Bytes = std::vector<uint8_t>;

// Loads the library as the utility's loader would. Empty, or why it cannot be.
std::string LoadLibrary();

// The address of a function; null when the library has no such one.
void* FindFunction(const char* name);

// Called before every call of the library, with its function and whether the library has it. It
// does not return when the library has not.
using BeforeCall = void (*)(const char* function, bool found);
void SetBeforeCall(BeforeCall before_call);

void* FunctionToCall(const char* name);

// A function of the library, to be called at once: LIBRARY(CorvaneAPIGetVersion)().
#define LIBRARY(name) (reinterpret_cast<decltype(&(name))>(lab::FunctionToCall(#name)))

// A record that can be read of a device.
struct Reading {
  const char* name;  // of its key in the simulator's configuration
  const char* get_function;
  uint32_t size;
  uint32_t needs;  // a device with any of these bits of the capability mask has it; 0: all have
  int32_t (*get)(DeviceHandle device, uint32_t index, void* record);
  const char* set_function = nullptr;  // null: it is no setting
  int32_t (*set)(DeviceHandle device, const void* record) = nullptr;
  bool moves = false;  // its values run on
  uint32_t count = 1;  // of records with an index
};
std::span<const Reading> AllReadings();

inline bool Offers(uint32_t capabilities, const Reading& reading) {
  return reading.needs == 0 || (capabilities & reading.needs) != 0;
}

struct Device {
  DeviceHandle handle;
  std::string name;  // its MAC address, or "device 0" when it has none to tell
};

// The attached devices; waits for one, five seconds at most.
std::vector<Device> FindDevices();

// Those of them that the text means, which is "all", an index or a MAC address.
std::vector<Device> SelectDevices(const std::vector<Device>& devices, const std::string& text);

}  // namespace lab
