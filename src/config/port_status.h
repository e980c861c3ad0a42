// The state of copper ports.
#pragma once

#include "line/node.h"

namespace corvane {

int PortStatus(const CommandNode& leaf);

}  // namespace corvane
