// Every parameter of every leaf as data, in the order of the help. The device parameter, which
// stands first in nearly every leaf, is made once and shared (command_table.cpp).
//
// Texts are part of the interface: leading blanks, trailing newlines and spelling stay as they are.
// So do the patterns: "[0-1a-fA-F]" admits no digit but 0 and 1.
#pragma once

#include <cstddef>
#include <cstdint>

// A text that lies in the table itself: pointers would have to be relocated at every start. One
// that is too long does not compile.
template <size_t kSize>
struct TableText {
  char text[kSize] = {};

  constexpr TableText(const char* from) {  // NOLINT(google-explicit-constructor): reads as a text
    for (size_t i = 0; from != nullptr && from[i] != '\0'; ++i) {
      text[i] = from[i];
      text[i + 1] = '\0';
    }
  }
  constexpr const char* OrNull() const { return *text == '\0' ? nullptr : text; }
};

enum class ParameterKind : uint8_t {
  kFlag,
  kInteger,
  kCounterIndex,  // an integer, whose glossary is composed when the program runs
  kReal,
  kText,
  kFile,
  kRequiredFile,
  kPattern,
  kSwitch
};

// A text that a parameter does not have stays empty.
struct ParameterSpec {
  TableText<20> key = nullptr;
  TableText<2> short_option = nullptr;
  TableText<20> long_option = nullptr;
  ParameterKind kind = ParameterKind::kFlag;
  TableText<28> datatype = nullptr;
  TableText<180> glossary = nullptr;
  TableText<28> pattern = nullptr;
  int flags = 0;  // argtable3's, of a pattern
};

constexpr ParameterSpec FlagSpec(const char* name, const char* glossary) {
  return {.key = name, .long_option = name, .kind = ParameterKind::kFlag, .glossary = glossary};
}
constexpr ParameterSpec IntegerSpec(const char* key, const char* long_option, const char* datatype,
                                    const char* glossary) {
  return {.key = key,
          .long_option = long_option,
          .kind = ParameterKind::kInteger,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec IntegerSpec(const char* name, const char* datatype, const char* glossary) {
  return IntegerSpec(name, name, datatype, glossary);
}
constexpr ParameterSpec RealSpec(const char* name, const char* datatype, const char* glossary) {
  return {.key = name,
          .long_option = name,
          .kind = ParameterKind::kReal,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec TextSpec(const char* name, const char* datatype, const char* glossary) {
  return {.key = name,
          .long_option = name,
          .kind = ParameterKind::kText,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec FileSpec(const char* short_option, const char* name, const char* datatype,
                                 const char* glossary) {
  return {.key = name,
          .short_option = short_option,
          .long_option = name,
          .kind = ParameterKind::kFile,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec PatternSpec(const char* key, const char* long_option, const char* pattern,
                                    const char* datatype, int flags, const char* glossary) {
  return {.key = key,
          .long_option = long_option,
          .kind = ParameterKind::kPattern,
          .datatype = datatype,
          .glossary = glossary,
          .pattern = pattern,
          .flags = flags};
}
constexpr ParameterSpec SwitchSpec(const char* key, const char* long_option, const char* glossary) {
  return {
      .key = key, .long_option = long_option, .kind = ParameterKind::kSwitch, .glossary = glossary};
}
constexpr ParameterSpec SwitchSpec(const char* name, const char* glossary) {
  return SwitchSpec(name, name, glossary);
}

inline constexpr ParameterSpec kOneDevice = {
    .key = "device",
    .short_option = "d",
    .long_option = "device",
    .kind = ParameterKind::kText,
    .datatype = "<MAC|n>",
    .glossary = "Specify to which corvane device the command applies. (defaults to the first one)"};

inline constexpr ParameterSpec kOneDeviceOrAll = {
    .key = "device",
    .short_option = "d",
    .long_option = "device",
    .kind = ParameterKind::kText,
    .datatype = "<MAC|n|all>",
    .glossary =
        "Specify to which corvane device the command applies. (defaults to the first one, 'all' to "
        "apply to all connected Corvanes)"};

inline constexpr ParameterSpec kDirectCaptureParameters[] = {
    FlagSpec("loop", "Enable round-robin style capture."),
    IntegerSpec("count", "<count>",
                "Numbers of output files. 0 means an infinite number of files. (defaults to 1)"),
    IntegerSpec("size", "<size>",
                "Size of each outpur file in MB. 0 means no size limit. (defaults to 0)"),
    FileSpec("o", "name", "<out_file>",
             "Base name of the output files. Timestamp will be automatically added to this name."),
    FileSpec(nullptr, "dir", "<out_dir>", "Output directory"),
    TextSpec("pattern", "<filename_pattern>", "Output file name pattern"),
    IntegerSpec("maxcache", "<size>", "Maximum cache size in MB. (defaults to 100)"),
    IntegerSpec("maxduration", "fileduration", "<duration>",
                "Maximum per file capture duration in seconds. 0 means no limit. (defaults to 0)"),
    FlagSpec("fullframes", "Capture full frames."),
};

inline constexpr ParameterSpec kDpiParameters[] = {
    PatternSpec("txtdata", "dpitxt", "^.{16}$", "<string>", 3,
                "16 characters string that will act as filter\n"),
    PatternSpec(
        "hexdata", "dpihex", "^[0-1a-fA-F]{32}$", "<hex values>", 3,
        "Hexadecimal values that will act as filter (ex : 054a1d8f90041235bed4054a1d8f9004)\n"),
    PatternSpec(
        "mask", "dpimask", "^[0x]*[0-1a-fA-F]{8}", "0xNNNNNNNN", 3,
        "32 bits hexadecimal integer value that will act as a mask for the data provided with "
        "--dpitxt or --dpihex. LSB corresponds to the first character, MSB to the last."),
};

inline constexpr ParameterSpec kFeatureParameters[] = {
    SwitchSpec("transmitcrcerrors", "keepcrcerrors", "Keep packets with CRC errors"),
    SwitchSpec("keepcrc32", "Keep CRC32 filed in captured data"),
    SwitchSpec("disablea", "Disable port A"),
    SwitchSpec("disableb", "Disable port B"),
    IntegerSpec("slicing", "<length>", "Length of sliced packed. 0 to disable slicing."),
    SwitchSpec("inline", "Enable inline mode. If cleared, the device operates in span mode."),
    SwitchSpec("loopback", "Enable loopback"),
    SwitchSpec("ts", "timestamps", "Enable precise timestamps in packets"),
    SwitchSpec("syncts", "Synchronize timestamps with host"),
    SwitchSpec("autonega", "Enable SFP port A 1G autoneg"),
    SwitchSpec("autonegb", "Enable SFP port B 1G autoneg"),
    PatternSpec(
        "firmware_mode", "firmware_mode", "^1G|10G$", "<1G|10G>", 1,
        "Device firmware (using this switch will save the features and reset the device)\n"),
};

inline constexpr ParameterSpec kPortControlParameters[] = {
    PatternSpec("port", "portselection", "^a|b$", "<a|b>", 1, "Selection of the port"),
    SwitchSpec("1000txfd", "Gigabit ethernet status"),
    SwitchSpec("100txfd", "Fast ethernet full duplex status"),
    SwitchSpec("100txhd", " Fast ethernet half duplex status"),
    SwitchSpec("10txfd", "Ethernet full duplex status"),
    SwitchSpec("10txhd", "Ethernet half duplex status"),
    SwitchSpec("autoneg", "autonegotiation", "Autonegotiation status"),
    SwitchSpec("sympause", "symmetricpause", "Symmetric pause status"),
    SwitchSpec("asympause", "asymmetricpause", "Asymmetric pause status"),
    SwitchSpec("prefmaster", "prefermaster",
               "When set, the port PHY will prefer to be master of the link"),
    SwitchSpec("forcerole", "When set, the port PHY will force the chosen role\n"),
};

inline constexpr ParameterSpec kStatisticsParameters[] = {
    FlagSpec("continuous", "Continuously refresh statistics."),
    IntegerSpec("delay", "<delay>", "Delay between two refreshes in ms (defaults to 1000)."),
};

inline constexpr ParameterSpec kCounterParameters[] = {
    {.key = "counter",
     .long_option = "counter",
     .kind = ParameterKind::kCounterIndex,
     .datatype = "<counter>"},
    FlagSpec("packets", "Count the values in packets"),
    FlagSpec("bytes", "Count the values in bytes"),
    SwitchSpec("porta", "Count the values for port A"),
    SwitchSpec("portb", "Count the values for port B"),
    IntegerSpec("size_gt", "<size>",
                "Only count the packet if its size is greater than the specified"),
    IntegerSpec("size_lt", "<size>",
                "Only count the packet if its size is less than the specified"),
    IntegerSpec("size_eq", "<size>", "Only count the packet if its size is equal to the specified"),
    SwitchSpec("ipv4", "Test if a packet is IPv4"),
    TextSpec("ipv4_addr", "<ipv4_addr>", "Compare IP address of the packet with this one"),
    SwitchSpec("ipv6", "Test if a packet is IPv6"),
    TextSpec("ipv6_addr", "<ipv6_addr>", "Compare IP address of the packet with this one"),
    SwitchSpec("bcast", "Test if a packet is broadcast"),
    SwitchSpec("ucast", "Test if a packet is unicast"),
    SwitchSpec("mcast", "Test if a packet is multicast"),
    SwitchSpec("icmp", "Test if a packet is ICMP"),
    SwitchSpec("udp", "Test if a packet is UDP"),
    SwitchSpec("tcp", "Test if a packet is TCP"),
    SwitchSpec("crc_ok", "Test if a packet has a valid CRC"),
    SwitchSpec("hw_dropped", "Test if a packet was dropped by hardware"),
};

inline constexpr ParameterSpec kFilterParameters[] = {
    TextSpec("mac", "<MAC address>",
             "Source or destination MAC address; could be in a form of a wildcard, e.g. "
             "aa:bb:*:dd:ee:*"),
    TextSpec("srcmac", "<MAC address>", "Source MAC address or its wildcard"),
    TextSpec("dstmac", "<MAC address>", "Destination MAC address or its wildcard"),
    TextSpec(
        "ip", "<IP address>",
        "Source or destination IP address; could be in a form of a wildcard, e.g. 123.*.10.*; in "
        "case of IPv6 the address must be fully expanded"),
    TextSpec("srcip", "<IP address>", "Source IP address or its wildcard"),
    TextSpec("dstip", "<IP address>", "Destination IP address or its wildcard"),
    IntegerSpec("port", "<port>", "Source or destination port"),
    IntegerSpec("srcport", "<srcport>", "Source port"),
    IntegerSpec("dstport", "<dstport>", "Destination port"),
    IntegerSpec("vlanid", "<vlanid>", "VLAN id"),
};

inline constexpr const char* kTimestampPlacePattern = "^capture|ingress|egress$";
inline constexpr const char* kTimestampPlaceDatatype = "<capture|ingress|egress>";

inline constexpr ParameterSpec kTimingConfigParameters[] = {
    PatternSpec("tssource", "tssource", "^none|system|gps|rtc$", "<none|system|gps|rtc>", 3,
                "Timestamp source\n"),
    SwitchSpec("waitforsync", "Wait for sync\n"),
    SwitchSpec("forcepps", "Force PPS generation\n"),
    SwitchSpec("ppsoutput", "Set PPS port as output\n"),
    RealSpec("ppscomp", "<value>", "PPS compensation in ns. [-50;0]\n"),
    PatternSpec("portAts", "portAts", kTimestampPlacePattern, kTimestampPlaceDatatype, 3,
                "Port A timestamp generation place\n"),
    PatternSpec("portBts", "portBts", kTimestampPlacePattern, kTimestampPlaceDatatype, 3,
                "Port B timestamp generation place\n"),
};

inline constexpr ParameterSpec kTimingSntpParameters[] = {
    TextSpec("sntpserver", "<hostname>", "SNTP server host name or ip\n"),
};

inline constexpr ParameterSpec kTimingManualParameters[] = {
    IntegerSpec("timestamp", "<seconds>",
                "Manually set a timestamp. This field is specified in number of seconds since unix "
                "epoch. (defaults to 0)\n"),
    IntegerSpec("timestamp_ns", "<nanoseconds>",
                "Manually set a timestamp. This field is specified in number of nanosecond of "
                "'timestamp' second. (defaults to 0)\n"),
};

inline constexpr ParameterSpec kUpdateParameters[] = {
    {"firmware", nullptr, "firmware", ParameterKind::kRequiredFile, "<fw_file>",
     "Name of the firmware file.", nullptr, 0},
};

inline constexpr ParameterSpec kPacketTypeParameters[] = {
    SwitchSpec("ipv4", "Filter on IPv4"),
    SwitchSpec("ipv6", "Filter on IPv6"),
    SwitchSpec("arp", "Filter on ARP"),
    SwitchSpec("tcp", "Filter on TCP"),
    SwitchSpec("udp", "Filter on UDP"),
    SwitchSpec("icmp", "Filter on ICMP"),
    SwitchSpec("igmp", "Filter on IGMP"),
    SwitchSpec("https", "Filter on HTTPS"),
    SwitchSpec("http", "Filter on HTTP"),
    SwitchSpec("ftp", "Filter on FTP"),
    SwitchSpec("dns", "Filter on DNS"),
    SwitchSpec("smtp", "Filter on SMTP"),
    SwitchSpec("pop3", "Filter on POP3"),
    SwitchSpec("dhcp", "Filter on DHCP"),
    SwitchSpec("ssh", "Filter on SSH"),
    SwitchSpec("sip", "Filter on SIP"),
    SwitchSpec("smb", "Filter on SMB"),
    SwitchSpec("tcpfin", "Filter on TCP FIN"),
    SwitchSpec("tcpsyn", "Filter on TCP SYN"),
    SwitchSpec("tcprst", "Filter on TCP RST"),
    SwitchSpec("tcppsh", "Filter on TCP PSH"),
    SwitchSpec("tcpack", "Filter on TCP ACK"),
    SwitchSpec("zerowindow", "Filter on Zero Window"),
    SwitchSpec("quic", "Filter on QUIC"),
    SwitchSpec("l2other", "Filter on other L2 type"),
    SwitchSpec("l4other", "Filter on other L4 type"),
    SwitchSpec("vlan", "Filter on VLAN"),
};
