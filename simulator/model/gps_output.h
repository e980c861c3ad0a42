// What the GPS receiver says. The device buffers it from the flush, or else the first read, of a
// process on; every process has a buffer of its own.
#pragma once

#include "model/call.h"

namespace simulator {

// Forgets what is unread.
void FlushGpsOutput(const Call& call);

// Copies what there is to read, at most the capacity, and returns the count to claim.
int32_t ReadGpsOutput(Call& call, char* buffer, size_t capacity);

}  // namespace simulator
