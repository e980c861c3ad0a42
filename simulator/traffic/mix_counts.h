// Counts over the repeating traffic. frames says how many frames have arrived since its start.
#pragma once

#include <functional>

#include "device/corvane_api.h"
#include "traffic/mix.h"

namespace simulator {

// How many frames have arrived after that time at that rate (frames per second); none after a
// negative time.
uint64_t FramesAfter(int64_t elapsed_ms, int64_t rate);

struct Tally {
  uint64_t frames = 0;
  uint64_t bytes = 0;
};

// The frames that match, and their bytes.
Tally CountFrames(Cycle cycle, uint64_t frames, const std::function<bool(const Frame&)>& matches);

// True when the conditions of the counter, the one on the port among them, all hold for the frame.
bool CounterMatches(const CounterV2Config& counter, const Frame& frame);

// What the counter shows: packets or bytes, as its mode says.
uint64_t CounterValue(Cycle cycle, uint64_t frames, const CounterV2Config& counter);

// The counters of a port (CountAtPort in tap/frame_counters.h).
PortStatistics CountPort(Cycle cycle, uint64_t frames, uint8_t port);

}  // namespace simulator
