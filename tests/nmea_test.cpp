// nmea, end to end.
#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

TEST(Nmea, EndsWithTheErrorOfTheDevice) {
  const Simulation none(OneDevice(0));
  ExpectRun(none, "nmea", "GPS output interface not supported\n", 255);
  const Simulation failing(OneDevice(kGps) + FaultToml("CorvaneAPIGPSOutputRead", -77, 3));
  ExpectRun(failing, "nmea", "Error while reading GPS output interface\n", 255);
  EXPECT_EQ(Work(failing),
            "GPSOutputFlush GPSOutputRead SleepMs GPSOutputRead SleepMs GPSOutputRead ");
  EXPECT_EQ(failing.Lines("CorvaneApiSleepMs")[0], "CorvaneApiSleepMs milliseconds=1 status=0");
  const Result missing = none.Run("nmea -d 1");
  EXPECT_EQ(missing.out, "Invalid Corvane device selected\n");
  EXPECT_EQ(missing.status, 252);
}

// The status of the flush does not matter, and sentences arrive while the program runs.
TEST(Nmea, StreamsUntilTheInterrupt) {
  const Simulation simulation(OneDevice(kGps) + FaultToml("CorvaneAPIGPSOutputFlush", -77));
  const Result result = simulation.Run("nmea", 2500);
  EXPECT_EQ(result.status, 128 + 2);
  const std::string first = "Corvane detected\n$GPRMC,";
  EXPECT_EQ(result.out.substr(0, first.size()), first);
  EXPECT_TRUE(result.out.ends_with("\r\n"));
  size_t printed = 0;
  for (const std::string& line : simulation.Lines("CorvaneAPIGPSOutputRead")) {
    const size_t at = line.find(" count=");
    if (at != std::string::npos) printed += std::stoul(line.substr(at + 7));
    EXPECT_NE(line.find(" capacity=128 "), std::string::npos);
  }
  EXPECT_EQ(result.out.size(), strlen("Corvane detected\n") + printed);
  EXPECT_GT(printed, 2 * 128U);
}

}  // namespace
