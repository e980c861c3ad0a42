#include <gtest/gtest.h>

#include "model/nmea_sentences.h"

using namespace simulator;

namespace {

GpsSecond Fixed(double latitude, double longitude) {
  return {1'000'000'000, {latitude, longitude, 12.34}, GpsFix::k3d, {5, 0}, 4};
}

// The checksums were worked out apart from the program.
TEST(SimulatorNmea, SecondWithAFix) {
  EXPECT_EQ(NmeaSentences(Fixed(-33.8568, 151.2153)),
            "$GPRMC,014640.00,A,3351.40800,S,15112.91800,E,0.0,,090901,,,A*65\r\n"
            "$GPGGA,014640.00,3351.40800,S,15112.91800,E,1,04,0.9,12.3,M,,M,,*5B\r\n"
            "$GPGSA,A,3,12,25,29,05,,,,,,,,,1.6,0.9,1.3*34\r\n"
            "$GPGSV,2,1,05,12,78,214,48,25,64,061,47,29,55,288,46,05,47,132,45*75\r\n"
            "$GPGSV,2,2,05,02,38,301,43*40\r\n"
            "$GPZDA,014640.00,09,09,2001,00,00*62\r\n");
}

TEST(SimulatorNmea, RoundsAndCarriesPositionsCalendarAndSatellites) {
  const GpsSecond no_fix = {.time = 0, .used = 7};
  const GpsSecond leap_day = {.time = 1'709'251'199};
  const GpsSecond next_day = {.time = 1'709'251'200};
  const GpsSecond many = {0, {}, GpsFix::k3d, {UINT32_MAX, 0}, UINT32_MAX};
  const GpsSecond both = {0, {}, GpsFix::k3d, {3, 5}, 4};
  const GpsSecond glonass = {0, {}, GpsFix::k2d, {0, 3}, 3};
  const std::pair<GpsSecond, const char*> cases[] = {
      {Fixed(47.3769, -8.5417), ",4722.61400,N,00832.50200,W,"},
      {Fixed(-0.00001, -0.00001), ",0000.00060,S,00000.00060,W,"},
      {Fixed(59.9999999, 9.9999999), ",5959.99999,N,00959.99999,E,"},    // 59.999994 minutes
      {Fixed(59.99999999, 9.99999999), ",6000.00000,N,01000.00000,E,"},  // 59.9999994
      {Fixed(-90, 180), ",9000.00000,S,18000.00000,E,"},
      {no_fix,
       "$GPRMC,000000.00,V,,,,,,,010170,,,N*7A\r\n$GPGGA,000000.00,,,,,0,00,,,M,,M,,*48\r\n"},
      {no_fix, "$GPGSA,A,1,,,,,,,,,,,,,,,*1E\r\n$GPGSV,1,1,00*79\r\n$GPZDA,000000.00,01,01,1970"},
      {leap_day, "$GPRMC,235959.00,V,,,,,,,290224,"},
      {leap_day, "$GPZDA,235959.00,29,02,2024,"},
      {next_day, "$GPRMC,000000.00,V,,,,,,,010324,"},
      {next_day, "$GPZDA,000000.00,01,03,2024,"},
      {many, ",E,1,12,0.9,"},
      {many, "$GPGSV,3,3,12,"},
      {both, "$GNGGA,000000.00,4722.61400,N,00832.50200,E,1,04,"},
      {both, "$GNGSA,A,3,12,25,29,,,,,,,,,,1.6,"},
      {both, "$GNGSA,A,3,65,,,,,,,,,,,,1.6,"},
      {both, "$GLGSV,2,2,05,69,38,121,43*"},
      {glonass, "$GLRMC,000000.00,A,"},
  };
  for (const auto& [second, part] : cases) {
    EXPECT_NE(NmeaSentences(second).find(part), std::string::npos) << part;
  }
}

}  // namespace
