// update, end to end.
#include "support/expectations.h"

namespace {

const std::string kStarted =
    "Firmware update started. Do NOT unplug your device, do NOT interrupt the process.\n"
    "If the process gets interrupted, do NOT unplug your device and try again.\n";
constexpr const char* kSlow = "update = {duration_ms = 60000}";
constexpr const char* kProgress = "CorvaneAPIFirmwareUpdateGetProgress";

// The command to update with a file that fits the device.
std::string UpdateWords(const Simulation& simulation) {
  WriteFile(simulation.folder() + "/fw",
            "CORVANE-FIRMWARE 1\ntype = 11\nsw_firmware = 1.9.0.0\n\n");
  return "update --firmware " + simulation.folder() + "/fw";
}

TEST(FirmwareUpdate, ShowsItsProgressToTheEnd) {
  const Simulation simulation(OneDevice(0, "update = {duration_ms = 1500}"));
  const std::string out = simulation.Run(UpdateWords(simulation)).out;
  std::string expected = "Corvane detected\n" + kStarted;
  size_t turn = 0;
  for (const std::string& line : simulation.Lines(kProgress)) {
    const size_t at = line.find(" percent=") + 9;
    if (!line.ends_with(" status=-13")) continue;
    expected += "Progress : " + line.substr(at, line.find(' ', at) - at) + "% " +
                "-\\|/"[turn++ % 4] + "  \r";
  }
  EXPECT_EQ(out, expected +
                     "Progress : 100%  \nFirmware update success. Please disconnect and reconnect "
                     "your device\n");
  EXPECT_EQ(simulation.Lines("CorvaneApiSleepMs"),
            std::vector<std::string>(turn, "CorvaneApiSleepMs milliseconds=200 status=0"));
  const std::string start = simulation.Lines("CorvaneAPIFirmwareUpdateStart")[0];
  EXPECT_TRUE(start.ends_with(" path=\"" + simulation.folder() + "/fw\" status=0")) << start;
}

TEST(FirmwareUpdate, IsSeenWhileItRuns) {
  const Simulation simulation(OneDevice(0, kSlow));
  const std::string out = simulation.Run(UpdateWords(simulation), 1000).out;
  EXPECT_TRUE(out.starts_with("Corvane detected\n" + kStarted + "Progress : 0% -  \r")) << out;
}

TEST(FirmwareUpdate, TellsHowItFailed) {
  const std::pair<int, std::string> ends[] = {
      {-4, "Corvane device not found\n"},
      {-15, "Firmware file is not valid (or not for this device model)\n"},
      {-14, "Failed to open firmware file\n"},
      {1, ""}};
  for (const auto& [code, reason] : ends) {
    const Simulation simulation(OneDevice(0, kSlow) + FaultToml(kProgress, code, 2));
    ExpectRun(simulation, UpdateWords(simulation),
              kStarted + "Progress : 0% -  \r\nFirmware update failed\n" + reason, code & 0xFF);
    EXPECT_TRUE(Work(simulation).ends_with("GetProgress ")) << code;
  }
  ExpectFailures(OneDevice(0), {{"update --firmware x", "FirmwareUpdateStart",
                                 "Failed to start firmware update\n"}});
}

}  // namespace
