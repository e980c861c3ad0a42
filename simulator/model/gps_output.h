// What the GPS receiver says. Each process has a buffer of its own, which fills from its flush on,
// or else from its first read.
#pragma once

#include "model/call.h"

namespace simulator {

// Drops what is unread.
void FlushGpsOutput(const Call& call);

// Copies what there is to read, at most the capacity, and returns the count that the library
// claims.
int32_t ReadGpsOutput(Call& call, char* buffer, size_t capacity);

}  // namespace simulator
