// Walking the tree of commands.
#pragma once

#include <string>

#include "line/node.h"

namespace corvane {

// Prints the help of one node, reached by the command path; returns 0.
int PrintUsage(const CommandNode& node, const std::string& path);

// Walks down from node by the words after argv[0] (the word that selected node), parses the leaf's
// parameters and runs its handler. Returns the handler's status; 0 for help; -1 with the usage
// printed for an unknown or missing word and for any error in the parameters.
int Dispatch(const CommandNode& node, int argc, char** argv, const std::string& prefix);

}  // namespace corvane
