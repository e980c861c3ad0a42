// Real packets for the rows of a traffic mix.
//
// Sources: Ethernet and padding: IEEE 802.3. VLAN tags: IEEE 802.1Q. ARP: RFC 826. IPv4: RFC 791.
// IPv6: RFC 8200. TCP: RFC 9293, options RFC 7323 and RFC 2018. UDP: RFC 768. ICMP: RFC 792, RFC
// 4443. Checksums: RFC 1071.
#pragma once

#include <cstdint>
#include <vector>

#include "traffic/mix.h"

namespace simulator {

// The frame's bytes from the destination MAC on, without the frame check sequence: frame.size - 4
// of them. Lengths and checksums of IP, TCP, UDP, ICMP, IGMP and OSPF are right. The seed decides
// the bytes of meaningless payloads. The numbers of TCP are 0 (traffic/rounds.h has them).
std::vector<uint8_t> BuildFrame(const Frame& frame, uint32_t seed);

}  // namespace simulator
