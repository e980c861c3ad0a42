// What the frame path does beside filtering: its switches, slicing, check sequences, what it
// counts. The filters have a test of their own against tshark, frame_filter_test.sh.
#include "../simulator/tap/frame_path.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "device/capabilities.h"

namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint32_t kSize = 96;  // of the frame, without its check sequence

Bytes Content() {
  Bytes bytes(kSize);
  for (uint32_t i = 0; i < kSize; ++i) bytes[i] = static_cast<uint8_t>(i * 7);
  return bytes;
}

// What is left of the register after a frame and its right check sequence is always the same
// (IEEE 802.3, 3.2.9): so is, bit by bit, this division's result.
uint32_t Residue(const uint8_t* bytes, size_t length) {
  uint32_t crc = 0xFFFFFFFF;
  for (size_t i = 0; i < length; ++i) {
    crc ^= bytes[i];
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ ((crc & 1) != 0 ? 0xEDB88320 : 0);
  }
  return crc;
}

constexpr uint32_t kGoodResidue = 0xDEBB20E3;

struct Case {
  const char* name;
  void (*set)(PathSettings& settings, RawFrame& frame);
  int length;  // bytes that are kept; -1 when the frame is not
  uint32_t wire_length = kSize;
};

using Settings = PathSettings&;
using Raw = RawFrame&;

constexpr Case kCases[] = {
    {"as it comes", [](Settings, Raw) {}, kSize},
    {"port A off", [](Settings s, Raw) { s.features.disablea = 1; }, -1},
    {"port B off", [](Settings s, Raw) { s.features.disableb = 1; }, kSize},
    {"port B off, from B", [](Settings s, Raw f) { s.features.disableb = f.port = 1; }, -1},
    {"CRC error", [](Settings, Raw f) { f.crc_ok = false; }, -1},
    {"CRC error, kept",
     [](Settings s, Raw f) {
       s.features.transmitcrcerrors = 1;
       f.crc_ok = false;
     },
     kSize},
    {"dropped by the hardware", [](Settings, Raw f) { f.hw_dropped = true; }, -1},
    {"sliced",
     [](Settings s, Raw) {
       s.features.slicing = 1;
       s.features.slicing_size = 40;
     },
     40},
    {"sliced beyond its end",
     [](Settings s, Raw) {
       s.features.slicing = 1;
       s.features.slicing_size = 2000;
     },
     kSize},
    {"slicing to nothing is off", [](Settings s, Raw) { s.features.slicing = 1; }, kSize},
    {"full frames",
     [](Settings s, Raw) {
       s.features.slicing = 1;
       s.features.slicing_size = 40;
       s.full_frames = true;
     },
     kSize},
    {"with check sequence", [](Settings s, Raw) { s.features.keepcrc32 = 1; }, kSize + 4,
     kSize + 4},
    {"sliced within the check sequence",
     [](Settings s, Raw) {
       s.features.keepcrc32 = s.features.slicing = 1;
       s.features.slicing_size = kSize + 2;
     },
     kSize + 2, kSize + 4},
    {"sliced before the check sequence",
     [](Settings s, Raw) {
       s.features.keepcrc32 = s.features.slicing = 1;
       s.features.slicing_size = 50;
     },
     50, kSize + 4},
    {"cut by the source: no check sequence",
     [](Settings s, Raw f) {
       s.features.keepcrc32 = 1;
       f.length = 60;
     },
     60, kSize + 4},
    {"a filter without the capability",
     [](Settings s, Raw) {
       s.capabilities = 0;
       s.filter.enable = s.dpi.enabled = 1;
       s.filter.match_flags = 0xFE;
       s.dpi.mask = 0xFFFF;
       s.types = {};
     },
     kSize},
    {"a pattern without a demanded byte",
     [](Settings s, Raw) {
       s.dpi.enabled = 1;
       s.dpi.mask = 0xFFFF0000;
     },
     kSize},
};

PathSettings Everything() {
  PathSettings settings = {};
  settings.capabilities = kFilter | kPacketTypeFilter | kVlanFilter;
  memset(&settings.types, 1, sizeof settings.types);
  return settings;
}

TEST(FramePath, KeepsCutsAndCompletesFramesAsTheFeaturesSay) {
  const Bytes content = Content();
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    PathSettings settings = Everything();
    RawFrame frame = {content.data(), kSize, kSize, 0, true, false, 1234567890123456789};
    c.set(settings, frame);
    FramePath path(settings);
    KeptFrame kept = {};
    ASSERT_EQ(path.Process(frame, kept), c.length >= 0);
    if (c.length < 0) continue;
    ASSERT_EQ(kept.length, static_cast<uint32_t>(c.length));
    EXPECT_EQ(kept.wire_length, c.wire_length);
    EXPECT_EQ(kept.time_ns, frame.time_ns);
    EXPECT_EQ(kept.port, frame.port);
    EXPECT_EQ(memcmp(kept.bytes, content.data(), std::min(kept.length, kSize)), 0);
  }
}

TEST(FramePath, AppendsTheRightCheckSequenceOrAWrongOneAfterAnError) {
  const Bytes content = Content();
  PathSettings settings = Everything();
  settings.features.keepcrc32 = settings.features.transmitcrcerrors = 1;
  FramePath path(settings);
  for (const bool crc_ok : {true, false}) {
    KeptFrame kept = {};
    ASSERT_TRUE(path.Process({content.data(), kSize, kSize, 0, crc_ok, false, 0}, kept));
    EXPECT_EQ(Residue(kept.bytes, kept.length) == kGoodResidue, crc_ok);
  }
}

TEST(FramePath, CountsEveryFrameThatArrivesWhetherKeptOrNot) {
  const Bytes content = Content();
  PathSettings settings = Everything();
  settings.features.disableb = 1;
  settings.types.l2other = 0;
  CounterV2Config& counter = settings.counters[3];
  counter.ipv4 = counter.ipv6 = counter.bcast = counter.mcast = counter.ucast = -1;
  counter.icmp = counter.udp = counter.tcp = counter.hw_dropped = counter.size_mode = -1;
  counter.crc_ok = 0;
  counter.porta = counter.portb = counter.mode = 1;
  FramePath path(settings);
  KeptFrame kept = {};
  const struct {
    uint8_t port;
    bool crc_ok, hw_dropped;
  } frames[] = {{0, true, false}, {0, false, false}, {1, false, false}, {1, true, true}};
  for (const auto& f : frames) {
    EXPECT_FALSE(
        path.Process({content.data(), 40, kSize, f.port, f.crc_ok, f.hw_dropped, 0}, kept));
  }
  const PathCounts& counts = path.counts();
  EXPECT_EQ(counts.seen, 4U);
  EXPECT_EQ(counts.counters[3], 2 * (kSize + 4));  // bytes on the wire, of the two with an error
  EXPECT_EQ(counts.ports[0].valid_packets, 1U);
  EXPECT_EQ(counts.ports[0].crc_errors, 1U);
  EXPECT_EQ(counts.ports[1].hw_dropped, 1U);
  EXPECT_EQ(counts.ports[1].total_bytes, 2 * (kSize + 4));
}

// The pattern is found at every place, in frames of every length around the blocks that are looked
// at together, and not when one demanded byte differs.
TEST(FramePath, FindsAPatternAtEveryPlace) {
  for (const uint32_t mask : {0xFFFFU, 0x0001U, 0x8000U, 0x0FF0U, 0xA005U}) {
    DpiFilterRecord record = {.enabled = 1, .mask = mask};
    for (uint8_t i = 0; i < 16; ++i) record.data[i] = i % 5 == 0 ? 0 : static_cast<uint8_t>(65 + i);
    const DpiFilter filter(record, kFilter);
    for (size_t length = 16; length < 56; ++length) {
      for (size_t at = 0; at + 16 <= length; ++at) {
        Bytes bytes(length, 0xEE);
        for (size_t i = 0; i < 16; ++i) {
          if ((mask >> i & 1) != 0) bytes[at + i] = record.data[i];
        }
        ASSERT_TRUE(filter.Keeps(bytes.data(), length)) << mask << " " << length << " " << at;
        bytes[at + static_cast<size_t>(__builtin_ctz(mask))] ^= 1;
        ASSERT_FALSE(filter.Keeps(bytes.data(), length)) << mask << " " << length << " " << at;
      }
    }
  }
}

}  // namespace
