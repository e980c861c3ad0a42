// Counted by arithmetic, the mix gives what its frames give one by one. What the conditions of a
// counter mean is tested against tshark, frame_filter_test.py. Files as other programs write them
// are replayed; our own are in capture_test.cpp.
#include <gtest/gtest.h>

#include <cstring>
#include <random>

#include "support/simulation.h"
#include "tap/frame_path.h"
#include "traffic/file_replay.h"
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
    settings.passes = Below(2) == 1;
    MixFrames mix_frames = {{frames, frames}, {}};
    if (settings.passes) mix_frames = {{frames, frames}, {frames, frames}};
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
      EXPECT_EQ(CounterValue(mix, mix_frames, settings.counters[i]), counts.counters[i]) << frames;
    }
    for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
      const PortStatistics statistics = CountPort(mix, mix_frames, port);
      EXPECT_EQ(memcmp(&statistics, &counts.ports[port], sizeof statistics), 0) << frames;
    }
  }
}

TEST(SimulatorTraffic, FramesFollowFromTimeAndRate) {
  EXPECT_EQ(FramesAfter(-5, 1000), 0U);
  EXPECT_EQ(FramesAfter(2999, 7), 20U);
  EXPECT_EQ(FramesAfter(4'000'000'000'000, 10'000'000), 40'000'000'000'000'000U);
}

// ---- Files, in the byte order that is not the host's

std::string Words(std::initializer_list<uint32_t> words) {
  std::string text;
  for (const uint32_t word : words) {
    for (int shift = 24; shift >= 0; shift -= 8) text += static_cast<char>(word >> shift);
  }
  return text;
}

std::string Block(uint32_t type, const std::string& body) {
  const auto size = static_cast<uint32_t>(body.size() + 12);
  return Words({type, size}) + body + Words({size});
}

const std::string kBytes(64, 'x');
const std::string kSection = Block(0x0A0D0D0A, Words({0x1A2B3C4D, 0x10000, ~0U, ~0U}));
// Packets are cut at 61 bytes, times in 1/1024 s, an hour more; then an interface without options.
const std::string kInterfaces =
    Block(1, Words({0x10000, 61, 0x90001, 0x8A000000, 0xE0008, 0, 3600, 0})) +
    Block(1, Words({0x10000, 0}));
const std::string kPcap = Words({0xA1B23C4D, 0x20004, 0, 0, 64, 1});
const std::string kHourEarlier = kPcap + Words({7200, 5, 64, 64}) + kBytes +
                                 Words({3600, 5, 64, 64}) + kBytes + Words({7201, 6, 64, 64}) +
                                 kBytes;

TEST(SimulatorTraffic, ReplaysFilesOfOtherPrograms) {
  const struct {
    const char* name;
    std::string file;
    Pace pace;
    std::string frames;  // time, bytes there, bytes of the frame, bytes of check sequence, CRC
  } cases[] = {
      {"simple and old packets, two sections",
       kSection + kInterfaces + Block(6, Words({0, 1, 512, 64, 64}) + kBytes) +
           Block(3, Words({1000}) + kBytes) + Block(77, "skip") + kSection + kInterfaces +
           Block(2, Words({0x10000, 0, 3000000, 64, 99}) + kBytes),
       Pace::kFast,
       "4197904500000000 64/64 -1 1;4197904500000000 61/1000 -1 1;3000000000 64/99 -1 1;"},
      {"wrong check sequence, and a mark",
       kSection + kInterfaces +
           Block(6, Words({1, 0, 1, 64, 64}) + kBytes + Words({0x20004, 0x80, 0})) +
           Block(6, Words({1, 0, 2, 64, 64}) + kBytes + Words({0x20004, 1 << 24, 0})),
       Pace::kFast, "1000 60/60 4 0;2000 64/64 -1 0;"},
      {"after 2038, check sequence cut",
       Words({0xA1B2C3D4, 0x20004, 0, 0, 64, 0x24000001}) + Words({4000000000, 7, 64, 66}) + kBytes,
       Pace::kFast, "4000000000000007000 62/62 2 1;"},
      {"an earlier frame is due with its predecessor", kHourEarlier, Pace::kOriginal,
       "9 64/64 -1 1;9 64/64 -1 1;1000000010 64/64 -1 1;"},
      {"cut off", kHourEarlier.substr(0, 150), Pace::kOriginal,
       "9 64/64 -1 1;cannot read FILE: it ends within a packet"},
      {"absurd length", kPcap + Words({1, 1, 1 << 30, 64}) + kBytes, Pace::kFast,
       "cannot read FILE: it has a packet that is too long"},
      {"other frames", Words({0xA1B23C4D, 0x20004, 0, 0, 64, 113}), Pace::kFast,
       "cannot read FILE: it has other frames than those of Ethernet"},
      {"empty", "", Pace::kFast, "cannot read FILE: it is empty"},
  };
  Simulation folder("");
  const std::string path = folder.folder() + "/x";
  for (const auto& [name, file, pace, expected] : cases) {
    WriteFile(path, file);
    FileReplay replay;
    RawFrame frame = {};
    std::string frames;
    std::string reason;
    Supply supply = Supply::kFailed;
    if (replay.Open({.file = path, .pace = pace}, 0, 0, 9, reason)) {
      while ((supply = replay.Next(INT64_MAX - 1, kNeverNs, frame)) == Supply::kFrame) {
        frames += std::to_string(frame.time_ns) + ' ' + std::to_string(frame.length) + '/' +
                  std::to_string(frame.wire_length) + ' ' + std::to_string(frame.fcs_length) + ' ' +
                  std::to_string(frame.crc_ok) + ';';
      }
    }
    if (supply == Supply::kFailed) frames += replay.reason();
    const size_t at = frames.find(path);
    if (at != std::string::npos) frames.replace(at, path.size(), "FILE");
    EXPECT_EQ(frames, expected) << name;
  }
}

}  // namespace
