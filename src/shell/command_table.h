// The whole command line of the utility: every word, parameter and help text.
#pragma once

#include "shell/command_tree.h"

// Builds the tree, once a process, and returns its root. It lives until the process ends.
const CommandNode& BuildCommandTree();

// The same for one run: words (null-terminated) follow the program's name on its command line. What
// they do not lead to has name and description but nothing below and no parameters, as making the
// parameters of every command would cost a run more than the one that it is for.
const CommandNode& BuildCommandTree(const char* const* words);
