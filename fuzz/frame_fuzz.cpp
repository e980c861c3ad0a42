// Any bytes as a frame, through the parser and the whole frame path. The first bytes say how the
// path is set up; so the filters meet frames that were made for them.
#include <cstdint>
#include <cstring>
#include <numeric>
#include <vector>

#include "device/capabilities.h"
#include "require.h"
#include "tap/frame_path.h"

using namespace simulator;

namespace {

constexpr size_t kSetup = 64;

// The path checks its records by itself: any bytes do for them too.
PathSettings SettingsOf(const uint8_t* setup) {
  PathSettings settings = {};
  memcpy(&settings.filter.match_flags, setup, 40);
  memcpy(settings.dpi.data, setup + 8, sizeof settings.dpi.data);
  memcpy(&settings.dpi.mask, setup + 40, sizeof settings.dpi.mask);
  memcpy(&settings.types, setup + 30, sizeof settings.types);
  for (size_t i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    memcpy(&settings.counters[i], setup + i, kSetup - CORVANE_COUNTERS_V2);
    settings.counters[i].porta = 1;
  }
  settings.filter.enable = setup[44] & 1;
  settings.dpi.enabled = setup[44] >> 1 & 1;
  settings.features.keepcrc32 = setup[44] >> 2 & 1;
  settings.features.transmitcrcerrors = setup[44] >> 3 & 1;
  settings.features.slicing = setup[44] >> 4 & 1;
  settings.features.slicing_size = setup[45];
  settings.full_frames = (setup[44] >> 5 & 1) != 0;
  settings.capabilities =
      (setup[44] & 0x40) != 0
          ? CORVANE_CAP_FILTER | CORVANE_CAP_PACKET_TYPE_FILTER | CORVANE_CAP_VLAN_FILTER
          : 0;
  return settings;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < kSetup) return 0;
  // A copy of exactly the frame's size: reading past its end is seen.
  const std::vector<uint8_t> bytes(data + kSetup, data + size);
  const auto length = static_cast<uint32_t>(bytes.size());
  const RawFrame frame = {bytes.data(),        length, length + data[46], 0,
                          (data[47] & 1) != 0, false,  int64_t{1}};
  const FrameFacts facts = ParseFrame(frame);
  Require(facts.vlan_count <= kMaxVlanTags && (!facts.has_tcp || facts.has_ports));

  const PathSettings settings = SettingsOf(data);
  FramePath path(settings);
  KeptFrame kept = {};
  const bool keeps = path.Process(frame, kept);
  Require(path.counts().seen == 1);
  if (!keeps) return 0;
  Require(kept.length <= length + 4 && kept.wire_length >= kept.length);
  Require(std::accumulate(kept.bytes, kept.bytes + kept.length, 0U) <= 255 * kept.length);
  return 0;
}
