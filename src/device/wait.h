// The one way in which the program waits.
#pragma once

#include <cstdint>

namespace corvane {

// Flushes standard output, then sleeps through the device library: whoever watches a terminal, a
// pipe or a log sees what was printed before the wait when it happened.
void Wait(uint32_t milliseconds);

}  // namespace corvane
