#include <endian.h>

#include <algorithm>
#include <cstring>

#include "device/capabilities.h"
#include "tap/filters.h"

namespace simulator {
namespace {

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

}  // namespace

bool AddressFilter::Matches(const Address& address) const {
  if (address.layer2 == Layer2::kIp4) {
    const uint32_t number = Ipv4Number(address.bytes);
    return simulator::Matches(in_four, number) || simulator::Matches(in_sixteen, number);
  }
  return ((Ipv6Half(address.bytes) ^ ipv6.value[0]) & ipv6.mask[0]) == 0 &&
         ((Ipv6Half(address.bytes + 8) ^ ipv6.value[1]) & ipv6.mask[1]) == 0;
}

PacketFilter::PacketFilter(const PacketFilterRecord& record, uint32_t capabilities)
    : active_(record.enable == 1 && (capabilities & CORVANE_CAP_FILTER) != 0),
      uses_vlan_((record.match_flags & CORVANE_MATCH_VLAN) != 0 &&
                 (capabilities & CORVANE_CAP_VLAN_FILTER) != 0),
      vlan_{record.vlan_id, record.vlan_mask} {
  const auto uses = [&](uint32_t flag) { return (record.match_flags & flag) != 0; };
  const auto either = [&](uint32_t flag) { return (record.either_flags & flag) != 0; };
  const bool ipv6 = uses(CORVANE_MATCH_IPV6);
  macs_ = {uses(CORVANE_MATCH_SRC_MAC),
           uses(CORVANE_MATCH_DST_MAC),
           either(CORVANE_EITHER_MAC),
           {SlotNumber(record.src_mac, 6), SpreadMask(record.mac_masks >> 6, 6)},
           {SlotNumber(record.dst_mac, 6), SpreadMask(record.mac_masks, 6)}};
  ports_ = {uses(CORVANE_MATCH_SRC_PORT),
            uses(CORVANE_MATCH_DST_PORT),
            either(CORVANE_EITHER_PORT),
            {record.src_port, SpreadMask(record.port_masks >> 2, 2)},
            {record.dst_port, SpreadMask(record.port_masks, 2)}};
  addresses_ = {uses(CORVANE_MATCH_SRC_IP), uses(CORVANE_MATCH_DST_IP), either(CORVANE_EITHER_IP),
                ReadAddress(record.src_ip, record.src_ip_mask, ipv6),
                ReadAddress(record.dst_ip, record.dst_ip_mask, ipv6)};
}

bool PacketFilter::Keeps(const RawFrame& frame, const FrameFacts& facts) const {
  if (!active_) return true;
  const auto macs = [&] {
    return frame.length >= kEthernetHeader &&
           macs_.Match(MacNumber(frame.bytes + 6), MacNumber(frame.bytes));
  };
  const auto ports = [&] {
    return facts.has_ports && ports_.Match(facts.source_port, facts.destination_port);
  };
  const auto addresses = [&] {
    return facts.source != nullptr && addresses_.Match(Address{facts.layer2, facts.source},
                                                       Address{facts.layer2, facts.destination});
  };
  return (!macs_.used() || macs()) && (!ports_.used() || ports()) &&
         (!addresses_.used() || addresses()) &&
         (!uses_vlan_ || std::any_of(facts.vlans, facts.vlans + facts.vlan_count,
                                     [this](uint16_t id) { return vlan_.Matches(id); }));
}

}  // namespace simulator
