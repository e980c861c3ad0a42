#include "model/nmea_sentences.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>

#include "state/host_clock.h"

namespace simulator {
namespace {

struct Satellite {
  uint32_t number;     // PRN; GLONASS has slots from 65 on in their place
  uint32_t elevation;  // degrees
  uint32_t azimuth;    // degrees
  uint32_t strength;   // signal to noise, dB-Hz
};

// The strongest come first: a receiver uses those.
constexpr Satellite kSky[kGpsChannels] = {
    {12, 78, 214, 48}, {25, 64, 61, 47},  {29, 55, 288, 46}, {5, 47, 132, 45},
    {2, 38, 301, 43},  {20, 33, 87, 42},  {11, 29, 42, 41},  {31, 24, 193, 39},
    {6, 19, 265, 37},  {18, 14, 340, 34}, {26, 9, 16, 31},   {9, 5, 152, 28},
};

// Dilutions of precision of that sky; the first is the root of the squares of the others.
constexpr const char* kPositionDilution = "1.6";
constexpr const char* kHorizontalDilution = "0.9";
constexpr const char* kVerticalDilution = "1.3";

[[gnu::format(printf, 1, 2)]] std::string Text(const char* format, ...) {
  char text[96];  // a sentence has at most 82 characters
  va_list values;
  va_start(values, format);
  vsnprintf(text, sizeof text, format, values);  // NOLINT(clang-analyzer-valist.Uninitialized)
  va_end(values);
  return text;
}

// Degrees and minutes with their hemisphere, like "4722.61400,N". Rounded as one number, so
// that 59.999999 minutes carry over to the degrees.
std::string Angle(double degrees, int degree_digits, const char* hemispheres) {
  constexpr int64_t kPerMinute = 100'000;
  constexpr int64_t kPerDegree = 60 * kPerMinute;
  const int64_t units = std::llround(std::fabs(degrees) * kPerDegree);
  return Text("%0*d%02d.%05d,%c", degree_digits, static_cast<int>(units / kPerDegree),
              static_cast<int>(units % kPerDegree / kPerMinute),
              static_cast<int>(units % kPerMinute), hemispheres[degrees < 0 ? 1 : 0]);
}

std::string PositionText(const GpsSecond& second) {
  if (second.fix == GpsFix::kNone) return ",,,";
  return Angle(second.position.latitude, 2, "NS") + "," + Angle(second.position.longitude, 3, "EW");
}

uint32_t Followed(const GpsSecond& second, int constellation) {
  return std::min(second.in_view[constellation], kGpsChannels);
}

// Those of the first constellation are used first.
uint32_t Used(const GpsSecond& second, int constellation) {
  if (second.fix == GpsFix::kNone) return 0;
  const uint32_t followed = Followed(second, constellation);
  const uint32_t others = constellation == 0 ? 0 : std::min(second.used, Followed(second, 0));
  return std::min(second.used - others, followed);
}

// The satellites of GLONASS stand in the other half of the sky.
Satellite InSky(int constellation, uint32_t index) {
  Satellite satellite = kSky[index];
  if (constellation == 0) return satellite;
  satellite.number = 65 + index;
  satellite.azimuth = (satellite.azimuth + 180) % 360;
  return satellite;
}

bool HasBoth(const GpsSecond& second) {
  return second.in_view[0] > 0 && second.in_view[1] > 0;
}

std::string Talker(const GpsSecond& second) {
  if (HasBoth(second)) return "GN";
  return second.in_view[1] > 0 ? "GL" : "GP";
}

std::string TimeText(const tm& utc) {
  return Text("%02d%02d%02d.00", utc.tm_hour, utc.tm_min, utc.tm_sec);
}

// Recommended minimum: time, position, speed, date.
std::string Rmc(const GpsSecond& second, const tm& utc) {
  const bool fixed = second.fix != GpsFix::kNone;
  return Talker(second) + "RMC," + TimeText(utc) + (fixed ? ",A," : ",V,") + PositionText(second) +
         (fixed ? ",0.0,," : ",,,") +
         Text("%02d%02d%02d", utc.tm_mday, utc.tm_mon + 1, utc.tm_year % 100) + ",,," +
         (fixed ? "A" : "N");
}

// Fix data: position, quality, satellites, altitude. The geoid's height is not given.
std::string Gga(const GpsSecond& second, const tm& utc) {
  const bool fixed = second.fix != GpsFix::kNone;
  return Talker(second) + "GGA," + TimeText(utc) + "," + PositionText(second) +
         (fixed ? ",1," : ",0,") + Text("%02u", Used(second, 0) + Used(second, 1)) + "," +
         (fixed ? Text("%s,%.1f", kHorizontalDilution, second.position.altitude) : ",") + ",M,,M,,";
}

// The satellites of a constellation that are used, in twelve places, and the dilutions of
// precision.
std::string Gsa(const GpsSecond& second, int constellation) {
  std::string body = Talker(second) + Text("GSA,A,%d", static_cast<int>(second.fix) + 1);
  for (uint32_t i = 0; i < kGpsChannels; ++i) {
    body += i < Used(second, constellation) ? Text(",%02u", InSky(constellation, i).number) : ",";
  }
  if (second.fix == GpsFix::kNone) return NmeaSentence(body + ",,,");
  return NmeaSentence(body + "," + kPositionDilution + "," + kHorizontalDilution + "," +
                      kVerticalDilution);
}

// The satellites of a constellation in view, four a sentence; with none there is still one sentence
// that says so.
std::string Gsv(const GpsSecond& second, int constellation) {
  constexpr uint32_t kPerSentence = 4;
  const uint32_t followed = Followed(second, constellation);
  const uint32_t sentences = std::max(1U, (followed + kPerSentence - 1) / kPerSentence);
  std::string text;
  for (uint32_t sentence = 0; sentence < sentences; ++sentence) {
    std::string body = Text("%s,%u,%u,%02u", constellation == 0 ? "GPGSV" : "GLGSV", sentences,
                            sentence + 1, followed);
    const uint32_t end = std::min(followed, (sentence + 1) * kPerSentence);
    for (uint32_t i = sentence * kPerSentence; i < end; ++i) {
      const Satellite satellite = InSky(constellation, i);
      body += Text(",%02u,%02u,%03u,%02u", satellite.number, satellite.elevation, satellite.azimuth,
                   satellite.strength);
    }
    text += NmeaSentence(body);
  }
  return text;
}

// The first constellation speaks even when nothing is in view.
std::string Constellations(const GpsSecond& second) {
  std::string used;
  std::string in_view;
  for (int i = 0; i < kConstellations; ++i) {
    if (second.in_view[i] == 0 && (i == 1 || second.in_view[1] > 0)) continue;
    used += Gsa(second, i);
    in_view += Gsv(second, i);
  }
  return used + in_view;
}

// Time and date; the local zone is UTC.
std::string Zda(const GpsSecond& second, const tm& utc) {
  return Talker(second) + "ZDA," + TimeText(utc) +
         Text(",%02d,%02d,%04d,00,00", utc.tm_mday, utc.tm_mon + 1, utc.tm_year + 1900);
}

}  // namespace

std::string NmeaSentence(const std::string& body) {
  uint8_t checksum = 0;
  for (const char c : body) checksum ^= static_cast<uint8_t>(c);
  return "$" + body + Text("*%02X\r\n", checksum);
}

std::string NmeaSentences(const GpsSecond& second) {
  const tm utc = UtcOf(second.time);
  return NmeaSentence(Rmc(second, utc)) + NmeaSentence(Gga(second, utc)) + Constellations(second) +
         NmeaSentence(Zda(second, utc));
}

}  // namespace simulator
