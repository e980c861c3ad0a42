#include <endian.h>

#include <algorithm>
#include <cstring>

#include "device/capabilities.h"
#include "tap/filters.h"

namespace simulator {
namespace {

constexpr uint32_t kMatchAnyMac = CORVANE_MATCH_DST_MAC | CORVANE_MATCH_SRC_MAC;
constexpr uint32_t kMatchAnyIp = CORVANE_MATCH_DST_IP | CORVANE_MATCH_SRC_IP;
constexpr uint32_t kMatchAnyPort = CORVANE_MATCH_DST_PORT | CORVANE_MATCH_SRC_PORT;

// ---- Reading slots: the last byte of the address stands first.

// The first size bytes of the slot as one number.
uint64_t SlotNumber(const uint8_t* slot, size_t size) {
  uint64_t number = 0;
  for (size_t i = size; i > 0; --i) number = number << 8 | slot[i - 1];
  return number;
}

// A mask with one bit for each byte, spread to all bits of those bytes.
uint64_t SpreadMask(unsigned bits, size_t size) {
  uint64_t mask = 0;
  for (size_t i = 0; i < size; ++i) {
    if ((bits >> i & 1) != 0) mask |= uint64_t{0xFF} << (8 * i);
  }
  return mask;
}

// Addresses in network order as numbers; IPv6 addresses in two halves.
uint64_t MacNumber(const uint8_t* bytes) {
  uint64_t number = 0;
  for (size_t i = 0; i < CORVANE_MAC_SIZE; ++i) number = number << 8 | bytes[i];
  return number;
}

uint32_t Ipv4Number(const uint8_t* bytes) {
  uint32_t number;
  memcpy(&number, bytes, sizeof number);
  return be32toh(number);
}

uint64_t Ipv6Half(const uint8_t* bytes) {
  uint64_t number;
  memcpy(&number, bytes, sizeof number);
  return be64toh(number);
}

// An IPv6 address of which only the first or the last four bytes matter looks like an IPv4 address;
// then both are meant.
AddressFilter ReadAddress(const uint8_t* slot, unsigned mask, bool ipv6_only) {
  AddressFilter filter = {};
  filter.in_four = {!ipv6_only && (mask & 0xFFF0) == 0, static_cast<uint32_t>(SlotNumber(slot, 4)),
                    static_cast<uint32_t>(SpreadMask(mask, 4))};
  filter.in_sixteen = {!ipv6_only && (mask & 0x0FFF) == 0,
                       static_cast<uint32_t>(SlotNumber(slot + 12, 4)),
                       static_cast<uint32_t>(SpreadMask(mask >> 12, 4))};
  filter.ipv6 = {{SlotNumber(slot + 8, 8), SlotNumber(slot, 8)},
                 {SpreadMask(mask >> 8, 8), SpreadMask(mask, 8)}};
  return filter;
}

bool Matches(const AddressFilter::Ipv4Reading& reading, uint32_t address) {
  return reading.possible && ((address ^ reading.value) & reading.mask) == 0;
}

bool Matches(const AddressFilter& filter, Layer2 layer2, const uint8_t* address) {
  if (layer2 == Layer2::kIp4) {
    const uint32_t number = Ipv4Number(address);
    return Matches(filter.in_four, number) || Matches(filter.in_sixteen, number);
  }
  return ((Ipv6Half(address) ^ filter.ipv6.value[0]) & filter.ipv6.mask[0]) == 0 &&
         ((Ipv6Half(address + 8) ^ filter.ipv6.value[1]) & filter.ipv6.mask[1]) == 0;
}

}  // namespace

PacketFilter::PacketFilter(const PacketFilterRecord& record, uint32_t capabilities)
    : active_(record.enable == 1 && (capabilities & CORVANE_CAP_FILTER) != 0),
      match_flags_(record.match_flags),
      either_flags_(record.either_flags),
      source_mac_{SlotNumber(record.src_mac, 6), SpreadMask(record.mac_masks >> 6, 6)},
      destination_mac_{SlotNumber(record.dst_mac, 6), SpreadMask(record.mac_masks, 6)},
      source_port_{record.src_port, SpreadMask(record.port_masks >> 2, 2)},
      destination_port_{record.dst_port, SpreadMask(record.port_masks, 2)},
      vlan_{record.vlan_id, record.vlan_mask},
      source_(ReadAddress(record.src_ip, record.src_ip_mask,
                          (record.match_flags & CORVANE_MATCH_IPV6) != 0)),
      destination_(ReadAddress(record.dst_ip, record.dst_ip_mask,
                               (record.match_flags & CORVANE_MATCH_IPV6) != 0)) {
  if ((capabilities & CORVANE_CAP_VLAN_FILTER) == 0) match_flags_ &= ~uint32_t{CORVANE_MATCH_VLAN};
}

bool PacketFilter::Keeps(const RawFrame& frame, const FrameFacts& facts) const {
  if (!active_) return true;
  return MacsMatch(frame) && PortsMatch(facts) && AddressesMatch(facts) && VlanMatches(facts);
}

bool PacketFilter::MacsMatch(const RawFrame& frame) const {
  if (!Uses(kMatchAnyMac)) return true;
  if (frame.length < kEthernetHeader) return false;
  const uint64_t destination = MacNumber(frame.bytes);
  const uint64_t source = MacNumber(frame.bytes + 6);
  const bool either = (either_flags_ & CORVANE_EITHER_MAC) != 0;
  if (Uses(CORVANE_MATCH_SRC_MAC) && !source_mac_.Matches(source) &&
      !(either && source_mac_.Matches(destination))) {
    return false;
  }
  return !Uses(CORVANE_MATCH_DST_MAC) || destination_mac_.Matches(destination);
}

bool PacketFilter::AddressesMatch(const FrameFacts& facts) const {
  if (!Uses(kMatchAnyIp)) return true;
  if (facts.source == nullptr) return false;
  const bool either = (either_flags_ & CORVANE_EITHER_IP) != 0;
  if (Uses(CORVANE_MATCH_SRC_IP) && !Matches(source_, facts.layer2, facts.source) &&
      !(either && Matches(source_, facts.layer2, facts.destination))) {
    return false;
  }
  return !Uses(CORVANE_MATCH_DST_IP) || Matches(destination_, facts.layer2, facts.destination);
}

bool PacketFilter::PortsMatch(const FrameFacts& facts) const {
  if (!Uses(kMatchAnyPort)) return true;
  if (!facts.has_ports) return false;
  const bool either = (either_flags_ & CORVANE_EITHER_PORT) != 0;
  if (Uses(CORVANE_MATCH_SRC_PORT) && !source_port_.Matches(facts.source_port) &&
      !(either && source_port_.Matches(facts.destination_port))) {
    return false;
  }
  return !Uses(CORVANE_MATCH_DST_PORT) || destination_port_.Matches(facts.destination_port);
}

bool PacketFilter::VlanMatches(const FrameFacts& facts) const {
  if (!Uses(CORVANE_MATCH_VLAN)) return true;
  return std::any_of(facts.vlans, facts.vlans + facts.vlan_count,
                     [this](uint16_t id) { return vlan_.Matches(id); });
}

}  // namespace simulator
