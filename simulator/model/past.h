// What has come in at a device's ports since it started, and since when its time stamps run free.
// Between two changes of the device all of it follows from the time, so only changes are stored.
#pragma once

#include "model/call.h"
#include "traffic/mix_counts.h"

namespace simulator {

// What decides about the pace.
struct Present {
  int64_t rates[CORVANE_PORTS] = {};  // frames of the whole mix per second, as far as a port goes
  bool passes = false;                // the frames of each port leave by the other one
  bool all_up = false;                // every port has a link
  bool steered = false;               // a reference steers the time stamps
  bool operator==(const Present&) const = default;
};

struct Past {
  int64_t when_ms = 0;        // up to this time of the host's clock
  int64_t all_up_ms = 0;      // for how long every port had a link
  MixFrames frames;           // of the built-in mix
  int64_t free_since_ms = 0;  // when_ms while the time stamps are steered
};

Present PresentOf(Call& call);

// The past up to that time of a device that has been what it is now since its last change.
Past PastUpTo(Call& call, int64_t now_ms);

// To be called before a change that may change the present, and after it with what the call before
// has returned.
struct BeforeChange {
  Present present;
  Past past;
};
BeforeChange LookBack(Call& call, int64_t now_ms);
void NoteChange(Call& call, const BeforeChange& before);

// The clock was set: its error grows from 0 again.
void NoteClockSet(Call& call);

}  // namespace simulator
