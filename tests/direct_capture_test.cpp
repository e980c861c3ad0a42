// directcapture start, status and stop, end to end.
#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

constexpr const char* kStart = "directcapture start --dir /x";
const std::string kTexts = "directory=\"/x\" pattern=\"capture_%N_%Y%M%D%H%m%s.pcapng\"";
const std::string kIgnore4(32, 'f');  // four conditions
const std::string kCountDrops = Hex(15, 4) + kIgnore4 + "ffffffff" + Hex(0, 4) + kIgnore4 +
                                Hex(1, 8) + "ffffffff" + Hex(0, 32) + Hex(1, 4) + Hex(1, 8);

// Numbers as in the records; the texts stand behind them in the journal.
struct StartCase {
  std::string arguments;
  std::string texts;
  uint64_t loop = 0, size = 0, cache = 104857600, count = 1, duration = 0, full = 0;
};

TEST(DirectCapture, StartConfiguresANamedFileOrAFolderAndTheLastCounter) {
  const StartCase cases[] = {
      {"--name a.pcapng", "file_name=\"a.pcapng\""},
      {"-o a --dir /b --pattern c --loop --count 0 --size 1 --maxcache 7 --fileduration 60",
       "file_name=\"a\"", 1, 0x100000, 0x700000, 0, 60},
      {"--dir /x", kTexts},
      {"--dir /x --loop --size -1 --maxcache -2", kTexts, 1, ~0xFFFFFULL, ~0x1FFFFFULL},
      {"--dir /x --pattern %N --count 4 --size 2147483647 --fileduration 3 --fullframes",
       "directory=\"/x\" pattern=\"%N\"", 0, 0x7FFFFFFF00000, 104857600, 4, 3, 1},
  };
  // The start itself fails: the folders of the cases are not there.
  const std::string unstarted = FaultToml("CorvaneAPIDiskDumpStart", -77);
  const std::string failed = "Failed: cannot start capture\n";
  for (const StartCase& c : cases) {
    const Simulation simulation(OneDevice(kStatisticsV2) + unstarted);
    ExpectRun(simulation, "directcapture start " + c.arguments, failed, 179);
    const bool named = c.texts.starts_with("file_name");
    const std::string function = named ? "DiskDumpSetConfig" : "DiskDumpSetConfigEx";
    EXPECT_EQ(Sent(simulation, function), Hex(c.loop, 4) + Hex(0, named ? 20 : 12) +
                                              Hex(c.size, 8) + Hex(c.cache, 8) + Hex(c.count, 4) +
                                              Hex(c.duration, 4) + Hex(c.full, 4) +
                                              Hex(0, named ? 4 : 20) + " " + c.texts);
    EXPECT_EQ(Sent(simulation, "SetCounterV2"), kCountDrops);
    EXPECT_EQ(Work(simulation), "DiskDumpGetStatus " + function +
                                    " GetDeviceCapabilitiesEx SetCounterV2 DiskDumpStart ");
  }
  const Simulation without(OneDevice(~kStatisticsV2) + unstarted);
  ExpectRun(without, kStart, failed, 179);
  EXPECT_EQ(without.CallsOf("CorvaneAPISetCounterV2"), 0);
}

TEST(DirectCapture, StartWantsANameOrAFolderAndNoOtherCapture) {
  const Simulation simulation(OneDevice(kStatisticsV2));
  ExpectRun(simulation, "directcapture start --pattern x",
            "Failed: You must specify either a full file name using --name or an output directory "
            "using --dir\n",
            251);
  EXPECT_EQ(Work(simulation), "");
  const std::string start = "directcapture start --dir " + simulation.folder();
  ExpectRun(simulation, start, "Capture started\n");
  ExpectRun(simulation, "directcapture start -o y", "Failed: capture is already started\n", 244);
  EXPECT_EQ(Work(simulation), "DiskDumpGetStatus ");
  ExpectRun(simulation, "directcapture stop", "Capture stopped\n");
}

TEST(DirectCapture, StatusShowsFlagsAndRawNumbers) {
  const std::string status = Hex(0x80, 8) + Hex(1536, 8) + Hex(~0ULL, 8) + Hex(99, 8) +
                             Hex(0x100, 8) + Hex(100, 8) + Hex(12, 8);
  ExpectRun(Simulation(OneDevice(0, "disk_dump_status = \"" + status + "\"")),
            "directcapture status",
            "Direct capture status :\n\tEnabled : 1\n\tError : 1\n\tCache used : 1536\n\tMaximum "
            "cache : 100\n\tBytes Written : 18446744073709551615\n\tFiles Written : 12\n");
}

TEST(DirectCapture, PassesFailuresThrough) {
  ExpectFailures(
      OneDevice(kStatisticsV2),
      {{"directcapture status", "DiskDumpGetStatus", "Failed: cannot get status\n"},
       {kStart, "DiskDumpGetStatus", "Failed: cannot get status\n\n"},
       {kStart, "DiskDumpSetConfigEx", "Failed: cannot set configuration\n"},
       {"directcapture start -o x", "DiskDumpSetConfig", "Failed: cannot set configuration\n"},
       {kStart, "SetCounterV2", "Failed: cannot set counters config for statistics V2\n"},
       {kStart, "DiskDumpStart", "Failed: cannot start capture\n"},
       {"directcapture stop", "DiskDumpStop", "Failed: cannot stop capture\n"}});
}

}  // namespace
