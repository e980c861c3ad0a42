// features set, save, show and reset, end to end.
#include <gtest/gtest.h>

#include <functional>

#include "device/capabilities.h"
#include "support/simulation.h"

namespace {

constexpr const char* kMac = "00:1a:2b:3c:4d:5e";
constexpr uint32_t kEverything = 0x3FFFFFF;
constexpr const char* kTwoFirmwares = "hw_firmwares = [\"10G 4.7\", \"1G 2.3\"]";

std::string OneDevice(int type, uint32_t capabilities, const std::string& more = "") {
  return DeviceToml(type, kMac, capabilities, more);
}

FeaturesRecord Sent(const Simulation& simulation) {
  return simulation.Sent<FeaturesRecord>("CorvaneAPISetDeviceFeatures");
}

const char* const kSlicingWarning =
    "Warning : Your device does not support slicing other than 128 Bytes. Setting slicing size to "
    "128\n";

struct SetCase {
  const char* arguments;
  int type;
  uint32_t capabilities;
  const char* out;  // after the selection line
  std::function<void(FeaturesRecord&)> change;
};

class FeaturesSet : public testing::TestWithParam<SetCase> {};

// Every field starts out of line, so that one written by mistake shows.
TEST_P(FeaturesSet, WritesWhatIsNamedAndKeepsTheRest) {
  const SetCase& c = GetParam();
  FeaturesRecord features = {};
  memset(&features, 7, sizeof features);
  features.firmware_index = 0;
  std::string hex;
  for (size_t i = 0; i < sizeof features; ++i) hex += i == 80 ? "00" : "07";
  const Simulation simulation(OneDevice(c.type, c.capabilities, "features = \"" + hex + "\""));
  const Result result = simulation.Run(std::string("features set ") + c.arguments);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.out, std::string("Corvane detected\n") + c.out);
  c.change(features);
  const FeaturesRecord sent = Sent(simulation);
  EXPECT_EQ(memcmp(&sent, &features, sizeof features), 0);
  EXPECT_EQ(simulation.CallsOf("CorvaneAPIUninitialize"), 1);
}

INSTANTIATE_TEST_SUITE_P(
    , FeaturesSet,
    testing::Values(
        SetCase{"", 11, 0, "", [](FeaturesRecord&) {}},
        SetCase{"--keepcrcerrors on --keepcrc32 OFF --disablea On --disableb off", 11, 0, "",
                [](FeaturesRecord& f) {
                  f.transmitcrcerrors = f.disablea = 1;
                  f.keepcrc32 = f.disableb = 0;
                }},
        SetCase{"--inline off --timestamps on --syncts off", 11, 0, "",
                [](FeaturesRecord& f) {
                  f.inline_ = f.syncts = 0;
                  f.ts = 1;
                }},
        SetCase{"--slicing 0", 6, 0, "", [](FeaturesRecord& f) { f.slicing = f.slicing_size = 0; }},
        SetCase{"--slicing 65664", 6, 0, "",
                [](FeaturesRecord& f) {
                  f.slicing = 1;
                  f.slicing_size = 128;
                }},
        SetCase{"--slicing 200", 6, 0, kSlicingWarning,
                [](FeaturesRecord& f) {
                  f.slicing = 1;
                  f.slicing_size = 128;
                }},
        SetCase{"--slicing 200", 11, 0, "",
                [](FeaturesRecord& f) {
                  f.slicing = 1;
                  f.slicing_size = 200;
                }},
        SetCase{"--loopback on", 11, kLoopback, "", [](FeaturesRecord& f) { f.loopback = 1; }},
        SetCase{"--loopback on", 11, 0, "Warning : Your device does not support loopback mode.\n",
                [](FeaturesRecord& f) { f.loopback = 0; }},
        SetCase{"--loopback off", 11, 0, "", [](FeaturesRecord& f) { f.loopback = 0; }},
        SetCase{"--autonega off --autonegb on", 16, 0,
                "Warning : Your device does not support SFP port A autoneg.\n"
                "Warning : Your device does not support SFP port B autoneg.\n",
                [](FeaturesRecord&) {}},
        SetCase{"--autonega off --autonegb on", 16, kAutonegotiation, "",
                [](FeaturesRecord& f) {
                  f.autonega = 0;
                  f.autonegb = 1;
                }},
        SetCase{"--firmware_mode 1G", 16, 0,
                "Warning : Your device does not support multiple HW firmware.\n",
                [](FeaturesRecord&) {}},
        SetCase{"--firmware_mode 1g", 16, kMultipleHw, "", [](FeaturesRecord&) {}},
        SetCase{"--firmware_mode 10G", 16, kMultipleHw, "", [](FeaturesRecord&) {}}));

TEST(Features, AFirmwareSwitchIsSavedAndActivatedAtOnce) {
  const Simulation simulation(OneDevice(16, kEverything, kTwoFirmwares));
  const Result set = simulation.Run("features set --firmware_mode 1G --keepcrc32 on");
  EXPECT_EQ(set.out, "Corvane detected\n");
  EXPECT_EQ(set.status, 0);
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISaveDeviceFeatures"), 1);
  EXPECT_EQ(simulation.CallsOf("CorvaneAPIRestartDevice"), 1);
  const Result show = simulation.Run("features show");
  EXPECT_NE(show.out.find("\tLoaded firmware: 1G 2.3\n"), std::string::npos);
  EXPECT_NE(show.out.find("\tKeep CRC32 field : Enabled\n"), std::string::npos);
}

TEST(Features, ResetLosesWhatWasNotSaved) {
  const Simulation simulation(OneDevice(11, kEverything));
  const std::string sliced = "\tPacket slicing : Enabled 300 bytes\n";
  simulation.Run("features set --slicing 300");
  EXPECT_NE(simulation.Run("features show").out.find(sliced), std::string::npos);
  EXPECT_EQ(simulation.Run("reset").out, "Corvane detected\nThe device was reset\n");
  EXPECT_EQ(simulation.Run("features show").out.find(sliced), std::string::npos);

  simulation.Run("features set --slicing 300");
  EXPECT_EQ(simulation.Run("features save").out, "Corvane detected\n");
  simulation.Run("reset");
  EXPECT_NE(simulation.Run("features show").out.find(sliced), std::string::npos);
}

TEST(Features, ShowsWhatTheDeviceCanDo) {
  const Simulation full(OneDevice(
      16, kEverything, std::string(kTwoFirmwares) + "\nfeatures = {inline = 2, autonegb = 1}"));
  EXPECT_EQ(full.Run("features show").out,
            "Corvane detected\n"
            "Features Configuration : \n"
            "\tTransmit CRC errors : Disabled\n"
            "\tKeep CRC32 field : Disabled\n"
            "\tDisable port A : Disabled\n"
            "\tDisable port B : Disabled\n"
            "\tPacket slicing : Disabled 128 bytes\n"
            "\tInline mode : Disabled\n"
            "\tLoopback : Disabled\n"
            "\tTimestamps in packets : Enabled\n"
            "\tSynchronized timestamps : Disabled\n"
            "\tPort A autonegotiation : Enabled\n"
            "\tPort B autonegotiation : Enabled\n"
            "\tLoaded firmware: 10G 4.7\n");
  const Simulation plain(OneDevice(11, 0, "features = {inline = 0, loopback = 1}"));
  EXPECT_EQ(plain.Run("features show").out,
            "Corvane detected\n"
            "Features Configuration : \n"
            "\tTransmit CRC errors : Disabled\n"
            "\tKeep CRC32 field : Disabled\n"
            "\tDisable port A : Disabled\n"
            "\tDisable port B : Disabled\n"
            "\tPacket slicing : Disabled 128 bytes\n"
            "\tInline mode : Enabled (forced)\n"
            "\tLoopback : Disabled (forced)\n"
            "\tTimestamps in packets : Enabled\n"
            "\tSynchronized timestamps : Disabled\n");
}

TEST(Features, AnIndexOutsideTheFirmwareListIsInvalid) {
  for (const char* index : {"2", "200"}) {
    const std::string more =
        std::string(kTwoFirmwares) + "\nfeatures = {firmware_index = " + index + "}";
    const Simulation simulation(OneDevice(16, kMultipleHw, more));
    EXPECT_NE(simulation.Run("features show").out.find("\tLoaded firmware: INVALID\n"),
              std::string::npos);
  }
}

struct FaultCase {
  const char* words;
  const char* function;
  const char* message;
  int status;
};

class FeaturesFault : public testing::TestWithParam<FaultCase> {};

TEST_P(FeaturesFault, IsReportedAndChangesNothingMore) {
  const FaultCase& c = GetParam();
  const Simulation simulation(OneDevice(16, kEverything, kTwoFirmwares) +
                              FaultToml(c.function, -77));
  const Result result = simulation.Run(c.words);
  EXPECT_EQ(result.out, std::string("Corvane detected\n") + c.message + "\n");
  EXPECT_EQ(result.status, c.status);
  EXPECT_EQ(simulation.Calls().back(), "CorvaneAPIUninitialize");
  const auto calls = simulation.Calls();
  EXPECT_EQ(calls[calls.size() - 2], c.function);
}

INSTANTIATE_TEST_SUITE_P(
    , FeaturesFault,
    testing::Values(FaultCase{"features set", "CorvaneAPIGetDeviceFeatures",
                              "Failed to get Corvane Features configuration", 179},
                    FaultCase{"features set", "CorvaneAPISetDeviceFeatures",
                              "Failed to set Corvane Features configuration", 179},
                    FaultCase{"features set --firmware_mode 1G", "CorvaneAPISaveDeviceFeatures",
                              "Failed to save Corvane Features configuration", 179},
                    FaultCase{"features set --firmware_mode 1G", "CorvaneAPIRestartDevice",
                              "Failed to reset Corvane device", 179},
                    FaultCase{"features save", "CorvaneAPISaveDeviceFeatures",
                              "Failed to save Corvane Features configuration", 179},
                    FaultCase{"features show", "CorvaneAPIGetDeviceFeatures",
                              "Failed to get Corvane Features configuration", 179},
                    FaultCase{"features show", "CorvaneAPIGetHwFirmwaresDesc",
                              "Failed to get Corvane firmware description", 179},
                    FaultCase{"reset", "CorvaneAPIRestartDevice", "The device was reset", 179}));

TEST(Features, AnUnreadableTypeLeavesTheLibraryOpenAndTheRecordUnwritten) {
  const Simulation simulation(OneDevice(16, 0) + FaultToml("CorvaneAPIGetDeviceType", -77));
  const Result result = simulation.Run("features set --slicing 200");
  EXPECT_EQ(result.out, "Corvane detected\nError\n");
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(simulation.Calls().back(), "CorvaneAPIGetDeviceType");
}

}  // namespace
