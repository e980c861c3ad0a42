// The [[device]] tables.
#include <strings.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "configuration/records.h"
#include "configuration/tables.h"
#include "device/capabilities.h"
#include "records/factory_records.h"

namespace simulator {
namespace {

// VLAN filtering has no label in the utility's reports, but a device may have it.
constexpr const char* kVlanFilterLabel = "VLAN filter";

bool AddCapability(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  std::string label;
  if (!ReadValue(node, label, error)) return false;
  uint32_t bit = label == kVlanFilterLabel ? CORVANE_CAP_VLAN_FILTER : 0;
  for (const corvane::Capability& capability : corvane::kCapabilities) {
    if (label == capability.label) bit = capability.bit;
  }
  if (bit == 0) return RefuseValue(node, "unknown capability \"" + label + "\"", error);
  device.capabilities |= bit;
  return true;
}

bool ReadCapabilities(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  if (const auto* labels = node.as_array()) {
    for (Where label : *labels) {
      if (!AddCapability(label, device, error)) return false;
    }
    return true;
  }
  return ReadNumber<0, UINT32_MAX, &DeviceConfiguration::capabilities>(node, device, error);
}

// Reads a record in hexadecimal digits that other keys give field by field.
template <class Record>
bool ReadWhole(Where node, const char* name, Record& record, ConfigurationError& error) {
  Bytes bytes(sizeof record);
  if (!ReadRecord({name, sizeof record, {}}, node, bytes, error)) return false;
  memcpy(&record, bytes.data(), sizeof record);
  return true;
}

// Keys are read in alphabetical order: the single versions were read before.
bool ReadVersions(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadWhole(node, "versions", device.versions, error);
}

bool ReadHwFirmwares(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  if (node.is_string()) {
    return ReadWhole(node, "hw_firmwares", device.hw_firmwares_record.emplace(), error);
  }
  const auto* names = node.as_array();
  if (names == nullptr || names->size() > CORVANE_HW_FIRMWARES) {
    return RefuseValue(node, "an array of at most 4 firmware names is expected here", error);
  }
  for (Where name : *names) {
    std::string text;
    if (!ReadValue(name, text, error)) return false;
    if (text.size() >= CORVANE_HW_FIRMWARE_NAME_SIZE) {
      return RefuseValue(name, "a firmware name has at most 31 bytes", error);
    }
    device.hw_firmwares.push_back(text);
  }
  return true;
}

constexpr Key<DeviceConfiguration> kTrafficKeys[] = {
    {"rate", ReadNumber<0, 10'000'000, &DeviceConfiguration::traffic_rate>}};
constexpr Key<DeviceConfiguration> kUpdateKeys[] = {
    {"duration_ms", ReadNumber<0, 3'600'000, &DeviceConfiguration::update_ms>}};

bool ReadTraffic(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadTable(node, "traffic wants a [device.traffic] table", kTrafficKeys, device, error);
}

bool ReadUpdate(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadTable(node, "update wants a [device.update] table", kUpdateKeys, device, error);
}

constexpr auto kVersions = &DeviceConfiguration::versions;

constexpr Key<DeviceConfiguration> kDeviceKeys[] = {
    {"type", ReadNumber<INT32_MIN, INT32_MAX, &DeviceConfiguration::type_code>},
    {"mac", ReadMac},
    {"capabilities", ReadCapabilities},
    {"sw_firmware", ReadMember<kVersions, &VersionRecord::sw_firmware>},
    {"driver", ReadMember<kVersions, &VersionRecord::driver>},
    {"hw_firmware", ReadNumber<0, UINT32_MAX, kVersions, &VersionRecord::hw_firmware>},
    {"hw_firmwares", ReadHwFirmwares},
    {"versions", ReadVersions},
    {"boot_ms", ReadNumber<0, 3'600'000, &DeviceConfiguration::boot_ms>},
    {"gps", ReadGps},
    {"gps_output", ReadGpsOutput},
    {"port_a", ReadPortA},
    {"port_b", ReadPortB},
    {"traffic", ReadTraffic},
    {"update", ReadUpdate},
};

// Reads the records of the device's table. Fields that they leave out have their factory values,
// which depend on the capabilities: those must be read before.
bool ReadRecords(const toml::table& table, DeviceConfiguration& device, ConfigurationError& error) {
  for (const RecordLayout& layout : AllLayouts()) {
    const toml::node* node = table.get(layout.name);
    if (node == nullptr) continue;
    GivenRecord record = {FactoryRecord(layout.name, device.capabilities), node->is_string()};
    if (!ReadRecord(layout, *node, record.bytes, error)) return false;
    device.records.emplace(layout.name, std::move(record));
  }
  return true;
}

}  // namespace

bool FindDevice(Where node, const Configuration& configuration, std::optional<std::string>& device,
                ConfigurationError& error) {
  if (!device) return true;
  for (const DeviceConfiguration& each : configuration.devices) {
    if (strcasecmp(each.name.c_str(), device->c_str()) != 0) continue;
    device = each.name;
    return true;
  }
  return RefuseValue(*node.as_table()->get("device"), "no [[device]] has this mac", error);
}

bool ReadMac(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  std::string text;
  unsigned b[CORVANE_MAC_SIZE];
  char rest = 0;
  if (!ReadValue(node, text, error)) return false;
  if (text.find_first_not_of("0123456789abcdefABCDEF:") != std::string::npos || text.size() != 17 ||
      sscanf(text.c_str(), "%2x:%2x:%2x:%2x:%2x:%2x%c", &b[0], &b[1], &b[2], &b[3], &b[4], &b[5],
             &rest) != CORVANE_MAC_SIZE) {
    return RefuseValue(node, "bad MAC address \"" + text + "\"", error);
  }
  for (size_t i = 0; i < CORVANE_MAC_SIZE; ++i) device.mac[i] = static_cast<uint8_t>(b[i]);
  device.name = text;
  std::ranges::transform(text, device.name.begin(), tolower);
  return true;
}

bool ReadValue(Where node, std::optional<std::string>& device, ConfigurationError& error) {
  DeviceConfiguration named;
  if (!ReadMac(node, named, error)) return false;
  device = named.name;
  return true;
}

bool AddDevice(Where node, Configuration& configuration, ConfigurationError& error) {
  DeviceConfiguration device;
  if (!ReadTable(node, "device wants [[device]] tables", kDeviceKeys, device, error)) return false;
  if (!ReadRecords(*node.as_table(), device, error)) return false;
  if (device.name.empty()) return RefuseValue(node, "a device needs a mac", error);
  for (const DeviceConfiguration& other : configuration.devices) {
    if (other.name == device.name) {
      return RefuseValue(node, "two devices have the MAC address " + device.name, error);
    }
  }
  configuration.devices.push_back(std::move(device));
  return true;
}

}  // namespace simulator
