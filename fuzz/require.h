// What must hold for every input, whatever it is.
#pragma once

#include <cstdlib>

// Ends the fuzzer, which keeps the input.
inline void Require(bool holds) {
  if (!holds) abort();
}
