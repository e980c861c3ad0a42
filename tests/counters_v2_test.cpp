// statsv2 set and show, end to end.
#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

const std::string k0 = "00000000";
const std::string k1 = "01000000";
const std::string kNone = "ffffffff";
const std::string kAny(64, '0');  // address and mask
const std::string kOne4 = "ff02000a" + std::string(24, '0') + "ffff00ff" + std::string(24, '0');
const std::string kOne6 = "010000000000000000000000b80d01200fffffffffffffffffff0000ffffffff";

TEST(CountersV2, SetWritesWhatIsNamedAndKeepsTheRest) {
  const std::pair<std::string, std::map<size_t, std::string>> cases[] = {
      {"--packets --porta on --portb off --size_gt -9 --size_lt 8",
       {{48, "f7ffffff"}, {52, k0}, {88, k1}, {92, k0}, {96, k0}}},
      {"--bytes --size_eq 5 --size_lt 0", {{48, k0}, {52, k1}, {96, k1}}},
      {"--size_gt -1 --size_lt -1 --size_eq 64", {{48, "40000000"}, {52, "02000000"}}},
      {"--bcast on --mcast off --ucast on --icmp OFF --udp On --tcp oFF --crc_ok on",
       {{12, k1}, {16, k0}, {20, k1}, {28, k0}, {32, k1}, {36, k0}, {40, k1}}},
      {"--ucast off --crc_ok off --hw_dropped on", {{20, k0}, {40, k0}, {44, k1}}},
      {"--ipv4_addr 1.2.3.4 --ipv6_addr nonsense", {}},
      {"--ipv4 on", {{4, k1}, {8, kNone}, {56, kAny}}},
      {"--ipv6 off", {{4, kNone}, {8, k0}, {56, kAny}}},
      {"--ipv4 off --ipv4_addr 10.*.2.255", {{4, k0}, {8, kNone}, {56, kOne4}}},
      {"--ipv4 on --ipv4_addr 10.0.0.1 --ipv6 off", {{4, k1}, {8, k0}, {56, kAny}}},
      {"--ipv6 on --ipv6_addr 2001:0db8:****:0000:0000:0000:0000:00*1",
       {{4, kNone}, {8, k1}, {56, kOne6}}},
  };
  for (const auto& [arguments, changes] : cases) {
    const Simulation simulation(OneDevice(kStatisticsV2, "counters_v2 = \"" + Sevens(1600) + "\""));
    ExpectRun(simulation, "statsv2 set --counter 14 " + arguments, "");
    EXPECT_EQ(Sent(simulation, "SetCounterV2"), "0e000000" + Sevens(100, changes).substr(8))
        << arguments;
  }
}

TEST(CountersV2, SetRefusesInOrder) {
  const std::string wrong = "Wrong counter was selected to be configured: ";
  const std::string range =
      ", or no counter was selected at all; the value must be between 0 and 15\n";
  const std::string good = "GetCounterV2 ";
  const std::string cases[][3] = {
      {"--packets --bytes", wrong + "-1" + range},
      {"--counter 16", wrong + "16" + range},
      {"--counter 15 --packets --bytes",
       "Cannot configure counter 15, as it's reserved to represent hardware dropped packets\n"},
      {"--counter 0 --packets --bytes --ipv4 on --ipv6 on",
       "Select only packets mode or only bytes mode, but not both\n", good},
      {"--counter 0 --ipv4 on --ipv6 on --ipv4_addr x",
       "Select only IPv4 or only IPv6 as enabled, but not both\n", good},
      {"--counter 0 --ipv4 on --ipv4_addr 1.2.3 --ipv6 off --ipv6_addr ::1",
       "ipv4_addr must be a valid IPv4 address\n", good},
      {"--counter 0 --ipv6 off --ipv6_addr ::1", "ipv6_addr must be a valid IPv6 address\n", good},
  };
  const Simulation simulation(OneDevice(kStatisticsV2));
  for (const auto& [arguments, out, reads] : cases) {
    ExpectRun(simulation, "statsv2 set " + arguments, out, 255);
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx " + reads) << arguments;
  }
  const Simulation without(OneDevice(~kStatisticsV2));
  ExpectRun(without, "statsv2 set", "Your device does not support statistics V2\n", 255);
  ExpectRun(without, "statsv2 show", "Your device does not support statistics V2\n", 251);
}

TEST(CountersV2, ShowReportsAllSixteen) {
  const std::string golden = CORVANE_GOLDEN "/report/counters-v2";
  const Simulation simulation(OneDevice(kStatisticsV2) + ReadFile(golden + ".toml"));
  simulation.Run("directcapture start --dir /x");  // configures the last one
  ExpectRun(simulation, "statsv2 show", ReadFile(golden + ".txt"));
}

TEST(CountersV2, PassFailuresThrough) {
  ExpectFailures(OneDevice(kStatisticsV2),
                 {{"statsv2 set --counter 3 --packets --bytes", "GetCounterV2",
                   "Failed to get statistics V2 configuration for counter 3\n"},
                  {"statsv2 set --counter 3", "SetCounterV2",
                   "Failed to set statistics V2 configuration for counter 3\n"}});
  for (int i = 0; i < 16; ++i) {
    const std::string fault = FaultToml("CorvaneAPIGetCounterV2", -77, i + 1);
    ExpectRun(Simulation(OneDevice(kStatisticsV2) + fault), "statsv2 show",
              "Failed to get statistics V2 configuration for counter " + std::to_string(i) + "\n",
              179);
  }
}

}  // namespace
