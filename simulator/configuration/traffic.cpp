#include "configuration/tables.h"

namespace simulator {
namespace {

bool ReadRate(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadInteger(node, 0, 10'000'000, device.traffic_rate, error);
}

bool ReadDuration(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadInteger(node, 0, 3'600'000, device.update_ms, error);
}

constexpr Key<DeviceConfiguration> kTrafficKeys[] = {{"rate", ReadRate}};
constexpr Key<DeviceConfiguration> kUpdateKeys[] = {{"duration_ms", ReadDuration}};

}  // namespace

bool ReadTraffic(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "traffic wants a [device.traffic] table", error);
  return ReadKeys(*table, kTrafficKeys, device, error);
}

bool ReadUpdate(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "update wants a [device.update] table", error);
  return ReadKeys(*table, kUpdateKeys, device, error);
}

}  // namespace simulator
