// The texts made from the words of the command line. Each function writes whole lines to `out`.
#pragma once

#include <cstdio>

#include "words.h"

namespace words {

// The manual page's commands with their parameters, and its table of exit statuses (mdoc).
void WriteManualCommands(FILE* out, const Command& root);
void WriteManualStatuses(FILE* out, const Command& root);

// The clauses of two bash "case" statements: "path) words/options", "path option) kind of value".
void WriteBashWords(FILE* out, const Command& root);
void WriteBashValues(FILE* out, const Command& root);

// One zsh completion function for each command.
void WriteZshFunctions(FILE* out, const Command& root);

// fish's "complete" commands.
void WriteFishCommands(FILE* out, const Command& root);

}  // namespace words
