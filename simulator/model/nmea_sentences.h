// What a GPS receiver says once a second: NMEA 0183 sentences of the talkers GP, GL and GN.
#pragma once

#include <cstdint>
#include <string>

#include "configuration/gps_position.h"

namespace simulator {

enum class GpsFix : uint8_t { kNone, k2d, k3d };

inline constexpr uint32_t kGpsChannels = 12;
inline constexpr int kConstellations = 2;  // GPS, GLONASS

// One second of a receiver.
struct GpsSecond {
  int64_t time = 0;  // seconds since the Unix epoch, from 1970 to 9999
  GpsPosition position;
  GpsFix fix = GpsFix::kNone;
  uint32_t in_view[kConstellations] = {};  // it tracks the first kGpsChannels of each
  uint32_t used = 0;                       // of those that it tracks; none without a fix
};

// The sentences RMC, GGA, GSA, GSV (one for every four satellites) and ZDA of the second, each
// ending in CR LF. Without a fix the fields of the position are empty. GSA and GSV come once for
// each constellation that is in view; with both the talker of the others is GN.
std::string NmeaSentences(const GpsSecond& second);

// A whole sentence: "$", the body, "*", its checksum (the exclusive or of the body's bytes, two
// hexadecimal digits), CR LF.
std::string NmeaSentence(const std::string& body);

}  // namespace simulator
