// Where a device's GPS antenna stands.
#pragma once

namespace simulator {

struct GpsPosition {
  double latitude = 47.3769;  // degrees, north positive, -90 to 90
  double longitude = 8.5417;  // degrees, east positive, -180 to 180
  double altitude = 408;      // metres above mean sea level
};

}  // namespace simulator
