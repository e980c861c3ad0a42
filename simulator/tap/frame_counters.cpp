#include "tap/frame_counters.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>

namespace simulator {
namespace {

constexpr uint32_t kShortest = 64;
constexpr uint32_t kLongest = 1518;

struct Condition {
  int32_t CounterV2Config::*wanted;  // 1: must hold, 0: must not, else ignored
  uint32_t bit;
};

constexpr Condition kConditions[] = {
    {&CounterV2Config::ipv4, kCountIpv4},       {&CounterV2Config::ipv6, kCountIpv6},
    {&CounterV2Config::bcast, kCountBroadcast}, {&CounterV2Config::mcast, kCountMulticast},
    {&CounterV2Config::ucast, kCountUnicast},   {&CounterV2Config::icmp, kCountIcmp},
    {&CounterV2Config::udp, kCountUdp},         {&CounterV2Config::tcp, kCountTcp},
    {&CounterV2Config::crc_ok, kCountCrcOk},    {&CounterV2Config::hw_dropped, kCountHwDropped},
};

bool IsWanted(int32_t condition) {
  return condition == CORVANE_COUNT_IF_FALSE || condition == CORVANE_COUNT_IF_TRUE;
}

// The sizes that match are those from smallest to largest; when none does, the range is empty.
void ReadSize(const CounterV2Config& config, uint32_t& smallest, uint32_t& largest) {
  const int64_t size = config.size;
  int64_t from = size;
  int64_t to = size;
  const bool any = config.size_mode == CORVANE_IGNORE;
  if (any || config.size_mode == 1) from = 0;
  if (any || config.size_mode == 0) to = std::numeric_limits<uint32_t>::max();
  if (config.size_mode == 0) from = std::max<int64_t>(size + 1, 0);
  if (config.size_mode == 1) to = size - 1;
  if (to < 0 || from < 0) {
    from = 1;
    to = 0;
  }
  smallest = static_cast<uint32_t>(from);
  largest = static_cast<uint32_t>(to);
}

}  // namespace

uint32_t DestinationCondition(const uint8_t* mac) {
  static constexpr uint8_t kEveryone[CORVANE_MAC_SIZE] = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  if ((mac[0] & 1) == 0) return kCountUnicast;
  return memcmp(mac, kEveryone, sizeof kEveryone) == 0 ? kCountBroadcast : kCountMulticast;
}

uint32_t NetworkCondition(Layer2 layer2) {
  if (layer2 == Layer2::kIp4) return kCountIpv4;
  return layer2 == Layer2::kIp6 ? kCountIpv6 : 0;
}

uint32_t ProtocolCondition(uint8_t protocol) {
  if (protocol == kTcp) return kCountTcp;
  if (protocol == kUdp) return kCountUdp;
  return protocol == kIcmp || protocol == kIcmp6 ? kCountIcmp : 0;
}

CounterRule::CounterRule(const CounterV2Config& config)
    : ports_((config.porta == 1 ? 1 : 0) | (config.portb == 1 ? 2 : 0)),
      counts_bytes_(config.mode != 0) {
  for (const Condition& condition : kConditions) {
    const int32_t wanted = config.*condition.wanted;
    if (!IsWanted(wanted)) continue;
    care_ |= condition.bit;
    if (wanted == 1) expected_ |= condition.bit;
  }
  ReadSize(config, smallest_, largest_);
  memcpy(address_, config.address, sizeof address_);
  memcpy(mask_, config.mask, sizeof mask_);
  const bool narrows = std::any_of(mask_, mask_ + sizeof mask_, [](uint8_t bits) { return bits; });
  if (!narrows) return;
  if (IsWanted(config.ipv4)) narrowed_ipv4_ = config.ipv4;
  if (IsWanted(config.ipv6)) narrowed_ipv6_ = config.ipv6;
  has_address_ = narrowed_ipv4_ != -1 || narrowed_ipv6_ != -1;
  care_ &= ~(kCountIpv4 | kCountIpv6);
  expected_ &= ~(kCountIpv4 | kCountIpv6);
}

// True when the frame has that version and one of its addresses is the counter's; wildcard
// positions have clear mask bits.
bool CounterRule::IsFromOrTo(const CountedFrame& frame, uint32_t version) const {
  if ((frame.conditions & version) == 0 || frame.source == nullptr) return false;
  const size_t size = version == kCountIpv4 ? 4 : 16;
  const auto matches = [&](const uint8_t* address) {
    for (size_t i = 0; i < size; ++i) {
      if (((address[size - 1 - i] ^ address_[i]) & mask_[i]) != 0) return false;
    }
    return true;
  };
  return matches(frame.source) || matches(frame.destination);
}

bool CounterRule::AddressesMatch(const CountedFrame& frame) const {
  return (narrowed_ipv4_ == -1 || IsFromOrTo(frame, kCountIpv4) == (narrowed_ipv4_ == 1)) &&
         (narrowed_ipv6_ == -1 || IsFromOrTo(frame, kCountIpv6) == (narrowed_ipv6_ == 1));
}

CounterBank::CounterBank(const CounterV2Config (&configs)[CORVANE_COUNTERS_V2]) {
  for (size_t i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    rules_[i] = CounterRule(configs[i]);
    asked_ |= rules_[i].asked();
    if (!rules_[i].is_plain()) special_[special_count_++] = i;
  }
}

void CounterBank::Deal(const Sum& sum, const CountedFrame& kind,
                       uint64_t (&counters)[CORVANE_COUNTERS_V2]) const {
  for (size_t i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    const CounterRule& rule = rules_[i];
    if (!rule.is_plain() || !rule.Matches(kind)) continue;
    counters[i] += rule.counts_bytes() ? sum.bytes : sum.frames;
  }
}

void CounterBank::AddTo(uint64_t (&counters)[CORVANE_COUNTERS_V2]) const {
  for (size_t i = 0; i < special_count_; ++i) counters[special_[i]] += special_counts_[i];
  for (uint32_t ports = 1; ports <= kBothPorts; ++ports) {
    for (uint32_t conditions = 0; conditions < kCountEnd; ++conditions) {
      const Sum& sum = sums_[ports][conditions];
      if (sum.frames > 0) Deal(sum, {conditions, 0, ports, nullptr, nullptr}, counters);
    }
  }
}

void CountAtPort(const CountedFrame& frame, uint64_t times, PortStatistics& port) {
  const bool crc_ok = (frame.conditions & kCountCrcOk) != 0;
  const bool is_long = frame.size > kLongest;
  const bool is_short = frame.size < kShortest;
  (is_long ? port.more_than_1518 : is_short ? port.less_than_64 : port.from_64_to_1518) += times;
  (crc_ok ? port.valid_packets : port.invalid_packets) += times;
  if (!crc_ok && is_long) port.jabbers += times;
  if (!crc_ok && !is_long && !is_short) port.crc_errors += times;
  if ((frame.conditions & kCountHwDropped) != 0) port.hw_dropped += times;
  port.total_bytes += times * frame.size;
}

}  // namespace simulator
