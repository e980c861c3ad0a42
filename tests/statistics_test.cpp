// statistics, end to end.
#include "support/expectations.h"

namespace {

constexpr const char* kStopped = "Direct capture : STOPPED\n";

// A device with the version's statistics record, whose counters are numbered on, and with the first
// numbers of its capture's status.
std::string Device(uint64_t version, std::initializer_list<uint64_t> capture = {0, 0, 0, 0}) {
  std::string record = Hex(version, 4) + "ffffffff" + Hex(~0ULL, 8) + Hex(1000, 8);
  if (version == 1) record += Hex(101, 8) + Hex(102, 8);
  for (uint64_t n = 201; record.size() < 2 * 232; ++n) record += Hex(n, 8);
  std::string status;
  for (const uint64_t number : capture) status += Hex(number, 8);
  status += Hex(1, 8) + Hex(77, 8) + Hex(~0ULL, 8);
  return OneDevice(0, "statistics = \"" + record + "\"\ndisk_dump_status = \"" + status + "\"");
}

// The report without the capture's part.
std::string Golden(const std::string& version) {
  return ReadFile(CORVANE_GOLDEN "/report/statistics-" + version + ".txt");
}

TEST(Statistics, HaveTwoLayoutsAndRefuseOthers) {
  ExpectRun(Simulation(Device(1)), "statistics", Golden("1") + kStopped);
  ExpectRun(Simulation(Device(2, {0xFF00, 0, 0, 0})), "statistics", Golden("2") + kStopped);
  for (const uint64_t version : {0U, 3U, 0x10001U}) {
    const Simulation simulation(Device(version));
    ExpectRun(simulation, "statistics --continuous", "\nUnsupported statistics version\n");
    EXPECT_EQ(Work(simulation), "GetStatistics ");
  }
}

TEST(Statistics, ShowSizesInTheUnitThatTheyExceed) {
  const std::pair<std::array<uint64_t, 3>, std::array<std::string, 3>> cases[] = {
      {{0, 1024, 1025}, {"0.00 B", "1024.00 B", "1.00 KB"}},
      {{1536, 1048576, 1048577}, {"1.50 KB", "1024.00 KB", "1.00 MB"}},
      {{1073741824, 1073741825, ~0ULL}, {"1024.00 MB", "1.00 GB", "17179869184.00 GB"}},
  };
  for (const auto& [sizes, texts] : cases) {
    ExpectRun(Simulation(Device(2, {0x80, sizes[0], sizes[1], sizes[2]})), "statistics",
              Golden("2") + "Direct capture : STARTED\nCache used                : " + texts[0] +
                  "\nWritten                   : " + texts[1] + "\nDropped                   : " +
                  texts[2] + "\nFiles Written             : 18446744073709551615\n");
  }
}

TEST(Statistics, PassFailuresThrough) {
  ExpectFailures(Device(1), {{"statistics", "GetStatistics", "Failed to get statistics\n"}});
  const std::string failing = Device(2) + FaultToml("CorvaneAPIDiskDumpGetStatus", -77, 1);
  ExpectRun(Simulation(failing), "statistics", Golden("2"), 179);
  const Simulation twice(failing + FaultToml("CorvaneAPIGetStatistics", -78, 2));
  ExpectRun(twice, "statistics --continuous", Golden("2") + "Failed to get statistics\n", 178);
  EXPECT_EQ(twice.Lines("CorvaneApiSleepMs")[0], "CorvaneApiSleepMs milliseconds=1000 status=0");
}

TEST(Statistics, ReachTheReaderBeforeEachSleep) {
  const Simulation simulation(Device(1));
  const std::string out = simulation.Run("statistics --continuous --delay 200", 1000).out;
  const auto sleeps = simulation.Lines("CorvaneApiSleepMs");
  ASSERT_GE(sleeps.size(), 2U);
  EXPECT_EQ(sleeps[1], "CorvaneApiSleepMs milliseconds=200 status=0");
  std::string expected = "Corvane detected\n";
  for (size_t i = 0; i < sleeps.size(); ++i) expected += Golden("1") + kStopped;
  EXPECT_EQ(out.substr(0, expected.size()), expected);
}

}  // namespace
