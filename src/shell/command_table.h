// The whole command line of the utility: every word, parameter and help text.
#pragma once

#include "shell/command_tree.h"

// Builds the tree (once a process) and returns its root. The tree lives until the process ends.
const CommandNode& BuildCommandTree();
