// The simulator's configuration file: refused with a reason at one of its lines, or devices and
// faults that the library serves without another look at them.
#include <algorithm>
#include <set>
#include <string_view>

#include "configuration/configuration.h"
#include "require.h"

using namespace simulator;

namespace {

void CheckDevice(const DeviceConfiguration& device) {
  Require(device.name.size() == 17);
  Require(device.hw_firmwares.size() <= CORVANE_HW_FIRMWARES);
  for (const std::string& name : device.hw_firmwares) {
    Require(name.size() < CORVANE_HW_FIRMWARE_NAME_SIZE);
  }
  Require(device.boot_ms >= 0 && device.traffic_rate >= 0 && device.update_ms >= 0);
  for (const auto& [name, record] : device.records) {
    const RecordLayout* const layout = FindLayout(name);
    Require(layout != nullptr && record.bytes.size() == layout->size);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  ConfigurationError error;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto configuration = ReadConfiguration(text, "folder/sim.toml", error);
  if (!configuration) {
    Require(!error.reason.empty());
    Require(error.line <= 1 + std::count(text.begin(), text.end(), '\n'));
    return 0;
  }
  std::set<std::string> names;
  for (const DeviceConfiguration& device : configuration->devices) {
    CheckDevice(device);
    Require(names.insert(device.name).second);
  }
  for (const Fault& fault : configuration->faults) {
    Require(fault.call >= 0 && fault.from >= 1 && fault.times >= 1 && fault.for_ms >= 0);
    Require(fault.away ? fault.status != 0 : !fault.function.empty());
  }
  return 0;
}
