// The commands that tell which devices there are and what they are.
#pragma once

#include "line/node.h"

namespace corvane {

int ListDevices(const CommandNode& leaf);
int CapabilitiesShow(const CommandNode& leaf);
int CapabilitiesLegend(const CommandNode& leaf);
int Version(const CommandNode& leaf);

}  // namespace corvane
