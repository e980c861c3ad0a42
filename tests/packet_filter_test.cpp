// filter set, disable and show, end to end.
#include <random>

#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

// A record that is zero but for "offset:bytes" (offset decimal, bytes hexadecimal) each.
std::string Record(const std::string& parts) {
  std::string hex(2 * sizeof(PacketFilterRecord), '0');
  for (const std::string& part : Split(parts)) {
    const size_t bytes = part.find(':') + 1;
    hex.replace(2 * std::stoul(part), part.size() - bytes, part, bytes);
  }
  return hex;
}

TEST(PacketFilter, WhatIsNamedIsSentAndSaved) {
  const std::tuple<std::string, uint32_t, const char*> cases[] = {
      {"disable", 0, ""},
      {"set", 0, "0:01"},
      {"set --mac 00:11:22:33:44:FF", 0, "0:01 4:04 8:01 16:ff4433221100 58:c00f"},
      {"set --srcmac *:11-22:33:44:* --dstmac aA:*:*:*:*:0b", 0,
       "0:01 4:06 10:0b00000000aa 16:004433221100 58:a107"},
      {"set --ip 10.1.2.3", 0, "0:01 4:10 8:02 50:0302010a 62:00f0"},
      {"set --srcip 10.*.2.3 --dstip 2001:0db8:****:0000:0000:0000:0000:00*1", 0,
       "0:01 4:18 22:01 34:b80d0120 50:0302000a 60:fef3 62:00b0"},
      {"set --port 65535 --vlanid 70000", kVlanFilter, "0:01 4:c0 8:04 56:ffff 64:0c 66:7011ffff"},
      {"set --port=-1 --srcport 0 --dstport 53 --vlanid=-7", 0, "0:01 4:60 54:35 64:0f"}};
  for (const auto& [words, vlan, record] : cases) {
    const Simulation simulation(OneDevice(kFilter | vlan));
    ExpectRun(simulation, "filter " + words, "");
    EXPECT_EQ(Sent(simulation, "SetPacketFilter"), Record(record)) << words;
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx SetPacketFilter SavePacketFilter ");
  }
}

TEST(PacketFilter, TheFirstCheckThatFailsEndsTheCommand) {
  const std::pair<std::string, std::string> cases[] = {
      {"--mac x --srcmac y --dstmac z", "mac and srcmac are mutually exclusive"},
      {"--mac x --dstmac z", "mac and dstmac are mutually exclusive"},
      {"--mac 0:11:22:33:44:55 --ip x --srcip y", "mac must be a valid MAC address"},
      {"--srcmac x --dstmac y", "srcmac must be a valid MAC address"},
      {"--dstmac x --ip x", "dstmac must be a valid MAC address"},
      {"--ip x --srcip y --dstip z", "ip and srcip are mutually exclusive"},
      {"--ip x --dstip z --port 70000", "ip and dstip are mutually exclusive"},
      {"--ip ::1 --port 70000", "ip must be a valid IPv4 or IPv6 address"},
      {"--srcip 1.2.3 --dstip x", "srcip must be a valid IPv4 or IPv6 address"},
      {"--dstip x --srcport=-2", "dstip must be a valid IPv4 or IPv6 address"},
      {"--port 70000 --srcport 1", "port must lie in range 0-65535"},
      {"--port 1 --srcport 70000 --dstport 1", "port and srcport are mutually exclusive"},
      {"--port 1 --dstport 70000", "port and dstport are mutually exclusive"},
      {"--srcport=-2 --dstport 65536", "srcport must lie in range 0-65535"},
      {"--dstport 65536 --vlanid 0", "dstport must lie in range 0-65535"}};
  const Simulation simulation(OneDevice(kFilter));
  for (const auto& [words, message] : cases) {
    ExpectRun(simulation, "filter set " + words, message + "\n", 255);
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx ") << words;
  }
  ExpectRun(simulation, "filter set --vlanid 0",
            "Your device does not support VLAN filter configuration\n", 251);
  EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx ");
}

TEST(PacketFilter, NeedsTheCapabilityAndPassesFailuresThrough) {
  const Simulation simulation(OneDevice(~kFilter));
  for (const std::string words : {"set --mac x", "disable", "show"}) {
    ExpectRun(simulation, "filter " + words, "Your device does not support filter configuration\n",
              251);
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx ") << words;
  }
  const std::string not_disabled = "Failed to disable the filter\n";
  ExpectFailures(OneDevice(kFilter),
                 {{"filter set", "SetPacketFilter", "Failed to set filter configuration\n"},
                  {"filter set", "SavePacketFilter", "Failed to save filter configuration\n"},
                  {"filter disable", "SavePacketFilter", not_disabled.c_str()},
                  {"filter show", "GetPacketFilter", "Failed to get the filter configuration\n"}});
  const std::string set_fails = OneDevice(kFilter) + FaultToml("CorvaneAPISetPacketFilter", -77);
  ExpectRun(Simulation(set_fails), "filter disable", not_disabled);
  ExpectRun(Simulation(set_fails + FaultToml("CorvaneAPISavePacketFilter", -78)), "filter disable",
            not_disabled + not_disabled, 178);
}

TEST(PacketFilter, ShowReportsWhatTheFlagsName) {
  const std::tuple<const char*, uint32_t, const char*> cases[] = {
      {"0:02 4:ff", ~0U, "\tFilter disabled\n"},
      {"0:01", kFilter,
       "\tSource OR Destination MAC mode: No\n\tSource MAC: Disabled\n\tDestination MAC: Disabled\n"
       "\tSource OR Destination IP mode: No\n\tSource IP: Disabled\n\tDestination IP: Disabled\n"
       "\tSource OR Destination port mode: No\n\tSource port: Disabled\n"
       "\tDestination port: Disabled\n"},
      {"0:01 8:07 16:010000000000 38:0101a8c0 56:ffff 58:4008 62:0d", ~0U,
       "\tSource OR Destination MAC mode: Yes\n\tMAC: 00:*:*:*:*:01\n"
       "\tSource OR Destination IP mode: Yes\n\tIP: 192.168.*.1\n"
       "\tSource OR Destination port mode: Yes\n\tPort: 65535\n\tVLAN id: Disabled\n"},
      {"0:01 4:ff 10:0a 22:0a 38:0b 54:0a 56:0b 58:4100 60:0100 62:0100 66:ffff", ~0U,
       "\tSource OR Destination MAC mode: No\n\tSource MAC: *:*:*:*:*:00\n"
       "\tDestination MAC: *:*:*:*:*:0a\n\tSource OR Destination IP mode: No\n"
       "\tSource IP: ****:****:****:****:****:****:****:**0b\n"
       "\tDestination IP: ****:****:****:****:****:****:****:**0a\n"
       "\tSource OR Destination port mode: No\n\tSource port: 11\n\tDestination port: 10\n"
       "\tVLAN id: 65535\n"}};
  for (const auto& [record, bits, report] : cases) {
    const Simulation device(OneDevice(bits, "packet_filter = \"" + Record(record) + "\""));
    ExpectRun(device, "filter show", std::string("Packet filter configuration:\n") + report);
  }
}

std::string Generate(std::mt19937& random, int groups, const char* separator, const char* format) {
  std::string text;
  for (int group = 0; group < groups; ++group) {
    char number[4];
    snprintf(number, sizeof number, format, static_cast<unsigned>(random() % 256));
    text += (group > 0 ? separator : "") + std::string(random() % 3 == 0 ? "*" : number);
  }
  return text;
}

TEST(PacketFilter, AddressesComeBackAsTheyWereGiven) {
  std::mt19937 random(826);
  const Simulation simulation(OneDevice(~0U));
  for (int i = 0; i < 20; ++i) {
    const std::string source = Generate(random, 6, ":", "%02x");
    const std::string destination = Generate(random, 6, ":", "%02x");
    const std::string ip = Generate(random, 4, ".", "%u");
    simulation.Run({"filter", "set", "--srcmac", source, "--dstmac", destination});
    simulation.Run({"statsv2", "set", "--counter=1", "--ipv4=on", "--ipv4_addr", ip});
    const std::string shown =
        simulation.Run("filter show").out.append(simulation.Run("statsv2 show").out);
    for (const std::string& line : {"\tSource MAC: " + source, "\tDestination MAC: " + destination,
                                    "\t\tIP address: " + ip}) {
      EXPECT_NE(shown.find(line + "\n"), std::string::npos) << line;
    }
  }
}

}  // namespace
