// The frames that arrive at one port, in the order of their times.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "tap/frame.h"

namespace simulator {

enum class Supply : uint8_t {
  kFrame,  // there is one
  kLater,  // none yet
  kEnded,  // there will be no more
  kFailed  // there will be none, for a reason
};

// Takes a frame, which it may change; returns false when no more are wanted.
using TakeFrame = std::function<bool(RawFrame& frame)>;

inline constexpr int64_t kNeverNs = std::numeric_limits<int64_t>::max();

// Frames that a port lost because they were not fetched in time.
struct LostFrames {
  uint64_t frames;
  uint64_t bytes;
};

// This one is the stream of a port without frames.
class PortStream {
 public:
  virtual ~PortStream() = default;

  // The next frame, when it is due; its bytes stay until the next call. Frames of times after
  // end_ns do not count.
  virtual Supply Next(int64_t /*now_ns*/, int64_t /*end_ns*/, RawFrame& /*frame*/) {
    return Supply::kEnded;
  }
  // The time of the next frame; kNeverNs when only the stream's descriptor can tell.
  virtual int64_t due_ns() const { return kNeverNs; }
  // Readable when a frame is there; -1 for none.
  virtual int descriptor() const { return -1; }
  // A frame that has arrived is there after this time at most.
  virtual int64_t delay_ns() const { return 0; }
  // The clock was set: times to come are later by that much.
  virtual void Shift(int64_t /*by_ns*/) {}
  // True when the frames have times of their own, not those of their arrival.
  virtual bool keeps_times() const { return false; }
  // Frames that were not fetched in time.
  virtual LostFrames lost() { return {}; }
  // Bytes of frames that are known to be due and not yet fetched.
  virtual uint64_t waiting(int64_t /*now_ns*/) const { return 0; }
  virtual std::string reason() const { return {}; }  // of Supply::kFailed
};

// The time of frame number index at that rate (frames per second): in two steps, for the product of
// the whole would not fit.
constexpr int64_t TimeOfFrame(int64_t start_ns, uint64_t index, int64_t rate) {
  constexpr uint64_t kSecond = 1'000'000'000;
  const auto per_second = static_cast<uint64_t>(rate);
  return start_ns + static_cast<int64_t>(index / per_second * kSecond +
                                         index % per_second * kSecond / per_second);
}

}  // namespace simulator
