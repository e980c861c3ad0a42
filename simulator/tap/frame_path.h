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

// The device's time stamps are the host's time, plus the offset, plus what the clock has gone wrong
// since it runs free, plus what depends on the port.
struct Stamping {
  int64_t offset_ns;
  int64_t free_since_ns;  // 0 while the clock is steered
  int64_t port_ns[CORVANE_PORTS];
  int64_t by_host;  // 1: the device gives none, and the times are the host's
};

struct PathSettings {
  FeaturesRecord features;
  PacketFilterRecord filter;
  PacketTypeFilterRecord types;
  DpiFilterRecord dpi;
  CounterV2Config counters[CORVANE_COUNTERS_V2];
  uint32_t capabilities;  // bits of device/capabilities.h
  bool full_frames;       // overrides slicing
  bool passes;            // inline: the frames of each port leave by the other one
  bool loops;             // each frame leaves by the port where it came in, and comes in again
  // What the links carry, bits per second: 0 for one that is down.
  int64_t bits_per_second[CORVANE_PORTS];
  Stamping stamping;
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
  bool crc_error = false;
};

// The stages:
//   1. frames with a CRC error are kept only with transmitcrcerrors; frames that the hardware drops
//      never are
//   2. packet filter, 3. packet type filter, 4. DPI filter
//   5. counters: of every frame, kept or not
//   6. slicing to slicing_size bytes, frame check sequence included
//   7. with keepcrc32 the frame check sequence follows the frame: what the source has of it, else
//      the right one (IEEE 802.3, 3.2.9), or a wrong one after a CRC error. None of it, or a part,
//      is left when the source cut the frame off or slicing does.
//   8. the time stamp; when the device gives none, the host's in whole microseconds
// A switch of the features is on when it is 1.
class FramePath {
 public:
  // counts: of frames that came before, to which those of this path are added.
  explicit FramePath(const PathSettings& settings, const PathCounts& counts = {});

  // True when the frame comes in at its port: the link is up and can carry it. A link does not
  // queue for longer than 100 ms.
  bool Arrives(const RawFrame& frame);

  // Takes one frame, of port 0 or 1, through the stages. True when it is kept; then kept is filled.
  bool Process(const RawFrame& frame, KeptFrame& kept);

  PathCounts counts() const;

 private:
  bool Keeps(const RawFrame& frame, const FrameFacts& facts) const;
  void Count(const RawFrame& frame, const FrameFacts& facts);
  uint32_t Slice(uint32_t length) const;
  int64_t Stamp(const RawFrame& frame) const;
  void AppendCrc(const RawFrame& frame, KeptFrame& kept);

  // A link: how long a byte takes and until when it is busy. The fastest takes whatever comes.
  struct Wire {
    bool up;
    double ns_a_byte;
    double free_ns;
  };

  Wire wires_[CORVANE_PORTS];
  bool passes_;
  Stamping stamping_;
  bool keeps_crc_errors_;
  bool keeps_crc_;
  uint32_t slice_;  // bytes that are kept at most
  PacketFilter packet_filter_;
  uint32_t dropped_types_;
  DpiFilter dpi_;
  CounterBank counters_;
  bool needs_facts_;               // a filter or counter needs the frame's headers
  PathCounts counts_;              // without what the configurable counters have counted here
  std::vector<uint8_t> with_crc_;  // the kept frame with its frame check sequence
};

}  // namespace simulator
