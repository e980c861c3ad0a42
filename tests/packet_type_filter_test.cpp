// packet_type_filter set and show, end to end.
#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

// Options and labels ("_" is a blank) in the order of the record.
const auto kOptions = Split(
    "ipv4 ipv6 arp tcp udp icmp igmp https http ftp dns smtp pop3 dhcp ssh sip smb tcpfin tcpsyn "
    "tcprst tcppsh tcpack zerowindow quic vlan l2other l4other");
const auto kLabels = Split(
    "IPv4 IPv6 ARP TCP UDP ICMP IGMP HTTPS HTTP FTP DNS SMTP POP3 DHCP SSH SIP SMB TCP_FIN TCP_SYN "
    "TCP_RST TCP_PSH TCP_ACK Zero_Window QUIC VLAN Other_L2_type Other_L4_type");
constexpr size_t kVlan = 24;

// The record is sent and shown after the options were given for one full of 0x07.
void ExpectSentAndShown(uint32_t vlan, const std::string& options, const std::string& record) {
  const Simulation simulation(
      OneDevice(kPacketTypeFilter | vlan, "packet_type_filter = \"" + Sevens(27) + "\""));
  ExpectRun(simulation, "packet_type_filter set" + options, "");
  EXPECT_EQ(Sent(simulation, "SetPacketsTypeFilter"), record);
  EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx GetPacketsTypeFilter SetPacketsTypeFilter ");
  std::string report = "Packet type filters:\n";
  std::string vlan_line;
  for (size_t i = 0; i < kLabels.size(); ++i) {
    const char* const value = record[2 * i + 1] == '0' ? ": No\n" : ": Yes\n";
    (i == kVlan ? vlan_line : report) += "\t" + kLabels[i] + value;
  }
  for (char& c : report) c = c == '_' ? ' ' : c;
  ExpectRun(simulation, "packet_type_filter show", vlan == 0 ? report : report + vlan_line);
}

// Five runs in which every type has a sequence of on and off of its own.
TEST(PacketTypeFilter, EverySwitchHasItsByteAndItsLine) {
  for (int bit = 0; bit < 5; ++bit) {
    std::string options;
    std::string record;
    for (size_t i = 0; i < kOptions.size(); ++i) {
      const bool on = (i >> bit & 1) != 0;
      options += " --" + kOptions[i] + (on ? " ON" : " off");
      record += Hex(on ? 1 : 0, 1);
    }
    ExpectSentAndShown(kVlanFilter, options, record);
  }
}

TEST(PacketTypeFilter, KeepsWhatIsNotNamedAndForcesVlanWhereThereIsNone) {
  ExpectSentAndShown(kVlanFilter, "", Sevens(27));
  ExpectSentAndShown(0, "", Sevens(27, {{kVlan, "01"}}));
  ExpectSentAndShown(0, " --vlan off --arp off", Sevens(27, {{kVlan, "01"}, {2, "00"}}));
}

TEST(PacketTypeFilter, NeedsTheCapabilityAndPassesFailuresThrough) {
  const Simulation simulation(OneDevice(~kPacketTypeFilter));
  for (const std::string leaf : {"set", "show"}) {
    ExpectRun(simulation, "packet_type_filter " + leaf,
              "Your device does not support packet type filtering\n", 251);
    EXPECT_EQ(Work(simulation), "GetDeviceCapabilitiesEx ") << leaf;
  }
  const char* const set = "packet_type_filter set";
  const char* const show = "packet_type_filter show";
  ExpectFailures(OneDevice(kPacketTypeFilter),
                 {{set, "GetPacketsTypeFilter", "Failed to get packet type filters for set\n"},
                  {set, "SetPacketsTypeFilter", "Failed to set packet type filters\n"},
                  {show, "GetPacketsTypeFilter", "Failed to get packet type filters\n"}});
}

}  // namespace
