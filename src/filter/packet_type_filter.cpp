#include <cstdio>

#include "device/capabilities.h"
#include "device/report.h"
#include "device/session.h"
#include "device/status.h"
#include "shell/handlers.h"

namespace {

constexpr const char* kTypesUnsupported = "Your device does not support packet type filtering";

struct PacketType {
  const char* key;
  const char* label;
  uint8_t PacketTypeFilterRecord::*field;
};

// In the order of the report. VLAN comes last in it, on devices that have it.
constexpr PacketType kTypes[] = {
    {"ipv4", "IPv4", &PacketTypeFilterRecord::ipv4},
    {"ipv6", "IPv6", &PacketTypeFilterRecord::ipv6},
    {"arp", "ARP", &PacketTypeFilterRecord::arp},
    {"tcp", "TCP", &PacketTypeFilterRecord::tcp},
    {"udp", "UDP", &PacketTypeFilterRecord::udp},
    {"icmp", "ICMP", &PacketTypeFilterRecord::icmp},
    {"igmp", "IGMP", &PacketTypeFilterRecord::igmp},
    {"https", "HTTPS", &PacketTypeFilterRecord::https},
    {"http", "HTTP", &PacketTypeFilterRecord::http},
    {"ftp", "FTP", &PacketTypeFilterRecord::ftp},
    {"dns", "DNS", &PacketTypeFilterRecord::dns},
    {"smtp", "SMTP", &PacketTypeFilterRecord::smtp},
    {"pop3", "POP3", &PacketTypeFilterRecord::pop3},
    {"dhcp", "DHCP", &PacketTypeFilterRecord::dhcp},
    {"ssh", "SSH", &PacketTypeFilterRecord::ssh},
    {"sip", "SIP", &PacketTypeFilterRecord::sip},
    {"smb", "SMB", &PacketTypeFilterRecord::smb},
    {"tcpfin", "TCP FIN", &PacketTypeFilterRecord::tcpfin},
    {"tcpsyn", "TCP SYN", &PacketTypeFilterRecord::tcpsyn},
    {"tcprst", "TCP RST", &PacketTypeFilterRecord::tcprst},
    {"tcppsh", "TCP PSH", &PacketTypeFilterRecord::tcppsh},
    {"tcpack", "TCP ACK", &PacketTypeFilterRecord::tcpack},
    {"zerowindow", "Zero Window", &PacketTypeFilterRecord::zerowindow},
    {"quic", "QUIC", &PacketTypeFilterRecord::quic},
    {"l2other", "Other L2 type", &PacketTypeFilterRecord::l2other},
    {"l4other", "Other L4 type", &PacketTypeFilterRecord::l4other},
};

constexpr PacketType kVlanType = {"vlan", "VLAN", &PacketTypeFilterRecord::vlan};

void PrintType(const PacketType& type, const PacketTypeFilterRecord& filter) {
  printf("\t%s: %s\n", type.label, YesOrNo(filter.*type.field != 0));
}

}  // namespace

int PacketTypeFilterSet(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & kPacketTypeFilter) == 0) return Fail(kUnsupported, kTypesUnsupported);
  PacketTypeFilterRecord filter = {};
  int status = CorvaneAPIGetPacketsTypeFilter(session.device(), &filter);
  if (status != kSuccess) return Fail(status, "Failed to get packet type filters for set");

  for (const PacketType& type : kTypes) ApplySwitch(leaf, type.key, filter.*type.field);
  if ((capabilities & kVlanFilter) != 0) {
    ApplySwitch(leaf, kVlanType.key, filter.vlan);
  } else {
    filter.vlan = 1;  // whatever was read or asked for
  }
  status = CorvaneAPISetPacketsTypeFilter(session.device(), filter);
  if (status != kSuccess) puts("Failed to set packet type filters");
  return status;
}

int PacketTypeFilterShow(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  if ((capabilities & kPacketTypeFilter) == 0) return Fail(kUnsupported, kTypesUnsupported);
  PacketTypeFilterRecord filter = {};
  const int status = CorvaneAPIGetPacketsTypeFilter(session.device(), &filter);
  if (status != kSuccess) return Fail(status, "Failed to get packet type filters");

  puts("Packet type filters:");
  for (const PacketType& type : kTypes) PrintType(type, filter);
  if ((capabilities & kVlanFilter) != 0) PrintType(kVlanType, filter);
  return kSuccess;
}
