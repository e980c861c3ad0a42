// Power over Ethernet.
#pragma once

#include "line/node.h"

namespace corvane {

int PoeShow(const CommandNode& leaf);

}  // namespace corvane
