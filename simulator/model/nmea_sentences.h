// What a GPS receiver says once a second: NMEA 0183 sentences of the talker GP.
#pragma once

#include <cstdint>
#include <string>

#include "configuration/gps_position.h"

namespace simulator {

enum class GpsFix : uint8_t { kNone, k2d, k3d };

// One second of a receiver.
struct GpsSecond {
  int64_t time = 0;  // seconds since the Unix epoch, from 1970 to 9999
  GpsPosition position;
  GpsFix fix = GpsFix::kNone;
  uint32_t satellites_in_view = 0;  // the receiver tracks the first kGpsChannels of them
  uint32_t satellites_used = 0;     // of those that it tracks; none without a fix
};

inline constexpr uint32_t kGpsChannels = 12;

// The sentences RMC, GGA, GSA, GSV (one for every four satellites) and ZDA of the second, each
// ending in CR LF. Without a fix the fields of the position are empty.
std::string NmeaSentences(const GpsSecond& second);

// A whole sentence: "$", the body, "*", its checksum (the exclusive or of the body's bytes, two
// hexadecimal digits), CR LF.
std::string NmeaSentence(const std::string& body);

}  // namespace simulator
