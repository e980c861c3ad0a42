// What is printed while a command runs: its reader has it at once.
#include <csignal>
#include <cstdlib>

#include "device/capabilities.h"
#include "support/expectations.h"
#include "support/golden.h"

namespace {

TEST(Stream, NmeaRunsUntilTheInterrupt) {
  const Simulation simulation(OneDevice(
      CORVANE_CAP_GPS, "gps = {latitude = -33.8568, longitude = 151.2153, altitude = 27.5}"));
  simulation.Run("timing setmanual --timestamp 1800000000");
  const Result result = simulation.Run("nmea", 2500);
  EXPECT_EQ(result.status, 128 + SIGINT);
  EXPECT_TRUE(result.out.starts_with("Corvane detected\n$GNRMC,")) << result.out;
  for (const char* part : {".00,A,3351.40800,S,15112.91800,E,", ",27.5,M,"}) {
    EXPECT_NE(result.out.find(part), std::string::npos) << part << " in\n" << result.out;
  }
  EXPECT_EQ(result.out.find(",15,01,2027,00,00*"), std::string::npos);  // satellites have their own
  EXPECT_TRUE(result.out.ends_with("\r\n"));
  size_t size = strlen("Corvane detected\n");
  for (const std::string& line : simulation.Lines("CorvaneAPIGPSOutputRead")) {
    const size_t at = line.find(" count=");
    if (at != std::string::npos) size += std::stoul(line.substr(at + 7));
    EXPECT_NE(line.find(" capacity=128 "), std::string::npos);
  }
  EXPECT_EQ(result.out.size(), size);
  EXPECT_GT(size, 3 * 128U);
}

TEST(Stream, AStatisticsReportComesBeforeEachSleep) {
  const Simulation simulation(OneDevice(0, "statistics = \"" + Hex(1, 232) + "\""));
  const std::string head = "Corvane detected\n";
  const std::string report = simulation.Run("statistics").out.substr(head.size());
  simulation.EmptyJournal();
  const std::string out = simulation.Run("statistics --continuous --delay 200", 1000).out;
  const int sleeps = simulation.CallsOf("CorvaneApiSleepMs milliseconds=200");
  EXPECT_GE(sleeps, 2);
  std::string expected = head;
  for (int i = 0; i < sleeps; ++i) expected += report;
  EXPECT_TRUE(out.starts_with(expected)) << out;
}

// The command to update with a file that fits the device.
std::string UpdateWords(const Simulation& simulation) {
  WriteFile(simulation.folder() + "/fw",
            "CORVANE-FIRMWARE 1\ntype = 11\nsw_firmware = 1.9.0.0\nhw_firmware = 213\n\n");
  return "update --firmware " + simulation.folder() + "/fw";
}

const std::string kStarted =
    "Corvane detected\n"
    "Firmware update started. Do NOT unplug your device, do NOT interrupt the process.\n"
    "If the process gets interrupted, do NOT unplug your device and try again.\n";

TEST(Stream, AnUpdateShowsItsProgressWhileItRuns) {
  const Simulation simulation(OneDevice(CORVANE_CAP_UPDATE, "update = {duration_ms = 1500}"));
  const std::string words = UpdateWords(simulation);
  const std::string begun = simulation.Run(words, 1000).out;
  EXPECT_TRUE(begun.starts_with(kStarted + "Progress : 0% -  \r")) << begun;
  simulation.EmptyJournal();
  const std::string out = simulation.Run(words).out;
  std::string expected = kStarted;
  int turn = 0;
  for (const std::string& line : simulation.Lines("CorvaneAPIFirmwareUpdateGetProgress")) {
    const size_t at = line.find(" percent=") + 9;
    if (!line.ends_with(" status=-13")) continue;
    expected += "Progress : " + line.substr(at, line.find(' ', at) - at) + "% " +
                "-\\|/"[turn++ % 4] + "  \r";
  }
  EXPECT_EQ(out, expected +
                     "Progress : 100%  \nFirmware update success. Please disconnect and reconnect "
                     "your device\n");
  EXPECT_EQ(simulation.CallsOf("CorvaneApiSleepMs milliseconds=200"), turn);
  EXPECT_TRUE(simulation.Run("version").out.ends_with(": 1.9.0.0\nHW firmware version : 0213\n"));
  const std::string start = simulation.Lines("CorvaneAPIFirmwareUpdateStart")[0];
  EXPECT_TRUE(start.ends_with(" path=\"" + simulation.folder() + "/fw\" status=0")) << start;
}

// Runs corvane by a shell, on to a reader if need be; returns its status and standard error.
Result RunByShell(const Simulation& simulation, const std::string& words,
                  const std::string& reader = "cat") {
  Shell(simulation,
        "{ " CORVANE_EXECUTABLE " 2>errors " + words + "; echo $? >status; } | " + reader);
  return {atoi(ReadFile(simulation.folder() + "/status").c_str()), "",
          ReadFile(simulation.folder() + "/errors")};
}

TEST(Stream, AnUpdateGoesToItsEndWithoutItsReader) {
  const Simulation simulation(OneDevice(CORVANE_CAP_UPDATE, "update = {duration_ms = 700}"));
  const Result result = RunByShell(simulation, UpdateWords(simulation), "head -n 3");
  EXPECT_EQ(result.err, "corvane: cannot write to standard output: Broken pipe\n");
  EXPECT_EQ(result.status, 1);
  const auto polls = simulation.Lines("CorvaneAPIFirmwareUpdateGetProgress");
  EXPECT_TRUE(!polls.empty() && polls.back().ends_with(" status=0"));
  EXPECT_EQ(simulation.CallsOf("CorvaneAPIUninitialize"), 1);
}

TEST(Stream, LostOutputIsToldAndEndsWhatIsEndless) {
  const std::tuple<const char*, int, const char*> cases[] = {
      {"list >/dev/full", 1, "No space left on device"},
      {"help >&- <&-", 1, "Bad file descriptor"},
      {"nonsense >/dev/full", 255, "No space left on device"},
      {"reset -d 9 >&-", 252, "Bad file descriptor"},
      {"nmea >/dev/full", 1, "No space left on device"},
      {"statistics --continuous --delay 1 >/dev/full", 1, "No space left on device"},
  };
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS | CORVANE_CAP_STATISTICS_V2));
  for (const auto& [words, status, reason] : cases) {
    const Result result = RunByShell(simulation, words);
    EXPECT_EQ(result.status, status) << words;
    EXPECT_EQ(result.err,
              std::string("corvane: cannot write to standard output: ") + reason + "\n");
  }
  signal(SIGPIPE, SIG_IGN);
  const Result result = RunByShell(simulation, "nmea", "head -c 5");
  signal(SIGPIPE, SIG_DFL);
  EXPECT_EQ(result.err, "corvane: cannot write to standard output: Broken pipe\n");
}

// No file that the library opens takes the place of a closed stream.
TEST(Stream, ClosedStreamsDoNoHarm) {
  const Simulation simulation(OneDevice(0));
  EXPECT_EQ(RunByShell(simulation, "features set --slicing 300 <&- >&- 2>&-").status, 1);
  EXPECT_NE(simulation.Run("features show").out.find("Enabled 300 bytes"), std::string::npos);
  for (const std::string& line : simulation.Lines("")) EXPECT_TRUE(line.starts_with("Corvane"));
}

}  // namespace
