// Counts over the repeating traffic.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"
#include "traffic/mix.h"

namespace simulator {

// How many frames have arrived after that time at that rate (frames per second); none after a
// negative time.
uint64_t FramesAfter(int64_t elapsed_ms, int64_t rate);

// How far the mix has come: frames of the whole mix. A frame that came in at a port is counted
// there, and also at the other port when it left by that one.
struct MixFrames {
  uint64_t arrived[CORVANE_PORTS] = {};
  uint64_t passed[CORVANE_PORTS] = {};  // of those that arrived at the port, through the other one
};

// The frames of the whole mix per second of which a link can carry the port's part: preamble and
// gap (20 bytes, IEEE 802.3) included.
int64_t MixRateAt(Cycle cycle, uint8_t port, int64_t bits_per_second);

// What the counter shows: packets or bytes, as its mode says.
uint64_t CounterValue(Cycle cycle, const MixFrames& frames, const CounterV2Config& counter);

// The counters of a port (CountAtPort in tap/frame_counters.h).
PortStatistics CountPort(Cycle cycle, const MixFrames& frames, uint8_t port);

}  // namespace simulator
