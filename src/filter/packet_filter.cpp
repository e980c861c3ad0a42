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

constexpr int kNoNumber = -1;  // of an option that was not given
constexpr const char* kFilterUnsupported = "Your device does not support filter configuration";

// Stores an address in the source or the destination slot; false when the text is not an address.
using ParseAddress = bool (*)(const std::string& text, PacketFilterRecord& filter, bool is_source);

// Parsing does not tell which IP version a text has, so every address goes into the 16-byte
// arrangement, and the flag for IPv6 stays clear.
bool ParseIp(const std::string& text, PacketFilterRecord& filter, bool is_source) {
  return SetFilterIpWildcard(text, filter, is_source, 0);
}

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

// Reads one address into its slot; true when there is none to read.
bool ApplyAddress(const CommandNode& leaf, const FilterItem& side, bool is_source,
                  ParseAddress parse, const char* valid, PacketFilterRecord& filter) {
  const std::string text = TextOf(leaf, side);
  if (text.empty()) return true;
  if (!parse(text, filter, is_source)) {
    printf("%s must be a valid %s\n", side.parameter.key, valid);
    return false;
  }
  filter.match_flags |= side.match_flag;
  return true;
}

// False when an address is refused, with the reason printed.
bool ApplyAddresses(const CommandNode& leaf, const FilterSubject& subject, ParseAddress parse,
                    const char* valid, PacketFilterRecord& filter) {
  if (!TextOf(leaf, subject.either).empty()) {
    for (const FilterItem* side : {&subject.source, &subject.destination}) {
      if (!TextOf(leaf, *side).empty()) return RefuseBoth(subject.either, *side);
    }
    filter.either_flags |= subject.either_flag;
  }
  return ApplyAddress(leaf, subject.either, true, parse, valid, filter) &&
         ApplyAddress(leaf, subject.source, true, parse, valid, filter) &&
         ApplyAddress(leaf, subject.destination, false, parse, valid, filter);
}

// False with the reason printed.
bool AcceptPort(const FilterItem& side, int port) {
  if (port >= 0 && port <= 65535) return true;
  printf("%s must lie in range 0-65535\n", side.parameter.key);
  return false;
}

void UsePort(const FilterItem& side, int port, PacketFilterRecord& filter) {
  const bool is_source = side.match_flag == CORVANE_MATCH_SRC_PORT;
  (is_source ? filter.src_port : filter.dst_port) = static_cast<uint16_t>(port);
  filter.port_masks |= is_source ? kSrcPortMask : kDstPortMask;
  filter.match_flags |= side.match_flag;
}

// Unlike addresses, ports are checked before what excludes them.
bool ApplyPorts(const CommandNode& leaf, PacketFilterRecord& filter) {
  const auto& [either, source, destination, label, either_flag] = kFilterPort;
  if (const int port = NumberOf(leaf, either); port != kNoNumber) {
    if (!AcceptPort(either, port)) return false;
    for (const FilterItem* side : {&source, &destination}) {
      if (NumberOf(leaf, *side) != kNoNumber) return RefuseBoth(either, *side);
    }
    UsePort(either, port, filter);
    filter.either_flags |= either_flag;
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
  if ((capabilities & CORVANE_CAP_VLAN_FILTER) == 0) {
    return Fail(kUnsupported, "Your device does not support VLAN filter configuration");
  }
  filter.vlan_id = static_cast<uint16_t>(vlan_id);
  filter.vlan_mask = 0xFFFF;
  filter.match_flags |= kFilterVlan.match_flag;
  return kSuccess;
}

int Enable(const CommandNode& leaf, DeviceHandle device, uint32_t capabilities) {
  PacketFilterRecord filter = {};
  filter.enable = 1;
  const bool accepted = ApplyAddresses(leaf, kFilterMac, ParseMacWildcard, "MAC address", filter) &&
                        ApplyAddresses(leaf, kFilterIp, ParseIp, "IPv4 or IPv6 address", filter) &&
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
  const bool either = (filter.either_flags & subject.either_flag) != 0;
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

}  // namespace

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
