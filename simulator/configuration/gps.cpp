#include "configuration/records.h"
#include "configuration/tables.h"

namespace simulator {
namespace {

bool ReadLatitude(Where node, GpsPosition& position, ConfigurationError& error) {
  return ReadReal(node, -90, 90, position.latitude, error);
}

bool ReadLongitude(Where node, GpsPosition& position, ConfigurationError& error) {
  return ReadReal(node, -180, 180, position.longitude, error);
}

bool ReadAltitude(Where node, GpsPosition& position, ConfigurationError& error) {
  return ReadReal(node, -1000, 100'000, position.altitude, error);
}

constexpr Key<GpsPosition> kGpsKeys[] = {
    {"latitude", ReadLatitude},
    {"longitude", ReadLongitude},
    {"altitude", ReadAltitude},
};

constexpr size_t kMostOutput = 128;  // bytes of a read

bool ReadCount(Where node, GivenGpsOutput& output, ConfigurationError& error) {
  return ReadInt32(node, output.count, error);
}

bool ReadOutputText(Where node, GivenGpsOutput& output, ConfigurationError& error) {
  std::string digits;
  Bytes bytes;
  if (!ReadText(node, digits, error)) return false;
  if (!ReadHex(digits, bytes) || bytes.size() > kMostOutput) {
    return RefuseValue(node, "at most 128 bytes in hexadecimal digits are expected here", error);
  }
  output.text.assign(bytes.begin(), bytes.end());
  return true;
}

constexpr Key<GivenGpsOutput> kOutputKeys[] = {{"count", ReadCount}, {"text", ReadOutputText}};

}  // namespace

bool ReadGps(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "gps wants a [device.gps] table", error);
  return ReadKeys(*table, kGpsKeys, device.position, error);
}

bool ReadGpsOutput(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "gps_output wants a table", error);
  return ReadKeys(*table, kOutputKeys, device.gps_output.emplace(), error);
}

}  // namespace simulator
