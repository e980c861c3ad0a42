// timing config, save and status, end to end.
#include "device/capabilities.h"
#include "support/records.h"

namespace {

const std::string kOn = "01000000";
const std::string kOff = "00000000";

// The fields stand from 36 on: force PPS, source, wait for sync, PPS output; 52 is the
// compensation, 56 and 60 are the ports' places.
TEST(TimingConfig, WritesWhatIsNamedAndKeepsTheRestButTheCompensation) {
  const std::pair<std::string, std::map<size_t, std::string>> cases[] = {
      {"", {}},
      {"--tssource System --waitforsync on --forcepps off", {{36, kOff + kOff + kOn}}},
      {"--tssource rtc --ppsoutput ON", {{40, kOn}, {48, kOn}}},
      {"--tssource GPS --portAts capture --portBts INGRESS", {{40, Hex(2, 4)}, {56, kOff + kOn}}},
      {"--tssource none --portAts Egress", {{40, Hex(3, 4)}, {56, Hex(2, 4)}}},
      {"--ppscomp -50", {{52, Hex(214, 2)}}},
      {"--ppscomp -50.29", {{52, Hex(215, 2)}}},
      {"--ppscomp -1", {{52, Hex(4, 2)}}},
      {"--ppscomp 0.2", {}},
  };
  for (const auto& [arguments, changes] : cases) {
    const Simulation simulation(OneDevice(kGps, "features = \"" + Sevens(84) + "\""));
    ExpectRun(simulation, "timing config " + arguments, "");
    std::map<size_t, std::string> expected = {{52, Hex(0, 2)}};
    for (const auto& [at, bytes] : changes) expected[at] = bytes;
    EXPECT_EQ(Sent(simulation, "SetDeviceFeatures"), Sevens(84, expected)) << arguments;
  }
}

TEST(TimingConfig, RefusesACompensationOutOfRangeAndWritesNothing) {
  const Simulation simulation(OneDevice(kGps));
  for (const std::string ns : {"-50.3", "-50.6", "0.3", "1e300", "-1e300", "inf", "-inf", "nan"}) {
    ExpectRun(simulation, "timing config --tssource gps --ppscomp " + ns,
              "Invalid PPS compensation delay specified. The delay must be in [-50.6;0] ns.\n",
              251);
  }
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetDeviceFeatures"), 0);
}

std::string Status(const FeaturesRecord& features, const TimingStatusRecord& timing) {
  const std::string records = RawToml("features", features) + RawToml("timing_status", timing);
  return Simulation(OneDevice(kGps, records)).Run("timing status").out;
}

TEST(TimingStatus, ReportsEveryField) {
  FeaturesRecord features = {};
  features.tssource = 2;
  features.waitforsync = 1;
  features.ppscomp = 215;
  features.portAts = 1;
  features.portBts = 2;
  TimingStatusRecord timing = {2,  2, 9, 12, UINT32_MAX, 1,  0, 0, -1234.56,
                               {}, 5, 3, 4,  5,          99, 2, 7, {}};
  EXPECT_EQ(Status(features, timing), GoldenReport("timing-status"));
  features.waitforsync = 0;
  features.ppsoutput = 1;
  timing.gps_pps = 0;
  timing.synchronized = 1;
  const std::string out = Status(features, timing);
  EXPECT_NE(out.find(" : off\n\tForce PPS generation : off\n\tPPS port output : on\n"), out.npos);
  EXPECT_NE(out.find("\tExternal PPS : not detected\n"), out.npos);
  EXPECT_NE(out.find("\tTimestamp synchronized : yes\n"), out.npos);
}

TEST(TimingStatus, NamesTheCodes) {
  std::string reports;
  for (const uint32_t code : {0U, 1U, 2U, 3U, 4U, 5U, 6U, UINT32_MAX}) {
    uint32_t words[20];
    std::fill(words, words + 20, code);
    FeaturesRecord features;
    TimingStatusRecord timing;
    memcpy(&timing, words, sizeof timing);
    memcpy(&features, words, 64);
    timing.pps_deviation = static_cast<int32_t>(code);
    reports += Status(features, timing);
  }
  EXPECT_EQ(reports, GoldenReport("timing-codes"));
}

TEST(TimingConfig, NeedsTheCapabilityAndSaysWhatFailed) {
  const Simulation without(OneDevice(~kGps));
  for (const char* words : {"timing config --ppscomp 9", "timing save", "timing status"}) {
    ExpectRun(without, words, "Your device does not support timing information and configuration\n",
              251);
    EXPECT_EQ(Work(without), "GetDeviceCapabilitiesEx ");
  }
  ExpectFailures(
      OneDevice(kGps),
      {{"timing config", "GetDeviceFeatures", "Failed to get Corvane Features configuration\n"},
       {"timing config", "SetDeviceFeatures", "Failed to set Corvane Features configuration\n"},
       {"timing save", "SaveDeviceFeatures", "Failed to save Corvane timing configuration\n"},
       {"timing status", "GetDeviceFeatures", "Failed to get Corvane timing configuration\n"},
       {"timing status", "GetTimingStatus", "Failed to get Corvane timing status\n"}});
}

}  // namespace
