#include <cstdio>
#include <cstring>

#include "device/capabilities.h"
#include "device/report.h"
#include "device/session.h"
#include "device/status.h"
#include "filter/address_wildcard.h"
#include "shell/handlers.h"

namespace {

// port_masks
constexpr uint8_t kDstPortMask = 0x3;
constexpr uint8_t kSrcPortMask = 0xC;

constexpr int kNoPort = -1;
constexpr const char* kFilterUnsupported = "Your device does not support filter configuration";

// A kind of address that a filter can name as source, as destination or as either of them.
struct AddressKind {
  const char* either;
  const char* source;
  const char* destination;
  const char* valid;  // what a text must be
  bool (*parse)(const std::string& text, PacketFilterRecord& filter, bool is_source);
  uint32_t source_flag;
  uint32_t destination_flag;
  uint16_t either_flag;
};

// Parsing does not tell which IP version a text has, so every address goes into the 16-byte
// arrangement, and bit 0 of match_flags stays clear.
bool ParseIp(const std::string& text, PacketFilterRecord& filter, bool is_source) {
  return SetFilterIpWildcard(text, filter, is_source, 0);
}

constexpr AddressKind kMac = {.either = "mac",
                              .source = "srcmac",
                              .destination = "dstmac",
                              .valid = "MAC address",
                              .parse = ParseMacWildcard,
                              .source_flag = CORVANE_MATCH_SRC_MAC,
                              .destination_flag = CORVANE_MATCH_DST_MAC,
                              .either_flag = CORVANE_EITHER_MAC};
constexpr AddressKind kIp = {.either = "ip",
                             .source = "srcip",
                             .destination = "dstip",
                             .valid = "IPv4 or IPv6 address",
                             .parse = ParseIp,
                             .source_flag = CORVANE_MATCH_SRC_IP,
                             .destination_flag = CORVANE_MATCH_DST_IP,
                             .either_flag = CORVANE_EITHER_IP};

bool RefuseBoth(const char* either, const char* one) {
  printf("%s and %s are mutually exclusive\n", either, one);
  return false;
}

// Reads one address into its slot; true when there is none to read.
bool ApplyAddress(const AddressKind& kind, const char* key, const std::string& text, bool is_source,
                  PacketFilterRecord& filter) {
  if (text.empty()) return true;
  if (!kind.parse(text, filter, is_source)) {
    printf("%s must be a valid %s\n", key, kind.valid);
    return false;
  }
  filter.match_flags |= is_source ? kind.source_flag : kind.destination_flag;
  return true;
}

// False when an address is refused, with the reason printed.
bool ApplyAddresses(const AddressKind& kind, const CommandNode& leaf, PacketFilterRecord& filter) {
  const std::string either = TextOr(leaf, kind.either, "");
  const std::string source = TextOr(leaf, kind.source, "");
  const std::string destination = TextOr(leaf, kind.destination, "");
  if (!either.empty()) {
    if (!source.empty()) return RefuseBoth(kind.either, kind.source);
    if (!destination.empty()) return RefuseBoth(kind.either, kind.destination);
    filter.either_flags |= kind.either_flag;
  }
  return ApplyAddress(kind, kind.either, either, true, filter) &&
         ApplyAddress(kind, kind.source, source, true, filter) &&
         ApplyAddress(kind, kind.destination, destination, false, filter);
}

// False with the reason printed.
bool AcceptPort(const char* key, int port) {
  if (port >= 0 && port <= 65535) return true;
  printf("%s must lie in range 0-65535\n", key);
  return false;
}

void UseSourcePort(int port, PacketFilterRecord& filter) {
  filter.src_port = static_cast<uint16_t>(port);
  filter.port_masks |= kSrcPortMask;
  filter.match_flags |= CORVANE_MATCH_SRC_PORT;
}

// Unlike addresses, ports are checked before what excludes them.
bool ApplyPorts(const CommandNode& leaf, PacketFilterRecord& filter) {
  const int either = Integer(leaf, "port", kNoPort);
  const int source = Integer(leaf, "srcport", kNoPort);
  const int destination = Integer(leaf, "dstport", kNoPort);
  if (either != kNoPort) {
    if (!AcceptPort("port", either)) return false;
    if (source != kNoPort) return RefuseBoth("port", "srcport");
    if (destination != kNoPort) return RefuseBoth("port", "dstport");
    UseSourcePort(either, filter);
    filter.either_flags |= CORVANE_EITHER_PORT;
  }
  if (source != kNoPort) {
    if (!AcceptPort("srcport", source)) return false;
    UseSourcePort(source, filter);
  }
  if (destination != kNoPort) {
    if (!AcceptPort("dstport", destination)) return false;
    filter.dst_port = static_cast<uint16_t>(destination);
    filter.port_masks |= kDstPortMask;
    filter.match_flags |= CORVANE_MATCH_DST_PORT;
  }
  return true;
}

int ApplyVlan(const CommandNode& leaf, uint32_t capabilities, PacketFilterRecord& filter) {
  const int vlan_id = Integer(leaf, "vlanid", -1);
  if (vlan_id < 0) return kSuccess;
  if ((capabilities & kVlanFilter) == 0) {
    return Fail(kUnsupported, "Your device does not support VLAN filter configuration");
  }
  filter.vlan_id = static_cast<uint16_t>(vlan_id);
  filter.vlan_mask = 0xFFFF;
  filter.match_flags |= CORVANE_MATCH_VLAN;
  return kSuccess;
}

int Enable(const CommandNode& leaf, DeviceHandle device, uint32_t capabilities) {
  PacketFilterRecord filter = {};
  filter.enable = 1;
  const bool accepted = ApplyAddresses(kMac, leaf, filter) && ApplyAddresses(kIp, leaf, filter) &&
                        ApplyPorts(leaf, filter);
  if (!accepted) return kRejected;
  int status = ApplyVlan(leaf, capabilities, filter);
  if (status != kSuccess) return status;

  status = CorvaneAPISetPacketFilter(device, filter);
  if (status != kSuccess) return Fail(status, "Failed to set filter configuration");
  status = CorvaneAPISavePacketFilter(device);
  if (status != kSuccess) puts("Failed to save filter configuration");
  return status;
}

// Saves even when the filter could not be set, and its result is the one that counts.
int Disable(DeviceHandle device) {
  const PacketFilterRecord off = {};
  if (CorvaneAPISetPacketFilter(device, off) != kSuccess) puts("Failed to disable the filter");
  const int status = CorvaneAPISavePacketFilter(device);
  if (status != kSuccess) puts("Failed to disable the filter");
  return status;
}

void PrintAddress(const char* label, bool used, const std::string& address) {
  printf("\t%s: %s\n", label, used ? address.c_str() : "Disabled");
}

void PrintMacs(const PacketFilterRecord& filter) {
  const bool either = (filter.either_flags & CORVANE_EITHER_MAC) != 0;
  printf("\tSource OR Destination MAC mode: %s\n", YesOrNo(either));
  const std::string source = FormatMacWildcard(filter, true);
  if (either) {
    PrintAddress("MAC", true, source);
    return;
  }
  PrintAddress("Source MAC", (filter.match_flags & CORVANE_MATCH_SRC_MAC) != 0, source);
  PrintAddress("Destination MAC", (filter.match_flags & CORVANE_MATCH_DST_MAC) != 0,
               FormatMacWildcard(filter, false));
}

void PrintIps(const PacketFilterRecord& filter) {
  const int version = (filter.match_flags & CORVANE_MATCH_IPV6) != 0 ? kIpv6 : kIpv4;
  const bool either = (filter.either_flags & CORVANE_EITHER_IP) != 0;
  printf("\tSource OR Destination IP mode: %s\n", YesOrNo(either));
  const std::string source = FormatFilterIpWildcard(filter, true, version);
  if (either) {
    PrintAddress("IP", true, source);
    return;
  }
  PrintAddress("Source IP", (filter.match_flags & CORVANE_MATCH_SRC_IP) != 0, source);
  PrintAddress("Destination IP", (filter.match_flags & CORVANE_MATCH_DST_IP) != 0,
               FormatFilterIpWildcard(filter, false, version));
}

void PrintNumber(const char* label, bool used, unsigned number) {
  PrintAddress(label, used, std::to_string(number));
}

void PrintPorts(const PacketFilterRecord& filter) {
  const bool either = (filter.either_flags & CORVANE_EITHER_PORT) != 0;
  printf("\tSource OR Destination port mode: %s\n", YesOrNo(either));
  if (either) {
    PrintNumber("Port", true, filter.src_port);
    return;
  }
  PrintNumber("Source port", (filter.match_flags & CORVANE_MATCH_SRC_PORT) != 0, filter.src_port);
  PrintNumber("Destination port", (filter.match_flags & CORVANE_MATCH_DST_PORT) != 0,
              filter.dst_port);
}

}  // namespace

int FilterSet(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & kFilter) == 0) return Fail(kUnsupported, kFilterUnsupported);
  return strcmp(leaf.name, "disable") == 0 ? Disable(session.device())
                                           : Enable(leaf, session.device(), capabilities);
}

int FilterShow(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & kFilter) == 0) return Fail(kUnsupported, kFilterUnsupported);
  PacketFilterRecord filter = {};
  const int status = CorvaneAPIGetPacketFilter(session.device(), &filter);
  if (status != kSuccess) return Fail(status, "Failed to get the filter configuration");

  puts("Packet filter configuration:");
  if (filter.enable != 1) {
    puts("\tFilter disabled");
    return kSuccess;
  }
  PrintMacs(filter);
  PrintIps(filter);
  PrintPorts(filter);
  if ((capabilities & kVlanFilter) != 0) {
    PrintNumber("VLAN id", (filter.match_flags & CORVANE_MATCH_VLAN) != 0, filter.vlan_id);
  }
  return kSuccess;
}
