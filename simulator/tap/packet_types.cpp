#include <cstring>

#include "device/capabilities.h"
#include "tap/filters.h"

namespace simulator {
namespace {

// Bits in the order of the record's bytes.
#define TYPE_BIT(field) (1U << offsetof(PacketTypeFilterRecord, field))

enum Carrier : uint8_t { kOverTcp = 1, kOverUdp = 2, kOverBoth = 3 };

struct Application {
  uint32_t type;
  Carrier carrier;
  uint16_t port;
};

// Ports from the IANA service name and port number registry.
constexpr Application kApplications[] = {
    {TYPE_BIT(https), kOverTcp, 443}, {TYPE_BIT(http), kOverTcp, 80},
    {TYPE_BIT(ftp), kOverTcp, 21},    {TYPE_BIT(ftp), kOverTcp, 20},
    {TYPE_BIT(dns), kOverBoth, 53},   {TYPE_BIT(smtp), kOverTcp, 25},
    {TYPE_BIT(pop3), kOverTcp, 110},  {TYPE_BIT(dhcp), kOverUdp, 67},
    {TYPE_BIT(dhcp), kOverUdp, 68},   {TYPE_BIT(ssh), kOverTcp, 22},
    {TYPE_BIT(sip), kOverBoth, 5060}, {TYPE_BIT(smb), kOverTcp, 445},
    {TYPE_BIT(quic), kOverUdp, 443},
};

constexpr uint32_t kNetworkTypes[] = {TYPE_BIT(ipv4), TYPE_BIT(ipv6), TYPE_BIT(arp),
                                      TYPE_BIT(l2other)};  // by Layer2

uint32_t TransportType(uint8_t protocol) {
  if (protocol == kTcp) return TYPE_BIT(tcp);
  if (protocol == kUdp) return TYPE_BIT(udp);
  if (protocol == kIcmp || protocol == kIcmp6) return TYPE_BIT(icmp);
  return protocol == kIgmp ? TYPE_BIT(igmp) : TYPE_BIT(l4other);
}

uint32_t ApplicationTypes(const FrameFacts& facts) {
  const Carrier carrier = facts.protocol == kTcp ? kOverTcp : kOverUdp;
  uint32_t types = 0;
  for (const Application& application : kApplications) {
    const bool port =
        facts.source_port == application.port || facts.destination_port == application.port;
    if (port && (application.carrier & carrier) != 0) types |= application.type;
  }
  return types;
}

uint32_t TcpTypes(const FrameFacts& facts) {
  constexpr uint32_t kFlags = kFin | kSyn | kRst | kPsh | kAck;  // in the order of the record
  static_assert(TYPE_BIT(tcpack) == kAck * TYPE_BIT(tcpfin));
  return (facts.tcp_flags & kFlags) * TYPE_BIT(tcpfin) |
         (facts.tcp_window == 0 ? TYPE_BIT(zerowindow) : 0);
}

}  // namespace

uint32_t TypesOf(const FrameFacts& facts) {
  uint32_t types = kNetworkTypes[static_cast<size_t>(facts.layer2)];
  if (facts.vlan_count > 0) types |= TYPE_BIT(vlan);
  if (facts.has_protocol) types |= TransportType(facts.protocol);
  if (facts.has_ports) types |= ApplicationTypes(facts);
  if (facts.has_tcp) types |= TcpTypes(facts);
  return types;
}

uint32_t DroppedTypes(const PacketTypeFilterRecord& record, uint32_t capabilities) {
  if ((capabilities & CORVANE_CAP_PACKET_TYPE_FILTER) == 0) return 0;
  uint8_t switches[sizeof record];
  memcpy(switches, &record, sizeof record);
  uint32_t dropped = 0;
  for (size_t i = 0; i < sizeof record; ++i) {
    if (switches[i] == 0) dropped |= 1U << i;
  }
  if ((capabilities & CORVANE_CAP_VLAN_FILTER) == 0) dropped &= ~TYPE_BIT(vlan);
  return dropped;
}

}  // namespace simulator
