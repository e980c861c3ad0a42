#include "traffic.h"

#include <algorithm>

namespace {

// ---- Conditions of a counter

bool IsBroadcast(const Frame& frame) {
  return std::all_of(frame.destination->mac.begin(), frame.destination->mac.end(),
                     [](uint8_t byte) { return byte == 0xFF; });
}

bool IsGroup(const Frame& frame) {
  return (frame.destination->mac[0] & 1) != 0;
}

// True when the address is the counter's; wildcard positions have clear mask bits. The counter
// holds the last byte first.
bool MatchesAddress(const CounterV2Config& counter, std::span<const uint8_t> address) {
  for (size_t i = 0; i < address.size(); ++i) {
    const uint8_t byte = address[address.size() - 1 - i];
    if (((byte ^ counter.address[i]) & counter.mask[i]) != 0) return false;
  }
  return true;
}

// An address narrows the condition that it was given with: "not IPv4" with an address counts what
// is not IPv4 from or to that address. A mask of zeroes narrows nothing.
bool IsIpv4(const CounterV2Config& counter, const Frame& frame) {
  return frame.network == Network::kIpv4 && (MatchesAddress(counter, frame.source->ipv4) ||
                                             MatchesAddress(counter, frame.destination->ipv4));
}

bool IsIpv6(const CounterV2Config& counter, const Frame& frame) {
  return frame.network == Network::kIpv6 && (MatchesAddress(counter, frame.source->ipv6) ||
                                             MatchesAddress(counter, frame.destination->ipv6));
}

struct Condition {
  int32_t CounterV2Config::*wanted;  // 1 true, 0 false, else no matter
  bool (*holds)(const CounterV2Config& counter, const Frame& frame);
};

using Counter = const CounterV2Config&;

constexpr Condition kConditions[] = {
    {&CounterV2Config::ipv4, IsIpv4},
    {&CounterV2Config::ipv6, IsIpv6},
    {&CounterV2Config::bcast, [](Counter, const Frame& frame) { return IsBroadcast(frame); }},
    {&CounterV2Config::mcast,
     [](Counter, const Frame& frame) { return IsGroup(frame) && !IsBroadcast(frame); }},
    {&CounterV2Config::ucast, [](Counter, const Frame& frame) { return !IsGroup(frame); }},
    {&CounterV2Config::icmp,
     [](Counter, const Frame& frame) {
       return frame.transport == kIcmp || frame.transport == kIcmp6;
     }},
    {&CounterV2Config::udp, [](Counter, const Frame& frame) { return frame.transport == kUdp; }},
    {&CounterV2Config::tcp, [](Counter, const Frame& frame) { return frame.transport == kTcp; }},
    {&CounterV2Config::crc_ok,
     [](Counter, const Frame& frame) { return frame.fate != Fate::kBadCrc; }},
    {&CounterV2Config::hw_dropped,
     [](Counter, const Frame& frame) { return frame.fate == Fate::kHwDropped; }},
};

bool MatchesSize(const CounterV2Config& counter, const Frame& frame) {
  switch (counter.size_mode) {
    case -1:
      return true;
    case 0:
      return frame.size > counter.size;
    case 1:
      return frame.size < counter.size;
    default:
      return frame.size == counter.size;
  }
}

// ---- Counters of a port

constexpr uint16_t kShortest = 64;
constexpr uint16_t kLongest = 1518;

struct PortCounter {
  uint64_t PortStatistics::*counter;
  uint64_t Tally::*counted;
  bool (*matches)(const Frame& frame);
};

constexpr PortCounter kPortCounters[] = {
    {&PortStatistics::less_than_64, &Tally::frames,
     [](const Frame& frame) { return frame.size < kShortest; }},
    {&PortStatistics::from_64_to_1518, &Tally::frames,
     [](const Frame& frame) { return frame.size >= kShortest && frame.size <= kLongest; }},
    {&PortStatistics::more_than_1518, &Tally::frames,
     [](const Frame& frame) { return frame.size > kLongest; }},
    {&PortStatistics::crc_errors, &Tally::frames,
     [](const Frame& frame) {
       return frame.fate == Fate::kBadCrc && frame.size >= kShortest && frame.size <= kLongest;
     }},
    {&PortStatistics::jabbers, &Tally::frames,
     [](const Frame& frame) { return frame.fate == Fate::kBadCrc && frame.size > kLongest; }},
    {&PortStatistics::total_bytes, &Tally::bytes, [](const Frame&) { return true; }},
    {&PortStatistics::valid_packets, &Tally::frames,
     [](const Frame& frame) { return frame.fate != Fate::kBadCrc; }},
    {&PortStatistics::invalid_packets, &Tally::frames,
     [](const Frame& frame) { return frame.fate == Fate::kBadCrc; }},
    {&PortStatistics::hw_dropped, &Tally::frames,
     [](const Frame& frame) { return frame.fate == Fate::kHwDropped; }},
};

}  // namespace

// In two steps, for a product of the whole time and the rate would not fit.
uint64_t FramesAfter(int64_t elapsed_ms, int64_t rate) {
  if (elapsed_ms <= 0) return 0;
  return static_cast<uint64_t>(elapsed_ms / 1000 * rate + elapsed_ms % 1000 * rate / 1000);
}

Tally CountFrames(Cycle cycle, uint64_t frames, const std::function<bool(const Frame&)>& matches) {
  const uint64_t rounds = frames / cycle.size();
  const uint64_t rest = frames % cycle.size();
  Tally tally;
  for (size_t i = 0; i < cycle.size(); ++i) {
    if (!matches(cycle[i])) continue;
    const uint64_t times = rounds + (i < rest ? 1 : 0);
    tally.frames += times;
    tally.bytes += times * cycle[i].size;
  }
  return tally;
}

bool CounterMatches(const CounterV2Config& counter, const Frame& frame) {
  for (const Condition& condition : kConditions) {
    const int32_t wanted = counter.*condition.wanted;
    if (wanted != 0 && wanted != 1) continue;
    if (condition.holds(counter, frame) != (wanted == 1)) return false;
  }
  const int32_t port = frame.port == 0 ? counter.porta : counter.portb;
  return port == 1 && MatchesSize(counter, frame);
}

uint64_t CounterValue(Cycle cycle, uint64_t frames, const CounterV2Config& counter) {
  const Tally tally = CountFrames(
      cycle, frames, [&](const Frame& frame) { return CounterMatches(counter, frame); });
  return counter.mode == 0 ? tally.frames : tally.bytes;
}

PortStatistics CountPort(Cycle cycle, uint64_t frames, uint8_t port) {
  PortStatistics statistics = {};
  for (const PortCounter& entry : kPortCounters) {
    const Tally tally = CountFrames(cycle, frames, [&](const Frame& frame) {
      return frame.port == port && entry.matches(frame);
    });
    statistics.*entry.counter = tally.*entry.counted;
  }
  return statistics;
}
