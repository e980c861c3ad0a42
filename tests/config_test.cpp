// corvane-config against simulated devices: the real executable, and the records that it leaves.
#include <csignal>
#include <cstring>
#include <random>

#include "configuration/functions.h"
#include "support/expectations.h"
#include "support/for_each.h"
#include "support/golden.h"

namespace {

using Random = std::minstd_rand;
// By the function that reads them, and a counter's index: their bytes, those reserved as zeros.
using Records = std::map<std::string, std::string>;

Result Config(const Simulation& simulation, const std::string& words) {
  return Shell(simulation, CORVANE_CONFIG " " + words);
}

struct Reserved {
  const char* function;
  size_t offset;
  size_t size;
};

constexpr Reserved kReserved[] = {
    {"DeviceFeatures", 54, 2}, {"DeviceFeatures", 64, 4}, {"DeviceFeatures", 70, 2},
    {"DeviceFeatures", 81, 3}, {"PacketFilter", 65, 1},   {"PacketFilter", 70, 2},
    {"DpiFilter", 20, 16},     {"CounterV2", 0, 4},       {"CounterV2", 24, 4}};

// Whatever can be read of the device, by the journal of a run that reads it.
Records RecordsOf(const Simulation& simulation) {
  simulation.EmptyJournal();
  Config(simulation, "show --device all");
  Records records;
  for (const std::string& line : simulation.Lines("")) {
    const size_t at = line.find(" record=");
    if (at == std::string::npos || !line.starts_with("CorvaneAPIGet")) continue;
    const std::string function = line.substr(13, line.find(' ') - 13);
    std::string bytes = line.substr(at + 8, line.rfind(' ') - at - 8);
    for (const Reserved& each : kReserved) {
      if (function == each.function)
        bytes.replace(2 * each.offset, 2 * each.size, 2 * each.size, '0');
    }
    records[line.substr(0, at)] = bytes;
  }
  simulation.EmptyJournal();
  return records;
}

int CountOf(const Simulation& simulation, const std::string& kind) {
  int count = 0;
  for (const std::string& call : simulation.Calls()) count += call.starts_with("CorvaneAPI" + kind);
  return count;
}

// Bytes of which most are what a device could hold.
std::string RandomRecord(Random& random, size_t size) {
  std::string hex;
  const bool wild = random() % 4 == 0;
  for (size_t word = 0; word < (size + 3) / 4; ++word) {
    const uint32_t number =
        wild || random() % 16 == 0 ? static_cast<uint32_t>(random()) : random() % 2;
    hex += random() % 8 == 0 ? "ffffffff" : Hex(__builtin_bswap32(number), 4);
  }
  return hex.substr(0, 2 * size);
}

std::string RandomDevice(Random& random, uint32_t capabilities, bool factory) {
  const auto record = [&](const char* name, size_t size) {
    return factory ? "" : std::string(name) + " = '" + RandomRecord(random, size) + "'\n";
  };
  return OneDevice(capabilities, record("features", 84) + record("ports_speed", 80) +
                                     record("packet_filter", 72) + record("dpi_filter", 40) +
                                     record("packet_type_filter", 27) +
                                     record("counters_v2", 1600));
}

// What the utility can set has words in the file.
const char* const kCommands[] = {
    "features set --inline on --slicing 200 --loopback on --firmware_mode 1G --timestamps off",
    "features set --slicing 0 --disableb on --keepcrcerrors on --autonega off",
    "portcontrol set --portselection a --1000txfd off --10txhd off --asymmetricpause on",
    "portcontrol set --portselection b --prefermaster on --symmetricpause off",
    "filter set --srcip 10.1.*.* --dstip 192.168.1.2 --srcmac 00:1a:*:*:*:01 --port 53 --vlanid 7",
    "filter set --ip 2001:0db8:****:0000:0000:0000:0000:0001 --mac 00:11:22:33:44:55 --dstport 1",
    "filter set --srcport 0 --dstport 65535 --dstmac *:*:*:*:*:*",
    "filter disable",
    "packet_type_filter set --arp off --tcpsyn off --vlan off",
    "statsv2 set --counter 0 --ipv4 on --ipv4_addr 10.*.3.4 --size_gt 100 --bytes --porta off",
    "statsv2 set --counter 7 --ipv6 off --ipv6_addr 2001:0db8:00*1:****:0000:0000:0000:0001",
    "statsv2 set --counter 14 --ipv4 off --ipv6 on --udp on --tcp off --size_eq 64 --packets",
    "dpi enable --dpitxt abcdefghijklmnop --dpimask 0x11110000",
    "dpi disable",
    "timing config --tssource gps --ppscomp -19.79 --portAts ingress --forcepps on",
    "timing config --tssource none --waitforsync on --ppsoutput on --portBts egress",
};

// show, apply on a device that left the factory: the same bytes, and nothing is left to do.
void ExpectCopied(const Simulation& from, uint32_t capabilities, bool in_words) {
  const Result shown = Config(from, "show");
  EXPECT_EQ(shown.status, 0) << shown.err;
  EXPECT_FALSE(in_words && shown.out.find("'bytes ") != std::string::npos) << shown.out;
  const Simulation to(OneDevice(capabilities));
  WriteFile(to.folder() + "/lab.toml", shown.out);
  const Result applied = Config(to, "apply --save lab.toml");
  EXPECT_EQ(applied.status, 0) << applied.err << shown.out;
  EXPECT_EQ(RecordsOf(to), RecordsOf(from)) << shown.out;
  EXPECT_EQ(Config(to, "diff lab.toml").status, 0);
  EXPECT_EQ(CountOf(to, "Set") + CountOf(to, "Save"), 0);
  EXPECT_EQ(Config(to, "apply lab.toml").out, "00:1a:2b:3c:4d:5e: nothing to write\n");
  EXPECT_EQ(CountOf(to, "Set"), 0);
}

TEST(Config, WhatIsShownGivesTheSameBytes) {
  ForEach(200, [](size_t seed) {
    Random random(static_cast<unsigned>(seed + 1));
    const bool by_commands = seed % 2 == 0;
    uint32_t capabilities = seed % 8 < 2 ? 0x3FFFFFF : static_cast<uint32_t>(random()) & 0x3FFFFFF;
    const Simulation from(RandomDevice(random, capabilities, by_commands));
    for (const char* command : kCommands) {
      if (by_commands && random() % 2 == 0) from.Run(command);
    }
    ExpectCopied(from, capabilities, by_commands);
  });
}

TEST(Config, EveryMistakeIsNamedWithItsLine) {
  const auto parts = GoldenParts("config/wrong.txt");
  for (size_t i = 0; i + 1 < parts.size(); i += 2) {
    const std::string two = "type = 3\nmac = '00:1a:2b:3c:4d:02'\ncapabilities = 0x18001\n";
    const Simulation simulation(OneDevice(0x1FBFFFF) + "[[device]]\n" + two);
    WriteFile(simulation.folder() + "/lab.toml", parts[i].second);
    const Result result = Config(simulation, "apply lab.toml");
    EXPECT_EQ(result.err, parts[i + 1].second);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(result.status, 2);
    EXPECT_EQ(CountOf(simulation, "Set"), 0);
  }
}

constexpr uint32_t kAll = 0x3FFFFFF;
const std::string kLab =
    "[default]\nfeatures = {slicing = 200, inline = true}\ntiming = {ppscomp = -20}\n"
    "portcontrol.a = {prefermaster = true}\npacket_type_filter = {arp = false}\n"
    "filter = {dstport = 53}\nstatsv2.3 = {udp = true}\ndpi = {dpitxt = 'sixteen letters.'}\n";

std::string TwoDevices() {
  return OneDevice(kAll) + DeviceToml("00:1a:2b:3c:4d:5f", kAll);
}

// What must hold whenever a call of `apply --save` fails.
void ExpectPutBack(const std::string& fault, const Records& old, const Records& wanted) {
  SCOPED_TRACE(fault);
  Simulation simulation(TwoDevices() + fault);
  WriteFile(simulation.folder() + "/lab.toml", kLab);
  const Result result = Config(simulation, "apply --save --quiet lab.toml");
  simulation.Configure(TwoDevices());
  const Records left = RecordsOf(simulation);
  if (result.status == 0) {
    EXPECT_EQ(left, wanted);
    EXPECT_EQ(result.err, "");
    return;
  }
  EXPECT_EQ(result.status, 2);
  EXPECT_NE(result.err, "");
  if (result.err.find("could not be put back") == std::string::npos) {
    EXPECT_EQ(left, old) << result.err;
  } else {
    EXPECT_NE(fault.find("from"), std::string::npos) << result.err;  // one failure can be undone
  }
  simulation.Run("reset");
  simulation.Run("reset --device 1");
  const bool kept = result.err.find("keeps the new settings") != std::string::npos;
  EXPECT_TRUE(kept || RecordsOf(simulation) == old) << result.err;
}

TEST(Config, WhenACallFailsTheOldRecordsAreBack) {
  const Simulation healthy(TwoDevices());
  WriteFile(healthy.folder() + "/lab.toml", kLab);
  const Records old = RecordsOf(healthy);
  const Result result = Config(healthy, "apply --save lab.toml");
  EXPECT_EQ(result.out,
            "00:1a:2b:3c:4d:5e: 11 settings written, saved\n"
            "00:1a:2b:3c:4d:5f: 11 settings written, saved\n");
  std::vector<std::string> faults;
  std::map<std::string, int> count;
  for (const std::string& call : healthy.Calls()) {
    if (!simulator::CanFail(call)) continue;
    const int nth = ++count[call];
    faults.push_back(FaultToml(call, -7, nth));
    faults.push_back(FaultToml(call, -4) + "from = " + std::to_string(nth) + "\n");
  }
  const Records wanted = RecordsOf(healthy);
  EXPECT_GT(faults.size(), 100U);
  ForEach(faults.size(), [&](size_t i) { ExpectPutBack(faults[i], old, wanted); });
}

#ifdef CORVANE_STUBBORN
TEST(Config, WhatTheDeviceDoesNotTakeIsPutBack) {
  const Simulation simulation(TwoDevices());
  WriteFile(simulation.folder() + "/lab.toml", kLab);
  const Records old = RecordsOf(simulation);
  const Result result = Shell(
      simulation, "LD_PRELOAD=" CORVANE_STUBBORN " " CORVANE_CONFIG " apply --quiet lab.toml");
  EXPECT_EQ(result.status, 2);
  EXPECT_EQ(result.err,
            "corvane-config: 00:1a:2b:3c:4d:5e: features, timing: the device took something else: "
            "features.slicing is 128\ncorvane-config: the old settings are back\n");
  EXPECT_EQ(RecordsOf(simulation), old);
}
#endif

TEST(Config, WhatIsTriedIsOnlyKeptWhenSomebodySaysSo) {
  struct Case {
    const char* end;  // of the shell's lines, when the question is there
    const char* status;
    bool kept;
    bool saved;
  };
  const Case cases[] = {
      {"echo keep >&9", "0", true, true},         {"echo no >&9", "1", false, false},
      {"exec 9>&-", "1", false, false},           {"sleep 3", "1", false, false},
      {"kill -TERM $try", "1", false, false},     {"kill -HUP $try", "1", false, false},
      {"kill -TSTP $try", "1", false, false},     {"kill -KILL $try", "137", true, false},
      {"kill -KILL $terminal", "", false, false},
  };
  ForEach(std::size(cases), [&](size_t i) {
    const Case& each = cases[i];
    SCOPED_TRACE(each.end);
    const Simulation simulation(OneDevice(kAll));
    WriteFile(simulation.folder() + "/lab.toml", kLab);
    const Records old = RecordsOf(simulation);
    const bool terminal = strstr(each.end, "terminal") != nullptr;
    const std::string seconds = strcmp(each.end, "sleep 3") == 0 ? "2" : "60";
    const std::string words = CORVANE_CONFIG " try --save --seconds " + seconds + " lab.toml";
    const std::string start =
        terminal ? "script -qfc '" + words + "' asked <hold >/dev/null & terminal=$!"
                 : words + " <hold 2>asked & try=$!";
    const Result result =
        Shell(simulation,
              "mkfifo hold; sleep 99 >hold & sleep=$!\n" + start +
                  "\n(sleep 30; kill -KILL $try $terminal) & limit=$!\nexec 9>hold\nuntil grep -q "
                  "Type asked; do sleep 0.05; done\nkill $sleep\n" +
                  each.end + (terminal ? "\nsleep 2" : "\nwait $try; echo $?") + "\nkill $limit");
    EXPECT_TRUE(terminal || result.out.ends_with(std::string(each.status) + "\n")) << result.out;
    EXPECT_EQ(RecordsOf(simulation) == old, !each.kept) << ReadFile(simulation.folder() + "/asked");
    simulation.Run("reset");
    EXPECT_EQ(RecordsOf(simulation) == old, !each.saved);
  });
}

// Both change the same record, each as fast as it can, and find their own settings afterwards.
TEST(Config, TwoAtOnceLoseNothing) {
  const Simulation simulation(DeviceToml("00:1a:2b:3c:4d:60", kAll));
  const std::string loop =
      "loop() { for i in $(seq 30); do echo \"$2$i\" >$1; " CORVANE_CONFIG
      " apply --quiet $1 && " CORVANE_CONFIG " diff $1 || echo lost $2$i; done; }\n";
  const Result result = Shell(simulation, loop +
                                              "loop a default.features.slicing=& "
                                              "loop b default.timing.ppscomp=-; wait");
  EXPECT_EQ(result.out, "");
}

TEST(Config, TheCommandLineAndTheFileAreChecked) {
  const Simulation simulation(OneDevice(kAll));
  WriteFile(simulation.folder() + "/lab.toml", kLab);
  const Result diff = Config(simulation, "diff lab.toml");
  EXPECT_EQ(diff.status, 1);
  EXPECT_NE(diff.out.find("00:1a:2b:3c:4d:5e features.slicing: \"off 128\" -> 200\n"),
            std::string::npos);
  EXPECT_EQ(Config(simulation, "apply --dry-run lab.toml").out, diff.out);
  EXPECT_EQ(CountOf(simulation, "Set"), 0);
  // Nothing of the example counts until a setting is uncommented; each then does.
  std::istringstream example(Config(simulation, "example | tee all").out);
  EXPECT_EQ(Config(simulation, "diff all").status, 2);
  std::string section, before;
  for (std::string line; std::getline(example, line);) {
    if (line.starts_with("# [")) section = line.substr(2);
    if (line.find(" = ") == std::string::npos) continue;
    const bool address = line.find("_addr = ") != std::string::npos;
    WriteFile(simulation.folder() + "/one",
              section + "\n" + (address ? before : "") + line.substr(2));
    EXPECT_LT(Config(simulation, "diff one").status, 2) << section << line;
    before = line.substr(2) + "\n";
  }
  EXPECT_TRUE(before.starts_with("hw_dropped = true"));
  for (const char* json : {"show --json | jq -e '.format == 1 and .device[].features.slicing'",
                           "diff --json lab.toml | jq -e '.format == 1 and "
                           "(.differences | any(.setting == \"dpi.dpitxt\" and .old == null))'"}) {
    EXPECT_EQ(Config(simulation, json).status, 0) << json;
  }
  const std::pair<const char*, const char*> wrong[] = {
      {"", "no command"},
      {"list", "no such command: list"},
      {"show lab.toml", "no file is read: lab.toml"},
      {"diff", "the file is missing"},
      {"diff --save lab.toml", "--save is not for diff"},
      {"apply lab.toml more", "too many files: more"},
      {"try --seconds 0 lab.toml", "--seconds 0 is no number"},
      {"try - <lab.toml", "reads the answer from standard input"},
      {"diff nosuch.toml", "nosuch.toml: cannot be read: No such file"},
      {"diff .", ".: cannot be read: Is a directory"},
      {"show --device 7", "no such device: 7"},
      {"show >/dev/full", "cannot write to standard output"},
  };
  for (const auto& [words, reason] : wrong) {
    const Result result = Config(simulation, words);
    EXPECT_EQ(result.status, 2) << words;
    EXPECT_NE(result.err.find(reason), std::string::npos) << words << "\n" << result.err;
  }
}

}  // namespace
