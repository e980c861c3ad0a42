// The simulator as a product: its configuration file, its faults, its state.
#include <filesystem>
#include <regex>

#include "configuration/functions.h"
#include "support/golden.h"

namespace {

constexpr const char* kMac = "00:1a:2b:3c:4d:5e";

// The library does not open and says so: one line on standard error, which begins so.
void ExpectRefusal(const Simulation& simulation, const std::string& start) {
  const Result result = simulation.Run("list");
  EXPECT_EQ(result.out, "Failed to initialize Corvane API\n") << start;
  EXPECT_EQ(result.status, 255);
  EXPECT_TRUE(result.err.starts_with("corvane-simulator: " + start)) << start << "\n" << result.err;
  EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
}

TEST(SimulatorConfiguration, AWrongFileIsNamedWithLineAndReason) {
  for (const auto& [complaint, toml] : GoldenParts("simulator-refused.txt")) {
    const Simulation simulation(toml);
    ExpectRefusal(simulation, simulation.folder() + "/sim.toml:" + complaint);
  }
}

TEST(SimulatorConfiguration, AMissingFileAndAnUnusableStateFolderAreNamed) {
  const Simulation simulation("");
  WriteFile(simulation.folder() + "/state", "in the way");
  ExpectRefusal(simulation, "cannot make the state folder " + simulation.folder() + "/state");
  std::filesystem::remove(simulation.folder() + "/sim.toml");
  ExpectRefusal(simulation, simulation.folder() + "/sim.toml: cannot be read\n");
}

TEST(SimulatorDevices, AreGoneWhileTheyRestart) {
  const Simulation simulation(DeviceToml(kMac, 0, "boot_ms = 600"));
  simulation.Run("reset");
  simulation.EmptyJournal();
  const Result result = simulation.Run("list");
  EXPECT_EQ(result.out, "Found 1 corvanes\n0 : 11 Corvane-M7 00:1a:2b:3c:4d:5e\n");
  EXPECT_GE(simulation.CallsOf("CorvaneApiSleepMs"), 4);
}

TEST(SimulatorJournal, HasTimesAndNoPollsWhenItIsToldSo) {
  const Simulation simulation("journal_times = true\njournal_quiet = true\n" +
                              DeviceToml(kMac, 0x3FFFFFF));
  simulation.Run("nmea", 200);
  const std::string line =
      R"((?!CorvaneAPIGPSOutputRead)Corvane\w+ .*status=0 time=\d+\.\d{6} pid=\d+\n)";
  const std::string journal = ReadFile(simulation.folder() + "/journal");
  EXPECT_TRUE(std::regex_match(journal, std::regex("(" + line + "){4,}"))) << journal;
}

// The rest of them moves on.
TEST(SimulatorRecords, HaveFieldsThatStandStill) {
  const Simulation simulation(DeviceToml(kMac, 0x3FFFFFF) + R"(
features = {reserved_54 = 0x1234}
timing_status = {rtc_year = 2038}
statistics = {sw_dropped = 1000000, counters = [{}, {}, {count = 42}]}
disk_dump_status = {error = 1, files_written = 7}
)");
  const char* const cases[][2] = {
      {"timing status", R"(RTC time : \d+/\d+/2038)"},
      {"statistics", R"(Timestamp +: +[1-9]\d{6,}\nSW dropped +: +1000000\n(.*\n){3}.* 42\n)"},
      {"directcapture status", R"(Enabled : 0\n\tError : 1\n(.*\n)*\tFiles Written : 7\n)"}};
  for (const auto& [command, expected] : cases) {
    const std::string out = simulation.Run(command).out;
    EXPECT_TRUE(std::regex_search(out, std::regex(expected))) << out;
  }
  simulation.Run("features set --inline on");
  EXPECT_NE(simulation.Lines("CorvaneAPISetDeviceFeatures").at(0).find("3412"), std::string::npos);
}

TEST(SimulatorFaults, HitWhateverReturnsAStatusOrTheDeviceList) {
  std::istringstream header(ReadFile(CORVANE_HEADER));
  static const std::regex declaration(R"((\w+\*?) (Corvane\w+)\(.*)");
  int count = 0;
  for (std::string line; std::getline(header, line);) {
    std::smatch parts;
    if (!std::regex_match(line, parts, declaration)) continue;
    const bool tells = parts[1] == "int32_t" || parts[1] == "DeviceList*";
    EXPECT_EQ(simulator::CanFail(parts[2].str()), tells) << line;
    ++count;
  }
  EXPECT_GT(count, 0);
}

TEST(SimulatorFaults, HitSomeCallsForSomeTimeOrDelayThem) {
  const std::string named = "function = \"CorvaneAPIGetDeviceFeatures\"\n";
  const std::string away = "away = true\ndevice = \"" + std::string(kMac) + "\"\n";
  // What commands see one after another; the folder is in use for long before the last.
  const std::pair<std::string, std::string> cases[] = {
      {named + "status = -7\nfrom = 2\ntimes = 2", "0 0 0 0 "},
      {named + "status = -7\ndevice = '00:1a:2b:3c:4d:5f'", "0 0 0 0 "},
      {named + "status = -7\nfrom = 2\ntimes = 2\npersistent = true", "0 249 249 0 "},
      {named + "status = -7\ncall = 2\npersistent = true", "0 249 0 0 "},
      {named + "status = -7\nafter_s = 3600", "0 0 0 249 "},
      {named + "status = -7\nfor_s = 3600", "249 249 249 0 "},
      {away + "for_s = 3600", "252 252 252 0 "},
      {away + named, "252 252 252 252 "},
      {named + "delay_ms = 100", "0 0 0 0 late"}};
  for (const auto& [fault, seen] : cases) {
    const Simulation simulation(DeviceToml("00:1a:2b:3c:4d:5f", 0) + DeviceToml(kMac, 0) +
                                "[[fault]]\n" + fault);
    const Result result = Shell(
        simulation, "mac=00:1a:2b:3c:4d:5e; try() { " CORVANE_EXECUTABLE
                    " features show -d $mac >all; printf '%s ' $?; };"
                    "start=$(date +%s%N); try; try; try; sqlite3 state/devices.db "
                    "\"UPDATE fact SET bytes = x'0100000000000000' WHERE name = 'first_use'\"; try;"
                    "[ $((($(date +%s%N) - start) / 1000000)) -lt 400 ] || echo late");
    EXPECT_TRUE(result.out.starts_with(seen)) << fault << result.out;
  }
}

// Two hundred programs, twenty at once, on one device whose state does not exist yet: each reads,
// changes one field and writes back, so updates may overtake each other; but every call must
// succeed.
TEST(SimulatorState, SurvivesManyProgramsAtOnce) {
  const Simulation simulation(DeviceToml(kMac, 0x3FFFFFF));
  const Result result = Shell(simulation, "seq 200 | xargs -P 20 -I% " CORVANE_EXECUTABLE
                                          " features set --slicing % && "
                                          "sqlite3 state/devices.db 'PRAGMA integrity_check'");
  std::string expected;
  for (int i = 0; i < 200; ++i) expected += "Corvane detected\n";
  EXPECT_EQ(result.out, expected + "ok\n");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetDeviceFeatures"), 200);
}

}  // namespace
