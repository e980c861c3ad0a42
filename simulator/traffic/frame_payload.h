// What the packets of the traffic mix carry: messages that a dissector understands, of any length.
//
// Sources: DNS: RFC 1035. DHCP: RFC 2131. TLS: RFC 8446. IGMPv3: RFC 3376. Neighbour discovery: RFC
// 4861. OSPF: RFC 2328. LLDP: IEEE 802.1AB. SMB2: framing as in RFC 1002.
#pragma once

#include <cstdint>
#include <span>

#include "traffic/mix.h"

namespace simulator {

// Fills the payload of a TCP or UDP packet, to its end.
void FillPayload(const Frame& frame, uint32_t seed, std::span<uint8_t> payload);

// Fills the message of a packet of ICMP, ICMPv6, IGMP or OSPF, its checksum 0.
void FillMessage(const Frame& frame, uint32_t seed, std::span<uint8_t> message);

// Fills what follows the EtherType of an LLDP frame.
void FillLldp(const Frame& frame, std::span<uint8_t> unit);

}  // namespace simulator
