// The frames that arrive at one port, in the order of their times: what the three kinds of sources
// have in common.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>

#include "tap/frame.h"

namespace simulator {

enum class Supply : uint8_t {
  kFrame,  // there is one
  kLater,  // none yet
  kEnded,  // there will be none any more
  kFailed  // nor will there be, for a reason
};

// Takes a frame, which it may change; returns false when no more are wanted.
using TakeFrame = std::function<bool(RawFrame& frame)>;

// When a source runs.
struct StreamClock {
  int64_t start_ns;
  int64_t end_ns = std::numeric_limits<int64_t>::max();  // frames of later times do not count
};

// Frames that a port lost because they were not fetched in time.
struct LostFrames {
  uint64_t frames;
  uint64_t bytes;
};

// The time of frame number index at so many per second: in two steps, for a product of the whole
// would not fit.
constexpr int64_t TimeOfFrame(int64_t start_ns, uint64_t index, int64_t rate) {
  constexpr uint64_t kSecond = 1'000'000'000;
  const auto per_second = static_cast<uint64_t>(rate);
  return start_ns + static_cast<int64_t>(index / per_second * kSecond +
                                         index % per_second * kSecond / per_second);
}

}  // namespace simulator
