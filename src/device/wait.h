// The one way in which the program waits.
#pragma once

#include <cstdint>

namespace corvane {

// Flushes standard output, then sleeps through the device library: on a terminal, in a pipe or in a
// log everything shows when it happens.
void Wait(uint32_t milliseconds);

}  // namespace corvane
