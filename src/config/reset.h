// Restarting a device.
#pragma once

#include "line/node.h"

namespace corvane {

int Reset(const CommandNode& leaf);

}  // namespace corvane
