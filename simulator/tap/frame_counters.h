// What the device counts of a frame: its sixteen configurable counters and the fixed ones of a
// port.
#pragma once

#include <cstddef>
#include <cstdint>

#include "device/corvane_api.h"
#include "tap/frame.h"

namespace simulator {

// The conditions of a counter.
inline constexpr uint32_t kCountIpv4 = 0x001;
inline constexpr uint32_t kCountIpv6 = 0x002;
inline constexpr uint32_t kCountBroadcast = 0x004;
inline constexpr uint32_t kCountMulticast = 0x008;  // a group, but not everyone
inline constexpr uint32_t kCountUnicast = 0x010;
inline constexpr uint32_t kCountIcmp = 0x020;  // and ICMPv6
inline constexpr uint32_t kCountUdp = 0x040;
inline constexpr uint32_t kCountTcp = 0x080;
inline constexpr uint32_t kCountCrcOk = 0x100;
inline constexpr uint32_t kCountHwDropped = 0x200;
inline constexpr uint32_t kCountEnd = 0x400;  // more than any set of them
// The conditions on what follows the MAC addresses.
inline constexpr uint32_t kCountParsed =
    kCountIpv4 | kCountIpv6 | kCountIcmp | kCountUdp | kCountTcp;

// A frame as counters see it.
struct CountedFrame {
  uint32_t conditions;         // kCount... that hold
  uint32_t size;               // bytes, from the destination MAC to the frame check sequence
  uint32_t ports;              // a bit for each port that it went through: 1 A, 2 B
  const uint8_t* source;       // IP addresses in network order, as long as kCountIpv4 or kCountIpv6
  const uint8_t* destination;  // says; both null when unknown
};

inline constexpr uint32_t kBothPorts = 3;

// kCountBroadcast, kCountMulticast or kCountUnicast for a destination MAC address of six bytes.
uint32_t DestinationCondition(const uint8_t* mac);

// kCountIpv4, kCountIpv6 or 0.
uint32_t NetworkCondition(Layer2 layer2);

// kCountIcmp, kCountUdp, kCountTcp or 0 for an IANA protocol number.
uint32_t ProtocolCondition(uint8_t protocol);

// One configurable counter, prepared.
class CounterRule {
 public:
  CounterRule() = default;  // counts nothing
  explicit CounterRule(const CounterV2Config& config);

  // What the counter grows by for the frame: 0, 1 or the frame's size, as its mode says.
  uint64_t Amount(const CountedFrame& frame) const {
    return Matches(frame) ? (counts_bytes_ ? frame.size : 1) : 0;
  }

  // True when all conditions hold, the one on the port among them.
  //
  // An address narrows the IP condition beside it: "not IPv4" with an address counts all but the
  // IPv4 frames from or to that address. A mask of zeroes narrows nothing.
  bool Matches(const CountedFrame& frame) const {
    return (frame.conditions & care_) == expected_ && (frame.ports & ports_) != 0 &&
           frame.size >= smallest_ && frame.size <= largest_ &&
           (!has_address_ || AddressesMatch(frame));
  }

  // The conditions that matter.
  uint32_t asked() const { return care_ | (has_address_ ? kCountIpv4 | kCountIpv6 : 0); }
  // True when nothing but the conditions and the port of a frame matters.
  bool is_plain() const { return smallest_ == 0 && largest_ == UINT32_MAX && !has_address_; }
  bool counts_bytes() const { return counts_bytes_; }

 private:
  bool AddressesMatch(const CountedFrame& frame) const;
  bool IsFromOrTo(const CountedFrame& frame, uint32_t version) const;

  uint32_t care_ = 0;      // conditions that matter, except those that an address narrows
  uint32_t expected_ = 0;  // those of them that must hold
  uint32_t smallest_ = 0;
  uint32_t largest_ = UINT32_MAX;
  uint32_t ports_ = 0;  // a bit each
  bool counts_bytes_ = false;
  bool has_address_ = false;
  int32_t narrowed_ipv4_ = -1;  // the condition when an address narrows it, else -1
  int32_t narrowed_ipv6_ = -1;
  uint8_t address_[16] = {};  // the last byte first
  uint8_t mask_[16] = {};
};

// All configurable counters of a device. Plain rules cost nothing per frame: frames are summed by
// their conditions, and the sums go to the rules when the counters are read.
class CounterBank {
 public:
  explicit CounterBank(const CounterV2Config (&configs)[CORVANE_COUNTERS_V2]);

  void Count(const CountedFrame& frame) {
    Sum& sum = sums_[frame.ports][frame.conditions];
    ++sum.frames;
    sum.bytes += frame.size;
    for (size_t i = 0; i < special_count_; ++i) {
      special_counts_[i] += rules_[special_[i]].Amount(frame);
    }
  }

  void AddTo(uint64_t (&counters)[CORVANE_COUNTERS_V2]) const;

  uint32_t asked() const { return asked_; }  // the conditions that matter to some rule

 private:
  struct Sum {
    uint64_t frames;
    uint64_t bytes;
  };

  void Deal(const Sum& sum, const CountedFrame& kind,
            uint64_t (&counters)[CORVANE_COUNTERS_V2]) const;

  CounterRule rules_[CORVANE_COUNTERS_V2];
  size_t special_[CORVANE_COUNTERS_V2];  // rules that are not plain; special_count_ are valid
  uint64_t special_counts_[CORVANE_COUNTERS_V2] = {};
  size_t special_count_ = 0;
  uint32_t asked_ = 0;
  Sum sums_[kBothPorts + 1][kCountEnd] = {};
};

// Adds the frame, as often as times says, to the counters of a port as RFC 2819 defines them
// (etherStats group): a frame with a bad CRC is a jabber when it is longer than 1518 bytes, and a
// CRC error when it has 64 to 1518. The traffic is full duplex: there are no collisions.
void CountAtPort(const CountedFrame& frame, uint64_t times, PortStatistics& port);

}  // namespace simulator
