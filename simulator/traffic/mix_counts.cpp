#include "traffic/mix_counts.h"

#include "tap/frame_counters.h"

namespace simulator {
namespace {

uint32_t NetworkCondition(Network network) {
  if (network == Network::kIpv4) return kCountIpv4;
  return network == Network::kIpv6 ? kCountIpv6 : 0;
}

CountedFrame Counted(const Frame& frame) {
  uint32_t conditions = NetworkCondition(frame.network) |
                        DestinationCondition(frame.destination->mac.data()) |
                        ProtocolCondition(frame.transport);
  if (frame.fate != Fate::kBadCrc) conditions |= kCountCrcOk;
  if (frame.fate == Fate::kHwDropped) conditions |= kCountHwDropped;
  const bool is_ipv6 = frame.network == Network::kIpv6;
  const auto address = [&](const Host& host) {
    return is_ipv6 ? host.ipv6.data() : host.ipv4.data();
  };
  return {conditions, frame.size, frame.port, address(*frame.source), address(*frame.destination)};
}

// How often the frame of the cycle is among that many first frames.
uint64_t TimesOf(Cycle cycle, uint64_t frames, const Frame& frame) {
  const auto position = static_cast<uint64_t>(&frame - cycle.data());
  return frames / cycle.size() + (position < frames % cycle.size() ? 1 : 0);
}

}  // namespace

// In two steps, for the product of the whole time and the rate would not fit.
uint64_t FramesAfter(int64_t elapsed_ms, int64_t rate) {
  if (elapsed_ms <= 0) return 0;
  return static_cast<uint64_t>(elapsed_ms / 1000 * rate + elapsed_ms % 1000 * rate / 1000);
}

Tally CountFrames(Cycle cycle, uint64_t frames, const std::function<bool(const Frame&)>& matches) {
  Tally tally;
  for (const Frame& frame : cycle) {
    if (!matches(frame)) continue;
    const uint64_t times = TimesOf(cycle, frames, frame);
    tally.frames += times;
    tally.bytes += times * frame.size;
  }
  return tally;
}

bool CounterMatches(const CounterV2Config& counter, const Frame& frame) {
  return CounterRule(counter).Matches(Counted(frame));
}

uint64_t CounterValue(Cycle cycle, uint64_t frames, const CounterV2Config& counter) {
  const CounterRule rule(counter);
  const Tally tally =
      CountFrames(cycle, frames, [&](const Frame& frame) { return rule.Matches(Counted(frame)); });
  return counter.mode == 0 ? tally.frames : tally.bytes;
}

PortStatistics CountPort(Cycle cycle, uint64_t frames, uint8_t port) {
  PortStatistics statistics = {};
  for (const Frame& frame : cycle) {
    if (frame.port == port) CountAtPort(Counted(frame), TimesOf(cycle, frames, frame), statistics);
  }
  return statistics;
}

}  // namespace simulator
