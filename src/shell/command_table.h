// The tree of all commands: which words, in which order, with which parameters and handlers.
#pragma once

#include "line/node.h"

namespace corvane {

// Builds the tree, once a process, and returns its root. It lives until the process ends.
const CommandNode& BuildCommandTree();

}  // namespace corvane
