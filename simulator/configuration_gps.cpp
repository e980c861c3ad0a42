#include "configuration_gps.h"

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

}  // namespace

bool ReadGps(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "gps wants a [device.gps] table", error);
  return ReadKeys(*table, kGpsKeys, device.position, error);
}
