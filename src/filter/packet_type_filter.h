// Which types of frames are captured.
#pragma once

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kPacketTypesCommand = "packet_type_filter";

using PacketTypeRow = SwitchRow<PacketTypeFilterRecord, uint8_t>;

inline constexpr PacketTypeRow kPacketTypes[] = {
    {SwitchSpec("ipv4", "Filter on IPv4"), "IPv4", &PacketTypeFilterRecord::ipv4},
    {SwitchSpec("ipv6", "Filter on IPv6"), "IPv6", &PacketTypeFilterRecord::ipv6},
    {SwitchSpec("arp", "Filter on ARP"), "ARP", &PacketTypeFilterRecord::arp},
    {SwitchSpec("tcp", "Filter on TCP"), "TCP", &PacketTypeFilterRecord::tcp},
    {SwitchSpec("udp", "Filter on UDP"), "UDP", &PacketTypeFilterRecord::udp},
    {SwitchSpec("icmp", "Filter on ICMP"), "ICMP", &PacketTypeFilterRecord::icmp},
    {SwitchSpec("igmp", "Filter on IGMP"), "IGMP", &PacketTypeFilterRecord::igmp},
    {SwitchSpec("https", "Filter on HTTPS"), "HTTPS", &PacketTypeFilterRecord::https},
    {SwitchSpec("http", "Filter on HTTP"), "HTTP", &PacketTypeFilterRecord::http},
    {SwitchSpec("ftp", "Filter on FTP"), "FTP", &PacketTypeFilterRecord::ftp},
    {SwitchSpec("dns", "Filter on DNS"), "DNS", &PacketTypeFilterRecord::dns},
    {SwitchSpec("smtp", "Filter on SMTP"), "SMTP", &PacketTypeFilterRecord::smtp},
    {SwitchSpec("pop3", "Filter on POP3"), "POP3", &PacketTypeFilterRecord::pop3},
    {SwitchSpec("dhcp", "Filter on DHCP"), "DHCP", &PacketTypeFilterRecord::dhcp},
    {SwitchSpec("ssh", "Filter on SSH"), "SSH", &PacketTypeFilterRecord::ssh},
    {SwitchSpec("sip", "Filter on SIP"), "SIP", &PacketTypeFilterRecord::sip},
    {SwitchSpec("smb", "Filter on SMB"), "SMB", &PacketTypeFilterRecord::smb},
    {SwitchSpec("tcpfin", "Filter on TCP FIN"), "TCP FIN", &PacketTypeFilterRecord::tcpfin},
    {SwitchSpec("tcpsyn", "Filter on TCP SYN"), "TCP SYN", &PacketTypeFilterRecord::tcpsyn},
    {SwitchSpec("tcprst", "Filter on TCP RST"), "TCP RST", &PacketTypeFilterRecord::tcprst},
    {SwitchSpec("tcppsh", "Filter on TCP PSH"), "TCP PSH", &PacketTypeFilterRecord::tcppsh},
    {SwitchSpec("tcpack", "Filter on TCP ACK"), "TCP ACK", &PacketTypeFilterRecord::tcpack},
    {SwitchSpec("zerowindow", "Filter on Zero Window"), "Zero Window",
     &PacketTypeFilterRecord::zerowindow},
    {SwitchSpec("quic", "Filter on QUIC"), "QUIC", &PacketTypeFilterRecord::quic},
    {SwitchSpec("l2other", "Filter on other L2 type"), "Other L2 type",
     &PacketTypeFilterRecord::l2other},
    {SwitchSpec("l4other", "Filter on other L4 type"), "Other L4 type",
     &PacketTypeFilterRecord::l4other},
};

// A device without the capability needs it on.
inline constexpr PacketTypeRow kVlanType = {SwitchSpec("vlan", "Filter on VLAN"), "VLAN",
                                            &PacketTypeFilterRecord::vlan, CORVANE_CAP_VLAN_FILTER,
                                            Without::kOne};

inline constexpr auto kPacketTypeRows = std::tie(kPacketTypes, kVlanType);
inline constexpr auto kPacketTypeParameters = ParametersOf(kPacketTypeRows);

int PacketTypeFilterSet(const CommandNode& leaf);
int PacketTypeFilterShow(const CommandNode& leaf);

}  // namespace corvane
