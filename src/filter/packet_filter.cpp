#include "filter/packet_filter.h"

#include <cstdio>
#include <string>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "filter/address_wildcard.h"
#include "line/device_option.h"

namespace corvane {

namespace {

// port_masks
constexpr uint8_t kDstPortMask = 0x3;
constexpr uint8_t kSrcPortMask = 0xC;

constexpr uint32_t kSourceMatches =
    CORVANE_MATCH_SRC_MAC | CORVANE_MATCH_SRC_IP | CORVANE_MATCH_SRC_PORT;
constexpr int kMostPort = 65535;
constexpr int kNoNumber = -1;  // of an option that was not given
constexpr const char* kFilterUnsupported = "Your device does not support filter configuration";

bool IsSource(const FilterItem& side) {
  return (side.match_flag & kSourceMatches) != 0;
}

// Stores an address in the item's slot; false when the text is not an address.
using ParseAddress = bool (*)(const std::string& text, PacketFilterRecord& filter, bool is_source);

// Parsing does not tell which IP version a text has, so every address goes into the 16-byte
// arrangement, and the flag for IPv6 stays clear.
bool ParseIp(const std::string& text, PacketFilterRecord& filter, bool is_source) {
  return SetFilterIpWildcard(text, filter, is_source, 0);
}

struct AddressKind {
  uint32_t match_flags;
  ParseAddress parse;
  const char* valid;
  const char* expected;
};

constexpr AddressKind kAddressKinds[] = {
    {CORVANE_MATCH_SRC_MAC | CORVANE_MATCH_DST_MAC, ParseMacWildcard, "MAC address",
     "a MAC address such as 00:1a:*:*:*:01"},
    {CORVANE_MATCH_SRC_IP | CORVANE_MATCH_DST_IP, ParseIp, "IPv4 or IPv6 address",
     "an IPv4 address such as 10.1.*.*, or an IPv6 address in full"},
};

bool RefuseBoth(const FilterItem& either, const FilterItem& one) {
  printf("%s and %s are mutually exclusive\n", either.parameter.key, one.parameter.key);
  return false;
}

std::string TextOf(const CommandNode& leaf, const FilterItem& side) {
  return TextOr(leaf, side.parameter.key, "");
}

int NumberOf(const CommandNode& leaf, const FilterItem& side) {
  return Integer(leaf, side.parameter.key, kNoNumber);
}

// False when the text is not an address.
bool UseAddress(const FilterItem& side, const std::string& text, const AddressKind& kind,
                PacketFilterRecord& filter) {
  if (!kind.parse(text, filter, IsSource(side))) return false;
  filter.match_flags |= side.match_flag;
  filter.either_flags |= side.either_flag;
  return true;
}

// Reads one address into its slot; true when there is none to read.
bool ApplyAddress(const CommandNode& leaf, const FilterItem& side, const AddressKind& kind,
                  PacketFilterRecord& filter) {
  const std::string text = TextOf(leaf, side);
  if (text.empty() || UseAddress(side, text, kind, filter)) return true;
  printf("%s must be a valid %s\n", side.parameter.key, kind.valid);
  return false;
}

// False when an address is refused, with the reason printed.
bool ApplyAddresses(const CommandNode& leaf, const FilterSubject& subject, const AddressKind& kind,
                    PacketFilterRecord& filter) {
  if (!TextOf(leaf, subject.either).empty()) {
    for (const FilterItem* side : {&subject.source, &subject.destination}) {
      if (!TextOf(leaf, *side).empty()) return RefuseBoth(subject.either, *side);
    }
  }
  return ApplyAddress(leaf, subject.either, kind, filter) &&
         ApplyAddress(leaf, subject.source, kind, filter) &&
         ApplyAddress(leaf, subject.destination, kind, filter);
}

// False with the reason printed.
bool AcceptPort(const FilterItem& side, int port) {
  if (port >= 0 && port <= kMostPort) return true;
  printf("%s must lie in range 0-65535\n", side.parameter.key);
  return false;
}

void UsePort(const FilterItem& side, int port, PacketFilterRecord& filter) {
  (IsSource(side) ? filter.src_port : filter.dst_port) = static_cast<uint16_t>(port);
  filter.port_masks |= IsSource(side) ? kSrcPortMask : kDstPortMask;
  filter.match_flags |= side.match_flag;
  filter.either_flags |= side.either_flag;
}

void UseVlan(int vlan_id, PacketFilterRecord& filter) {
  filter.vlan_id = static_cast<uint16_t>(vlan_id);
  filter.vlan_mask = 0xFFFF;
  filter.match_flags |= kFilterVlan.match_flag;
}

// Unlike addresses, ports are checked before what excludes them.
bool ApplyPorts(const CommandNode& leaf, PacketFilterRecord& filter) {
  const auto& [either, source, destination, label] = kFilterPort;
  if (const int port = NumberOf(leaf, either); port != kNoNumber) {
    if (!AcceptPort(either, port)) return false;
    for (const FilterItem* side : {&source, &destination}) {
      if (NumberOf(leaf, *side) != kNoNumber) return RefuseBoth(either, *side);
    }
    UsePort(either, port, filter);
  }
  for (const FilterItem* side : {&source, &destination}) {
    const int port = NumberOf(leaf, *side);
    if (port == kNoNumber) continue;
    if (!AcceptPort(*side, port)) return false;
    UsePort(*side, port, filter);
  }
  return true;
}

int ApplyVlan(const CommandNode& leaf, uint32_t capabilities, PacketFilterRecord& filter) {
  const int vlan_id = NumberOf(leaf, kFilterVlan);
  if (vlan_id < 0) return kSuccess;
  if ((capabilities & kFilterVlan.needs) == 0) {
    return Fail(kUnsupported, "Your device does not support VLAN filter configuration");
  }
  UseVlan(vlan_id, filter);
  return kSuccess;
}

int Enable(const CommandNode& leaf, DeviceHandle device, uint32_t capabilities) {
  PacketFilterRecord filter = kFilterWhole;
  const bool accepted = ApplyAddresses(leaf, kFilterMac, kAddressKinds[0], filter) &&
                        ApplyAddresses(leaf, kFilterIp, kAddressKinds[1], filter) &&
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

void PrintItem(const FilterItem& side, bool used, const std::string& value) {
  printf("\t%s: %s\n", side.label, used ? value.c_str() : "Disabled");
}

// In "either" mode one line, else one for each side.
void PrintSubject(const FilterSubject& subject, const PacketFilterRecord& filter,
                  const std::string& source, const std::string& destination) {
  const bool either = (filter.either_flags & subject.either.either_flag) != 0;
  printf("\t%s: %s\n", subject.mode_label, YesOrNo(either));
  if (either) {
    PrintItem(subject.either, true, source);
    return;
  }
  PrintItem(subject.source, (filter.match_flags & subject.source.match_flag) != 0, source);
  PrintItem(subject.destination, (filter.match_flags & subject.destination.match_flag) != 0,
            destination);
}

void PrintFilter(const PacketFilterRecord& filter, bool has_vlan) {
  const int version = (filter.match_flags & CORVANE_MATCH_IPV6) != 0 ? kIpv6 : kIpv4;
  PrintSubject(kFilterMac, filter, FormatMacWildcard(filter, true),
               FormatMacWildcard(filter, false));
  PrintSubject(kFilterIp, filter, FormatFilterIpWildcard(filter, true, version),
               FormatFilterIpWildcard(filter, false, version));
  PrintSubject(kFilterPort, filter, std::to_string(filter.src_port),
               std::to_string(filter.dst_port));
  if (has_vlan) {
    PrintItem(kFilterVlan, (filter.match_flags & kFilterVlan.match_flag) != 0,
              std::to_string(filter.vlan_id));
  }
}

// The item itself, or one that excludes it.
bool IsTaken(const FilterItem& row, const PacketFilterRecord& filter) {
  for (const FilterSubject* subject : {&kFilterMac, &kFilterIp, &kFilterPort}) {
    const uint32_t both = subject->source.match_flag | subject->destination.match_flag;
    if ((row.match_flag & both) == 0) continue;
    if ((filter.either_flags & subject->either.either_flag) != 0) return true;
    if (row.either_flag != 0) return (filter.match_flags & both) != 0;
  }
  return false;
}

}  // namespace

std::optional<Value> Show(const FilterItem& row, const PacketFilterRecord& filter) {
  const FilterItem* const eithers[] = {&kFilterMac.either, &kFilterIp.either, &kFilterPort.either};
  uint16_t either_flag = 0;  // of the record, where it concerns the item
  for (const FilterItem* either : eithers) {
    if (either->match_flag == row.match_flag) {
      either_flag = static_cast<uint16_t>(filter.either_flags & either->either_flag);
    }
  }
  if ((filter.match_flags & row.match_flag) == 0 || either_flag != row.either_flag) {
    return std::nullopt;
  }
  const bool is_source = IsSource(row);
  if ((row.match_flag & kAddressKinds[0].match_flags) != 0) {
    return FormatMacWildcard(filter, is_source);
  }
  if ((row.match_flag & kAddressKinds[1].match_flags) != 0) return SameFilterIp(filter, is_source);
  if (row.match_flag == kFilterVlan.match_flag) return int64_t{filter.vlan_id};
  return int64_t{is_source ? filter.src_port : filter.dst_port};
}

std::string Store(const FilterItem& row, const Value& value, const DeviceKind&,
                  PacketFilterRecord& filter) {
  if (IsTaken(row, filter)) return "either side or one of them, not both";
  for (const AddressKind& kind : kAddressKinds) {
    if ((row.match_flag & kind.match_flags) == 0) continue;
    const auto* text = std::get_if<std::string>(&value);
    const bool is_ip = kind.parse == ParseIp;
    const bool used =
        text != nullptr && (!is_ip || IsIpText(*text)) && UseAddress(row, *text, kind, filter);
    return used ? "" : kind.expected;
  }
  const auto number = NumberIn(value, 0, kMostPort);
  if (!number) return "a number from 0 to 65535";
  if (row.match_flag == kFilterVlan.match_flag) {
    UseVlan(static_cast<int>(*number), filter);
  } else {
    UsePort(row, static_cast<int>(*number), filter);
  }
  return "";
}

int FilterSet(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & CORVANE_CAP_FILTER) == 0) return Fail(kUnsupported, kFilterUnsupported);
  return leaf.name == "disable" ? Disable(session.device())
                                : Enable(leaf, session.device(), capabilities);
}

int FilterShow(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & CORVANE_CAP_FILTER) == 0) return Fail(kUnsupported, kFilterUnsupported);
  PacketFilterRecord filter = {};
  const int status = CorvaneAPIGetPacketFilter(session.device(), &filter);
  if (status != kSuccess) return Fail(status, "Failed to get the filter configuration");

  puts("Packet filter configuration:");
  if (filter.enable != 1) {
    puts("\tFilter disabled");
    return kSuccess;
  }
  PrintFilter(filter, (capabilities & CORVANE_CAP_VLAN_FILTER) != 0);
  return kSuccess;
}

}  // namespace corvane
