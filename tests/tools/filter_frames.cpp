// Takes the frames of a pcap file through the simulator's frame path and prints the numbers of
// those that it keeps, one a line, the first frame being 1:
//   filter_frames FILE [NAME=VALUE ...]
// Names, with values as corvane takes them:
//   mac srcmac dstmac ip srcip dstip port srcport dstport vlanid   packet filter
//   srcip4 dstip4    an IPv4 address in the four-byte arrangement
//   off              a type of the packet type filter to switch off
//   dpihex dpimask   DPI pattern, 32 hexadecimal digits, and mask
//   ipv4 ipv6 bcast mcast ucast icmp udp tcp   conditions of a counter, 0 or 1
//   size_gt size_lt size_eq ipv4_addr ipv6_addr
// With a condition of a counter it prints the frames that the counter counts instead.
#include <pcap/pcap.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "device/capabilities.h"
#include "filter/address_wildcard.h"
#include "tap/frame_path.h"

namespace {

struct Run {
  PathSettings settings = {};
  bool by_counter = false;
};

using Text = const std::string&;

uint32_t Number(Text text, int base) {
  return static_cast<uint32_t>(strtoul(text.c_str(), nullptr, base));
}

// ---- Packet filter

bool SetMac(Run& run, Text value, bool is_source) {
  run.settings.filter.enable = 1;
  run.settings.filter.match_flags |= is_source ? 0x04 : 0x02;
  return ParseMacWildcard(value, run.settings.filter, is_source);
}

bool SetIp(Run& run, Text value, bool is_source, int version) {
  run.settings.filter.enable = 1;
  run.settings.filter.match_flags |= is_source ? 0x10 : 0x08;
  return SetFilterIpWildcard(value, run.settings.filter, is_source, version);
}

bool SetPort(Run& run, Text value, bool is_source) {
  PacketFilterRecord& filter = run.settings.filter;
  filter.enable = 1;
  filter.match_flags |= is_source ? 0x40 : 0x20;
  filter.port_masks |= static_cast<uint8_t>(is_source ? 0xC : 0x3);
  (is_source ? filter.src_port : filter.dst_port) = static_cast<uint16_t>(Number(value, 10));
  return true;
}

bool SetEither(Run& run, uint16_t flag) {
  run.settings.filter.either_flags |= flag;
  return true;
}

bool SetVlan(Run& run, Text value) {
  PacketFilterRecord& filter = run.settings.filter;
  filter.enable = 1;
  filter.match_flags |= 0x80;
  filter.vlan_id = static_cast<uint16_t>(Number(value, 10));
  filter.vlan_mask = 0xFFFF;
  return true;
}

// ---- Packet type filter and DPI

// In the order of the record.
constexpr const char* kTypes[] = {
    "ipv4",   "ipv6",   "arp",    "tcp",    "udp",        "icmp", "igmp", "https",   "http",
    "ftp",    "dns",    "smtp",   "pop3",   "dhcp",       "ssh",  "sip",  "smb",     "tcpfin",
    "tcpsyn", "tcprst", "tcppsh", "tcpack", "zerowindow", "quic", "vlan", "l2other", "l4other"};

bool SwitchOff(Run& run, Text type) {
  for (size_t i = 0; i < sizeof(PacketTypeFilterRecord); ++i) {
    if (type != kTypes[i]) continue;
    reinterpret_cast<uint8_t*>(&run.settings.types)[i] = 0;
    return true;
  }
  return false;
}

bool SetPattern(Run& run, Text value) {
  DpiFilterRecord& dpi = run.settings.dpi;
  if (value.size() != 2 * sizeof dpi.data) return false;
  for (size_t i = 0; i < sizeof dpi.data; ++i) {
    dpi.data[i] = static_cast<uint8_t>(Number(value.substr(2 * i, 2), 16));
  }
  dpi.enabled = 1;
  if (dpi.mask == 0) dpi.mask = 0xFFFF;
  return true;
}

// ---- Counter 0

bool SetCondition(Run& run, int32_t CounterV2Config::*condition, Text value) {
  run.by_counter = true;
  run.settings.counters[0].*condition = static_cast<int32_t>(Number(value, 10));
  return true;
}

bool SetSize(Run& run, int32_t mode, Text value) {
  run.settings.counters[0].size_mode = mode;
  return SetCondition(run, &CounterV2Config::size, value);
}

bool SetCounterIp(Run& run, Text value, int version) {
  run.by_counter = true;
  return SetCounterIpWildcard(value, run.settings.counters[0], version);
}

struct Option {
  const char* name;
  bool (*apply)(Run& run, Text value);
};

using Counter = CounterV2Config;

constexpr Option kOptions[] = {
    {"mac", [](Run& run, Text v) { return SetEither(run, 1) && SetMac(run, v, true); }},
    {"srcmac", [](Run& run, Text v) { return SetMac(run, v, true); }},
    {"dstmac", [](Run& run, Text v) { return SetMac(run, v, false); }},
    {"ip", [](Run& run, Text v) { return SetEither(run, 2) && SetIp(run, v, true, 0); }},
    {"srcip", [](Run& run, Text v) { return SetIp(run, v, true, 0); }},
    {"dstip", [](Run& run, Text v) { return SetIp(run, v, false, 0); }},
    {"srcip4", [](Run& run, Text v) { return SetIp(run, v, true, 4); }},
    {"dstip4", [](Run& run, Text v) { return SetIp(run, v, false, 4); }},
    {"port", [](Run& run, Text v) { return SetEither(run, 4) && SetPort(run, v, true); }},
    {"srcport", [](Run& run, Text v) { return SetPort(run, v, true); }},
    {"dstport", [](Run& run, Text v) { return SetPort(run, v, false); }},
    {"vlanid", SetVlan},
    {"off", SwitchOff},
    {"dpihex", SetPattern},
    {"dpimask", [](Run& run, Text v) { return (run.settings.dpi.mask = Number(v, 16)) != 0; }},
    {"ipv4", [](Run& run, Text v) { return SetCondition(run, &Counter::ipv4, v); }},
    {"ipv6", [](Run& run, Text v) { return SetCondition(run, &Counter::ipv6, v); }},
    {"bcast", [](Run& run, Text v) { return SetCondition(run, &Counter::bcast, v); }},
    {"mcast", [](Run& run, Text v) { return SetCondition(run, &Counter::mcast, v); }},
    {"ucast", [](Run& run, Text v) { return SetCondition(run, &Counter::ucast, v); }},
    {"icmp", [](Run& run, Text v) { return SetCondition(run, &Counter::icmp, v); }},
    {"udp", [](Run& run, Text v) { return SetCondition(run, &Counter::udp, v); }},
    {"tcp", [](Run& run, Text v) { return SetCondition(run, &Counter::tcp, v); }},
    {"size_gt", [](Run& run, Text v) { return SetSize(run, 0, v); }},
    {"size_lt", [](Run& run, Text v) { return SetSize(run, 1, v); }},
    {"size_eq", [](Run& run, Text v) { return SetSize(run, 2, v); }},
    {"ipv4_addr", [](Run& run, Text v) { return SetCounterIp(run, v, 4); }},
    {"ipv6_addr", [](Run& run, Text v) { return SetCounterIp(run, v, 6); }},
};

bool Apply(Run& run, Text argument) {
  const size_t equals = argument.find('=');
  for (const Option& option : kOptions) {
    if (argument.substr(0, equals) != option.name || equals == std::string::npos) continue;
    return option.apply(run, argument.substr(equals + 1));
  }
  return false;
}

// Nothing filters, and counter 0 counts every frame.
Run Everything() {
  Run run;
  run.settings.capabilities = kFilter | kPacketTypeFilter | kVlanFilter;
  memset(&run.settings.types, 1, sizeof run.settings.types);
  CounterV2Config& counter = run.settings.counters[0];
  for (int32_t Counter::*condition :
       {&Counter::ipv4, &Counter::ipv6, &Counter::bcast, &Counter::mcast, &Counter::ucast,
        &Counter::icmp, &Counter::udp, &Counter::tcp, &Counter::crc_ok, &Counter::hw_dropped,
        &Counter::size_mode}) {
    counter.*condition = -1;
  }
  counter.porta = 1;
  return run;
}

void PrintKept(pcap_t* file, const Run& run) {
  FramePath path(run.settings);
  pcap_pkthdr* header = nullptr;
  const uint8_t* bytes = nullptr;
  uint64_t counted = 0;
  for (uint64_t number = 1; pcap_next_ex(file, &header, &bytes) == 1; ++number) {
    KeptFrame kept;
    const RawFrame frame = {bytes, header->caplen, header->len, 0, true, false, 0};
    bool keeps = path.Process(frame, kept);
    if (run.by_counter) keeps = path.counts().counters[0] != counted;
    counted = path.counts().counters[0];
    if (keeps) printf("%llu\n", static_cast<unsigned long long>(number));
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  Run run = Everything();
  for (int i = 2; i < argc; ++i) {
    if (Apply(run, argv[i])) continue;
    fprintf(stderr, "What is %s?\n", argv[i]);
    return 2;
  }
  char reason[PCAP_ERRBUF_SIZE];
  pcap_t* file = pcap_open_offline(argv[1], reason);
  if (file == nullptr) {
    fprintf(stderr, "%s\n", reason);
    return 1;
  }
  PrintKept(file, run);
  pcap_close(file);
  return 0;
}
