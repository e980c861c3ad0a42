// Counted by arithmetic, the mix gives what its frames give one by one. What the conditions of a
// counter mean is tested against tshark, frame_filter_test.py.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "tap/frame_path.h"
#include "traffic/frame_builder.h"
#include "traffic/mix_counts.h"

using namespace simulator;

namespace {

int32_t Below(uint32_t limit) {
  static std::mt19937 numbers(20261123);
  return static_cast<int32_t>(numbers() % limit);
}

// Some conditions, perhaps the address of a network of the mix.
CounterV2Config AnyCounter() {
  using Counter = CounterV2Config;
  Counter counter = {.size = Below(1600), .size_mode = Below(8) - 1};
  for (const auto condition :
       {&Counter::ipv4, &Counter::ipv6, &Counter::bcast, &Counter::mcast, &Counter::ucast,
        &Counter::icmp, &Counter::udp, &Counter::tcp, &Counter::crc_ok, &Counter::hw_dropped}) {
    counter.*condition = Below(8) > 1 ? -1 : Below(2);
  }
  for (const auto field : {&Counter::porta, &Counter::portb, &Counter::mode}) {
    counter.*field = Below(2);
  }
  const uint8_t networks[][4] = {{21, 10, 168, 192}, {0x21}, {0, 0, 1, 10}, {}};
  memcpy(counter.address, networks[Below(4)], 4);
  for (size_t i = 0; i < 4; ++i) counter.mask[i] = counter.address[i] == 0 ? 0 : 0xFF;
  return counter;
}

TEST(SimulatorTraffic, CountsLikeTheFramesOfTheMix) {
  const Cycle mix = TrafficCycle();
  for (size_t frames = 0; frames < 3 * mix.size(); ++frames) {
    PathSettings settings = {};
    for (CounterV2Config& counter : settings.counters) counter = AnyCounter();
    FramePath path(settings);
    for (size_t i = 0; i < frames; ++i) {
      const Frame& frame = mix[i % mix.size()];
      const std::vector<uint8_t> bytes = BuildFrame(frame, 1);
      const auto size = static_cast<uint32_t>(bytes.size());
      KeptFrame kept;
      path.Process({bytes.data(), size, size, frame.port, frame.fate != Fate::kBadCrc,
                    frame.fate == Fate::kHwDropped, 0},
                   kept);
    }
    const PathCounts counts = path.counts();
    for (size_t i = 0; i < CORVANE_COUNTERS_V2; ++i) {
      EXPECT_EQ(CounterValue(mix, frames, settings.counters[i]), counts.counters[i]) << frames;
    }
    for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
      const PortStatistics statistics = CountPort(mix, frames, port);
      EXPECT_EQ(memcmp(&statistics, &counts.ports[port], sizeof statistics), 0) << frames;
    }
  }
}

TEST(SimulatorTraffic, FramesFollowFromTimeAndRate) {
  EXPECT_EQ(FramesAfter(-5, 1000), 0U);
  EXPECT_EQ(FramesAfter(2999, 7), 20U);
  EXPECT_EQ(FramesAfter(4'000'000'000'000, 10'000'000), 40'000'000'000'000'000U);
}

}  // namespace
