#include "tap/frame.h"

#include <algorithm>

namespace simulator {
namespace {

constexpr uint32_t kAddresses = 12;  // bytes of the two MAC addresses

// EtherTypes
constexpr uint16_t kTypeIpv4 = 0x0800;
constexpr uint16_t kTypeArp = 0x0806;
constexpr uint16_t kTypeVlan = 0x8100;
constexpr uint16_t kTypeIpv6 = 0x86DD;
constexpr uint16_t kTypeServiceVlan = 0x88A8;
constexpr uint16_t kTypeOldQinQ = 0x9100;

// The extension headers of IPv6 (IANA protocol numbers); destination options, mobility, host
// identity and shim6 have no name, for they are all alike.
constexpr uint8_t kHopByHop = 0;
constexpr uint8_t kFragment = 44;
constexpr uint8_t kAuthentication = 51;
constexpr uint8_t kRouting = 43;
constexpr uint8_t kExtensions[] = {kHopByHop, kRouting, kFragment, kAuthentication,
                                   60,        135,      139,       140};

constexpr int kIpv4Header = 20;
constexpr int kIpv6Header = 40;
constexpr int kExtensionStart = 2;  // the next protocol and the length
constexpr int kShortestExtension = 8;
constexpr uint8_t kJumboOption = 0xC2;
constexpr int kPorts = 4;
constexpr int kTcpFields = 16;  // up to the window
constexpr int kTcpWords = 5;    // of the shortest header, in the unit of its length field

uint16_t Read16(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] << 8 | p[1]);
}

// The bytes from the present header on.
struct Rest {
  const uint8_t* at;
  const uint8_t* end;

  bool Has(int64_t bytes) const { return end - at >= bytes; }
  void Limit(int64_t bytes) { end = at + std::min<int64_t>(end - at, bytes); }
};

bool IsVlanType(uint16_t type) {
  return type == kTypeVlan || type == kTypeServiceVlan || type == kTypeOldQinQ;
}

void ParseTransport(Rest rest, FrameFacts& facts) {
  if ((facts.protocol != kTcp && facts.protocol != kUdp) || !rest.Has(kPorts)) return;
  facts.has_ports = true;
  facts.source_port = Read16(rest.at);
  facts.destination_port = Read16(rest.at + 2);
  if (facts.protocol != kTcp || !rest.Has(kTcpFields) || rest.at[12] >> 4 < kTcpWords) return;
  facts.has_tcp = true;
  facts.tcp_flags = rest.at[13];
  facts.tcp_window = Read16(rest.at + 14);
}

void ParseIpv4(Rest rest, FrameFacts& facts) {
  if (!rest.Has(kIpv4Header) || rest.at[0] >> 4 != 4) return;
  const int header = (rest.at[0] & 0x0F) * 4;
  const int total = Read16(rest.at + 2);  // 0: left to the network card
  if (header < kIpv4Header || !rest.Has(header) || (total != 0 && total < header)) return;
  const int fragment = Read16(rest.at + 6);
  facts.source = rest.at + 12;
  facts.destination = rest.at + 16;
  facts.has_protocol = true;
  facts.protocol = rest.at[9];
  facts.is_fragment = (fragment & 0x3FFF) != 0;  // more fragments, or an offset
  facts.is_first = (fragment & 0x1FFF) == 0;
  if (total != 0) rest.Limit(total);
  if (!facts.is_first) return;
  rest.at += header;
  ParseTransport(rest, facts);
}

// Bytes of an IPv6 extension header.
int ExtensionSize(uint8_t protocol, const uint8_t* header) {
  if (protocol == kFragment) return kShortestExtension;
  return protocol == kAuthentication ? (header[1] + 2) * 4 : (header[1] + 1) * 8;
}

// RFC 2675: the length is in the first option of a hop-by-hop header.
bool IsJumbogram(uint8_t protocol, const Rest& rest) {
  return protocol == kHopByHop && rest.Has(kShortestExtension) && rest.at[2] == kJumboOption;
}

// The protocol of a later fragment is the one that its fragment header names; it is unknown when
// that is another extension header.
void ParseIpv6(Rest rest, FrameFacts& facts) {
  if (!rest.Has(kIpv6Header) || rest.at[0] >> 4 != 6) return;
  facts.source = rest.at + 8;
  facts.destination = rest.at + 24;
  facts.protocol = rest.at[6];
  const int payload = Read16(rest.at + 4);
  rest.at += kIpv6Header;
  if (payload != 0 || !IsJumbogram(facts.protocol, rest)) rest.Limit(payload);
  while (std::ranges::count(kExtensions, facts.protocol) != 0) {
    if (!rest.Has(kExtensionStart) || !facts.is_first) return;
    if (facts.protocol == kFragment) {
      if (!rest.Has(kShortestExtension)) return;
      facts.is_fragment = (Read16(rest.at + 2) & 0xFFF9) != 0;
      facts.is_first = (Read16(rest.at + 2) & 0xFFF8) == 0;
    }
    const int size = ExtensionSize(facts.protocol, rest.at);
    facts.protocol = rest.at[0];
    rest.at += std::min<int64_t>(size, rest.end - rest.at);
  }
  facts.has_protocol = true;
  if (facts.is_first) ParseTransport(rest, facts);
}

}  // namespace

FrameFacts ParseFrame(const RawFrame& frame) {
  FrameFacts facts;
  if (frame.length < kEthernetHeader) return facts;
  Rest rest = {frame.bytes + kAddresses, frame.bytes + frame.length};
  uint16_t type = Read16(rest.at);
  rest.at += 2;
  while (IsVlanType(type) && rest.Has(2) && facts.vlan_count < kMaxVlanTags) {
    facts.vlans[facts.vlan_count++] = Read16(rest.at) & 0x0FFF;
    if (!rest.Has(4)) return facts;
    type = Read16(rest.at + 2);
    rest.at += 4;
  }
  if (type == kTypeIpv4) {
    facts.layer2 = Layer2::kIp4;
    ParseIpv4(rest, facts);
  } else if (type == kTypeIpv6) {
    facts.layer2 = Layer2::kIp6;
    ParseIpv6(rest, facts);
  } else if (type == kTypeArp) {
    facts.layer2 = Layer2::kArp;
  }
  return facts;
}

}  // namespace simulator
