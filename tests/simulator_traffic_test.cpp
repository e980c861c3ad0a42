#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "../simulator/traffic.h"

namespace {

constexpr Host kOne = {{2, 0, 0, 0, 0, 1}, {10, 1, 2, 3}, {0x20, 1, 0xD, 0xB8}};
constexpr Host kTwo = {{2, 0, 0, 0, 0, 2}, {10, 9, 8, 7}, {0x30, 2, 0xE, 0xB9}};
constexpr Host kAll = {{255, 255, 255, 255, 255, 255}, {255, 255, 255, 255}, {}};
constexpr Host kSome = {{1, 0, 0x5E, 0, 0, 251}, {224, 0, 0, 251}, {}};

// Each frame has a letter: the expectations list those that count.
constexpr char kLetters[] = "tuap6bld";
constexpr Frame kFrames[] = {
    {0, 100, Network::kIpv4, kTcp, &kOne, &kTwo},
    {1, 60, Network::kIpv4, kUdp, &kTwo, &kSome},
    {1, 64, Network::kArp, kNoTransport, &kOne, &kAll},
    {0, 1518, Network::kIpv4, kIcmp, &kTwo, &kOne},
    {0, 1519, Network::kIpv6, kIcmp6, &kTwo, &kOne},
    {1, 1518, Network::kIpv4, kTcp, &kOne, &kTwo, 0, 0, 0, 0, Fate::kBadCrc},
    {1, 9000, Network::kIpv4, kTcp, &kOne, &kTwo, 0, 0, 0, 0, Fate::kBadCrc},
    {0, 9000, Network::kIpv4, kTcp, &kOne, &kTwo, 0, 0, 0, 0, Fate::kHwDropped},
};

using Counter = CounterV2Config;

Counter CountAll() {
  Counter all = {.porta = 1, .portb = 1};
  all.ipv4 = all.ipv6 = all.bcast = all.mcast = all.ucast = all.icmp = all.udp = all.tcp = -1;
  all.crc_ok = all.hw_dropped = all.size_mode = -1;
  return all;
}

void Narrow(Counter& counter, size_t at, uint8_t byte, uint8_t mask = 0xFF) {
  counter.address[at] = byte;
  counter.mask[at] = mask;
}

constexpr struct {
  void (*set)(Counter& c);
  const char* counted;
} kCounters[] = {
    {[](Counter&) {}, "tuap6bld"},
    {[](Counter& c) { c.ipv4 = 1; }, "tupbld"},
    {[](Counter& c) { c.ipv6 = 1; }, "6"},
    {[](Counter& c) { c.bcast = 1; }, "a"},
    {[](Counter& c) { c.icmp = 1; }, "p6"},
    {[](Counter& c) { c.crc_ok = 0; }, "bl"},
    {[](Counter& c) { c.hw_dropped = 1; }, "d"},
    {[](Counter& c) { c.size_mode = 1, c.size = 64; }, "u"},
    {[](Counter& c) { c.porta = 0, c.tcp = 1; }, "bl"},
    {[](Counter& c) { c.portb = 0; }, "tp6d"},
    // 10.1.*.*, *.*.*.7; a nibble of an IPv6 address; an address that no condition uses.
    {[](Counter& c) { c.ipv4 = 0, Narrow(c, 3, 10), Narrow(c, 2, 1); }, "ua6"},
    {[](Counter& c) { c.ipv4 = 1, Narrow(c, 0, 7); }, "tupbld"},
    {[](Counter& c) { c.ipv6 = 1, Narrow(c, 15, 0x2F, 0xF0); }, "6"},
    {[](Counter& c) { Narrow(c, 0, 99); }, "tuap6bld"},
};

TEST(SimulatorTraffic, CountersCountWhatTheirConditionsSay) {
  for (const auto& row : kCounters) {
    Counter counter = CountAll();
    row.set(counter);
    std::string counted;
    for (size_t i = 0; i < std::size(kFrames); ++i) {
      if (CounterMatches(counter, kFrames[i])) counted += kLetters[i];
    }
    EXPECT_EQ(counted, row.counted) << &row - kCounters;
  }
}

TEST(SimulatorTraffic, CountsFollowFromTimeRateAndCycle) {
  EXPECT_EQ(FramesAfter(-5, 1000), 0U);
  EXPECT_EQ(FramesAfter(2999, 7), 20U);
  EXPECT_EQ(FramesAfter(4'000'000'000'000, 10'000'000), 40'000'000'000'000'000U);

  Counter counter = CountAll();
  counter.udp = 1;  // the second of the eight
  EXPECT_EQ(CounterValue(kFrames, 17, counter), 2U);
  EXPECT_EQ(CounterValue(kFrames, 18, counter), 3U);
  counter.mode = 1;
  EXPECT_EQ(CounterValue(kFrames, 18, counter), 180U);
}

TEST(SimulatorTraffic, PortsAreCountedApart) {
  const PortStatistics a = CountPort(kFrames, 8, 0);
  const PortStatistics b = CountPort(kFrames, 8, 1);
  const uint64_t expected[][11] = {{0, 2, 2, 0, 0, 0, 12137, 0, 4, 0, 1},
                                   {1, 2, 1, 0, 1, 1, 10642, 0, 2, 2, 0}};
  EXPECT_EQ(memcmp(&a, expected[0], sizeof a), 0);
  EXPECT_EQ(memcmp(&b, expected[1], sizeof b), 0);
}

}  // namespace
