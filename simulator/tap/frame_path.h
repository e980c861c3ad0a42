// The way of a frame through the device, from the port to the capture: stages in a fixed order, set
// up by the device's configuration. Allocates nothing per frame.
#pragma once

#include <cstdint>
#include <vector>

#include "device/corvane_api.h"
#include "tap/filters.h"
#include "tap/frame.h"
#include "tap/frame_counters.h"

namespace simulator {

struct PathSettings {
  FeaturesRecord features;
  PacketFilterRecord filter;
  PacketTypeFilterRecord types;
  DpiFilterRecord dpi;
  CounterV2Config counters[CORVANE_COUNTERS_V2];
  uint32_t capabilities;  // bits of device/capabilities.h
  bool full_frames;       // overrides slicing
};

struct PathCounts {
  uint64_t counters[CORVANE_COUNTERS_V2];
  PortStatistics ports[CORVANE_PORTS];
  uint64_t seen;  // all frames that Process was given
};

struct KeptFrame {
  const uint8_t* bytes;  // valid until the next call of Process, at most as long as the raw frame's
  uint32_t length;       // bytes there
  uint32_t wire_length;  // bytes of the original frame, with the 4 CRC bytes when they are kept
  uint8_t port;
  int64_t time_ns;
};

// The stages:
//   1. a disabled port keeps nothing
//   2. frames with a CRC error are kept only with transmitcrcerrors; frames that the hardware drops
//      never are
//   3. packet filter, 4. packet type filter, 5. DPI filter
//   6. counters: of every frame, kept or not
//   7. slicing to slicing_size bytes, frame check sequence included
//   8. with keepcrc32 the frame check sequence follows the frame (IEEE 802.3, 3.2.9), a wrong one
//      after a CRC error. None of it, or a part, is left when the source cut the frame off or
//      slicing does.
//   9. the time stamp
// A switch of the features is on when it is 1.
class FramePath {
 public:
  explicit FramePath(const PathSettings& settings);

  // Takes one frame, of port 0 or 1, through the stages. True when it is kept; then kept is filled.
  bool Process(const RawFrame& frame, KeptFrame& kept);

  PathCounts counts() const;

 private:
  bool PortKeeps(const RawFrame& frame) const;
  bool CrcKeeps(const RawFrame& frame) const;
  bool TypesKeep(const FrameFacts& facts) const;
  bool FiltersKeep(const RawFrame& frame, const FrameFacts& facts) const;
  void Count(const RawFrame& frame, const FrameFacts& facts);
  uint32_t Slice(uint32_t length) const;
  void AppendCrc(const RawFrame& frame, KeptFrame& kept);

  bool port_disabled_[CORVANE_PORTS];
  bool keeps_crc_errors_;
  bool keeps_crc_;
  uint32_t slice_;  // bytes that are kept at most
  PacketFilter packet_filter_;
  uint32_t dropped_types_;
  DpiFilter dpi_;
  CounterBank counters_;
  bool needs_facts_;               // a filter or counter needs the frame's headers
  PathCounts counts_ = {};         // without the configurable counters
  std::vector<uint8_t> with_crc_;  // the kept frame with its frame check sequence
};

}  // namespace simulator
