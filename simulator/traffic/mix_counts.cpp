#include "traffic/mix_counts.h"

#include "tap/frame.h"
#include "tap/frame_counters.h"

namespace simulator {
namespace {

CountedFrame Counted(const Frame& frame) {
  uint32_t conditions = NetworkCondition(frame.network) |
                        DestinationCondition(frame.destination->mac.data()) |
                        ProtocolCondition(frame.transport);
  if (frame.fate != Fate::kBadCrc) conditions |= kCountCrcOk;
  if (frame.fate == Fate::kHwDropped) conditions |= kCountHwDropped;
  const bool is_ipv6 = frame.network == Layer2::kIp6;
  const auto address = [&](const Host& host) {
    return is_ipv6 ? host.ipv6.data() : host.ipv4.data();
  };
  return {conditions, frame.size, 1U << frame.port, address(*frame.source),
          address(*frame.destination)};
}

// As it leaves by the other port: only whole frames do.
bool Passes(const Frame& frame) {
  return frame.fate != Fate::kBadCrc;
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

int64_t MixRateAt(Cycle cycle, uint8_t port, int64_t bits_per_second) {
  int64_t bits = 0;  // a round
  for (const Frame& frame : cycle) {
    if (frame.port == port) bits += 8 * (int64_t{frame.size} + kFrameOverhead);
  }
  return bits == 0 ? 0 : bits_per_second * static_cast<int64_t>(cycle.size()) / bits;
}

// A counter that does not look at the port where a frame came in may look at the one by which it
// left.
uint64_t CounterValue(Cycle cycle, const MixFrames& frames, const CounterV2Config& counter) {
  const CounterRule rule(counter);
  uint64_t value = 0;
  for (const Frame& frame : cycle) {
    CountedFrame counted = Counted(frame);
    const uint64_t amount = rule.Amount(counted);
    value += amount * TimesOf(cycle, frames.arrived[frame.port], frame);
    counted.ports = kBothPorts;
    if (amount > 0 || !Passes(frame)) continue;
    value += rule.Amount(counted) * TimesOf(cycle, frames.passed[frame.port], frame);
  }
  return value;
}

PortStatistics CountPort(Cycle cycle, const MixFrames& frames, uint8_t port) {
  PortStatistics statistics = {};
  for (const Frame& frame : cycle) {
    const bool own = frame.port == port;
    if (!own && !Passes(frame)) continue;
    const uint64_t count = own ? frames.arrived[port] : frames.passed[frame.port];
    CountedFrame counted = Counted(frame);
    if (!own) counted.conditions &= ~kCountHwDropped;
    CountAtPort(counted, TimesOf(cycle, count, frame), statistics);
  }
  return statistics;
}

}  // namespace simulator
