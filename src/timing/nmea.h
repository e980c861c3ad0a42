// The GPS receiver's sentences.
#pragma once

#include "line/node.h"

namespace corvane {

int Nmea(const CommandNode& leaf);

}  // namespace corvane
