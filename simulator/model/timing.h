// The timing board: what steers the clock of the time stamps, and what they are.
#pragma once

#include "model/call.h"
#include "tap/frame_path.h"

namespace simulator {

// What the clock of the time stamps holds on to.
struct Reference {
  bool is_there = false;  // pulses from a GPS receiver with a fix, or from outside
  bool steers = false;    // it is there, and the clock follows it
  uint32_t source = 0;    // of the time, like timestamp_source; CORVANE_TIME_NONE: it waits for one
};

Reference CurrentReference(Call& call);

// The receiver alone: its fix is what its satellites allow.
TimingStatusRecord CurrentReceiver(Call& call);

// The board may lack its GPS module: then it has nothing to say.
bool HasModule(const TimingStatusRecord& receiver);

TimingStatusRecord CurrentTimingStatus(Call& call);

// How the frames of a capture get their time stamps.
Stamping CurrentStamping(Call& call);

}  // namespace simulator
