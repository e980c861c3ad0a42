// What the frame path does beside filtering: its switches, slicing, room for check sequences, what
// it counts. The filters have a test of their own against tshark, frame_filter_test.py.
#include "tap/frame_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <numeric>
#include <vector>

#include "device/capabilities.h"

using namespace simulator;

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kSize = 96;  // of the frame, without its check sequence
constexpr int64_t kTime = 1234567890123456789;

struct Arrival {
  uint8_t port = 0;
  bool crc_error = false;
  bool hw_dropped = false;
  uint32_t cut = 0;  // bytes that the source has cut off
};

constexpr struct {
  const char* name;
  FeaturesRecord features;
  Arrival arrival;
  int length;  // bytes that are kept; -1 when the frame is not
  uint32_t wire_length = kSize;
  bool full_frames = false;
} kCases[] = {
    {"as it comes", {}, {}, kSize},
    {"CRC error", {}, {.crc_error = true}, -1},
    {"CRC error, kept", {.transmitcrcerrors = 1}, {.crc_error = true}, kSize},
    {"dropped by the hardware", {.transmitcrcerrors = 1}, {.hw_dropped = true}, -1},
    {"sliced", {.slicing = 1, .slicing_size = 40}, {}, 40},
    {"sliced beyond its end", {.slicing = 1, .slicing_size = 2000}, {}, kSize},
    {"slicing to nothing is off", {.slicing = 1}, {}, kSize},
    {"full frames", {.slicing = 1, .slicing_size = 40}, {}, kSize, kSize, true},
    {"with check sequence", {.keepcrc32 = 1}, {}, 100, 100},
    {"sliced within it", {.keepcrc32 = 1, .slicing = 1, .slicing_size = 98}, {}, 98, 100},
    {"sliced before it", {.keepcrc32 = 1, .slicing = 1, .slicing_size = 50}, {}, 50, 100},
    {"cut by the source: none", {.keepcrc32 = 1}, {.cut = 36}, 60, 100},
};

class FramePathTest : public testing::Test {
 protected:
  FramePathTest() {
    settings_.capabilities = CORVANE_CAP_FILTER | CORVANE_CAP_PACKET_TYPE_FILTER |
                             CORVANE_CAP_VLAN_FILTER | CORVANE_CAP_SLICING_LENGTH;
    memset(&settings_.types, 1, sizeof settings_.types);
    std::iota(content_.begin(), content_.end(), 0);
  }

  RawFrame FrameOf(const Arrival& arrival) const {
    return {content_.data(),    kSize - arrival.cut, kSize, arrival.port,
            !arrival.crc_error, arrival.hw_dropped,  kTime};
  }

  Bytes content_ = Bytes(kSize);
  PathSettings settings_ = {};
  KeptFrame kept_ = {};
};

TEST_F(FramePathTest, KeepsCutsAndCompletesFramesAsTheFeaturesSay) {
  for (const auto& c : kCases) {
    SCOPED_TRACE(c.name);
    settings_.features = c.features;
    settings_.full_frames = c.full_frames;
    FramePath path(settings_);
    ASSERT_EQ(path.Process(FrameOf(c.arrival), kept_), c.length >= 0);
    if (c.length < 0) continue;
    ASSERT_EQ(kept_.length, static_cast<uint32_t>(c.length));
    EXPECT_EQ(kept_.wire_length, c.wire_length);
    EXPECT_EQ(kept_.time_ns, kTime);
    EXPECT_EQ(kept_.port, c.arrival.port);
    EXPECT_EQ(memcmp(kept_.bytes, content_.data(), std::min(kept_.length, kSize)), 0);
  }
}

TEST_F(FramePathTest, ALinkCarriesWhatItsSpeedAllows) {
  const struct {
    int64_t bits_per_second;
    int64_t pause_ns;  // between the starts of two frames
    int arriving;      // of 10000 frames of kSize bytes and what is around them
  } cases[] = {{0, 1'000'000, 0},
               {8'000 * (kSize + 24), 1'000'000, 10'000},
               {8'000 * (kSize + 24), 500'000, 5'100},           // and what waits for 100 ms
               {8'000 * (kSize + 24), -1'000'000'000, 10'000}};  // a clock that is set back
  for (const auto& c : cases) {
    settings_.bits_per_second[1] = c.bits_per_second;
    FramePath path(settings_);
    int arriving = 0;
    RawFrame frame = FrameOf({.port = 1});
    for (int i = 0; i < 10'000; ++i, frame.time_ns += c.pause_ns) arriving += path.Arrives(frame);
    EXPECT_EQ(arriving, c.arriving) << c.bits_per_second << " " << c.pause_ns;
    EXPECT_FALSE(path.Arrives(FrameOf({})));  // port A has no link
  }
}

TEST_F(FramePathTest, KeepsFramesThatAFilterIsNotAbleToJudge) {
  settings_.dpi.enabled = 1;
  settings_.dpi.mask = 0xFFFF0000;  // no byte of the pattern
  EXPECT_TRUE(FramePath(settings_).Process(FrameOf({}), kept_));
  settings_.capabilities = 0;
  settings_.filter.enable = 1;
  settings_.filter.match_flags = 0xFE;
  settings_.dpi.mask = 0xFFFF;
  settings_.types = {};
  EXPECT_TRUE(FramePath(settings_).Process(FrameOf({}), kept_));
}

TEST_F(FramePathTest, CountsEveryFrameThatArrivesWhetherKeptOrNot) {
  settings_.features.disableb = 1;
  settings_.types.l2other = 0;
  CounterV2Config& counter = settings_.counters[3];
  memset(&counter, 0xFF, sizeof counter);  // no condition
  counter.crc_ok = 0;
  counter.porta = counter.portb = counter.mode = 1;
  FramePath path(settings_);
  for (const Arrival& arrival : {Arrival{},
                                 {.crc_error = true},
                                 {.port = 1, .crc_error = true},
                                 {.port = 1, .hw_dropped = true, .cut = 50}}) {
    EXPECT_FALSE(path.Process(FrameOf(arrival), kept_));
  }
  const PathCounts& counts = path.counts();
  EXPECT_EQ(counts.seen, 4U);
  EXPECT_EQ(counts.counters[3], 200U);  // bytes on the wire, of the two with an error
  EXPECT_EQ(counts.ports[0].valid_packets, 1U);
  EXPECT_EQ(counts.ports[0].crc_errors, 1U);
  EXPECT_EQ(counts.ports[1].hw_dropped, 1U);
  EXPECT_EQ(counts.ports[1].total_bytes, 200U);
}

// By size: too short, just right twice, too long.
TEST(PortCounters, AreThoseOfRfc2819) {
  PortStatistics port = {};
  for (const uint32_t size : {63U, 64U, 1518U, 1519U}) {
    for (const uint32_t conditions : {0U, kCountCrcOk}) {
      CountAtPort({conditions, size, 0, nullptr, nullptr}, 1, port);
    }
  }
  const uint64_t expected[] = {2, 4, 2, 0, 2, 1, 6328, 0, 4, 4, 0};
  EXPECT_EQ(memcmp(&port, expected, sizeof port), 0);
}

}  // namespace
