// What is known of SFP modules: identification, diagnostics, alarms.
#pragma once

#include "line/node.h"

namespace corvane {

int SfpStatus(const CommandNode& leaf);

}  // namespace corvane
