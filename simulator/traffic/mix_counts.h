// What the first frames of the repeating traffic add up to.
#pragma once

#include <functional>

#include "device/corvane_api.h"
#include "traffic/mix.h"

namespace simulator {

// How many frames have arrived after that time at that rate (frames per second). A negative time
// counts as none.
uint64_t FramesAfter(int64_t elapsed_ms, int64_t rate);

struct Tally {
  uint64_t frames = 0;
  uint64_t bytes = 0;
};

// Counts those of the first so many frames of the repeating cycle that match.
Tally CountFrames(Cycle cycle, uint64_t frames, const std::function<bool(const Frame&)>& matches);

// True when the conditions of the counter, the one on the port among them, all hold for the frame.
bool CounterMatches(const CounterV2Config& counter, const Frame& frame);

// What the counter shows after the first so many frames: packets or bytes, as its mode says.
uint64_t CounterValue(Cycle cycle, uint64_t frames, const CounterV2Config& counter);

// The counters of a port after the first so many frames, as RFC 2819 defines them (etherStats
// group): a jabber is longer than 1518 bytes and has a bad CRC, a CRC error is not and has. The
// traffic is full duplex: there are no collisions.
PortStatistics CountPort(Cycle cycle, uint64_t frames, uint8_t port);

}  // namespace simulator
