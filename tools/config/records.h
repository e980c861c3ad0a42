// The records of a device that are settings: how each is read, written and made permanent.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "device/corvane_api.h"
#include "line/settings.h"

namespace config {

using Bytes = std::vector<uint8_t>;

// A call that makes records permanent.
struct Saving {
  const char* function;
  int32_t (*save)(DeviceHandle device);
  uint32_t needs;  // bits of the capability mask
};

// One record, or one of the counters.
struct Record {
  const char* get_function;
  const char* set_function;
  size_t size;
  uint32_t needs;  // bits of the capability mask
  int32_t (*get)(DeviceHandle device, uint32_t index, void* record);
  int32_t (*set)(DeviceHandle device, const void* record);
  const Saving* saving;
  uint32_t index = 0;  // of a counter
};

// By their order in AllRecords(); a counter's is kCounters and its index.
enum RecordId : size_t { kFeatures, kPorts, kPacketFilter, kPacketTypes, kDpiFilter, kCounters };
const std::vector<Record>& AllRecords();

// A device with what decides about its settings.
struct Device {
  DeviceHandle handle;
  int position;
  std::string name;  // its MAC address, or "device 0" when it has none to tell
  corvane::DeviceKind kind;
};

// Has every call of this file printed on standard error.
void ShowCalls();

// The attached devices; none after five seconds without one. The handles are valid to the end of
// the process.
std::vector<Device> FindDevices();

// Reads what decides about the device's settings. Empty, or what failed; so do the others below.
std::string ReadKind(Device& device);
std::string Read(const Device& device, const Record& record, Bytes& bytes);
std::string Write(const Device& device, const Record& record, const Bytes& bytes);
std::string Save(const Device& device, const Saving& saving);

}  // namespace config
