// The device's three filters, each prepared once from its record.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "device/corvane_api.h"
#include "tap/frame.h"

namespace simulator {

// ---- Packet filter

// An IP address of a frame, in network order.
struct Address {
  Layer2 layer2;  // kIp4 or kIp6
  const uint8_t* bytes;
};

// An IP address filter. A record does not say which IP version the address has, so there are three
// readings.
struct AddressFilter {
  // value: the address in network order; mask: ones where it must match.
  struct Ipv4Reading {
    bool possible;  // else it matches nothing
    uint32_t value;
    uint32_t mask;
  };
  struct Ipv6Reading {
    uint64_t value[2];
    uint64_t mask[2];
  };
  Ipv4Reading in_four;     // in bytes 0 to 3 of the slot
  Ipv4Reading in_sixteen;  // in bytes 12 to 15; the others do not matter
  Ipv6Reading ipv6;

  bool Matches(const Address& address) const;
};

// All criteria that the record uses must hold. A criterion on something that the frame lacks
// (ports, an IP address, a tag) does not hold.
class PacketFilter {
 public:
  // The filter lets everything pass unless it is enabled and the device has the Filter capability;
  // the VLAN criterion counts only with the VLAN filter capability.
  PacketFilter(const PacketFilterRecord& record, uint32_t capabilities);

  bool active() const { return active_; }
  bool Keeps(const RawFrame& frame, const FrameFacts& facts) const;

 private:
  struct Number {  // a MAC address or a port
    uint64_t value;
    uint64_t mask;

    bool Matches(uint64_t number) const { return ((number ^ value) & mask) == 0; }
  };

  // What is wanted of a frame's source and destination.
  template <class Pattern>
  struct Ends {
    bool uses_source;
    bool uses_destination;
    bool either;  // the pattern of the source may match the destination instead
    Pattern source;
    Pattern destination;

    bool used() const { return uses_source || uses_destination; }
    bool Match(const auto& from, const auto& to) const {
      if (uses_source && !source.Matches(from) && !(either && source.Matches(to))) return false;
      return !uses_destination || destination.Matches(to);
    }
  };

  bool active_;
  bool uses_vlan_;
  Number vlan_;
  Ends<Number> macs_;
  Ends<Number> ports_;
  Ends<AddressFilter> addresses_;
};

// ---- Packet type filter

// The types to which the frame belongs: bit i is the type of byte i of PacketTypeFilterRecord.
//
//   ipv4, ipv6, arp  the EtherType after all VLAN tags; l2other: any other frame
//   vlan             at least one VLAN tag
//   tcp, udp, icmp, igmp  the IP protocol 6, 17, 1 and 58, 2, in every fragment
//   l4other          any other IP protocol; an IP packet whose header is broken has no protocol
//   https ... smb, quic   source or destination port, see kApplications in packet_types.cpp
//   tcpfin, tcpsyn, tcprst, tcppsh, tcpack  the flag is set
//   zerowindow       the window field is 0
uint32_t TypesOf(const FrameFacts& facts);

// The types whose frames the filter drops, as TypesOf has them: every type that is switched off.
// None without the Packet type filter capability; not vlan without the VLAN filter capability.
uint32_t DroppedTypes(const PacketTypeFilterRecord& record, uint32_t capabilities);

// ---- Deep packet inspection

// Finds the pattern's demanded bytes, at their distances, anywhere in the frame. Bytes before the
// first and after the last demanded one may lie outside the frame.
class DpiFilter {
 public:
  // Lets everything pass unless it is enabled, demands a byte and the device has the Filter
  // capability.
  DpiFilter(const DpiFilterRecord& record, uint32_t capabilities);

  bool active() const { return size_ != 0; }
  bool Keeps(const uint8_t* bytes, size_t length) const;

 private:
  bool MatchesAt(const uint8_t* window) const;

  std::array<uint8_t, 16> value_ = {};  // from the first demanded byte on; others 0
  std::array<uint8_t, 16> mask_ = {};   // 0xFF for a demanded byte
  size_t size_ = 0;                     // bytes from the first to the last demanded one
  size_t anchor_ = 0;                   // the demanded byte that is looked for first
};

}  // namespace simulator
