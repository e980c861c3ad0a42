// The nodes of the command line's tree and the getters through which handlers read their
// parameters.
//
// The tree is built once, dispatched once and left to process exit; nothing in it is ever freed.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "line/parameter.h"

namespace corvane {

struct CommandNode;

// Runs one leaf command. Gets the leaf, from which it reads its parameters; returns the exit
// status.
using Handler = int (*)(const CommandNode& leaf);

// One parameter of a leaf: its key and its argtable3 object, which is not owned.
struct NamedArg {
  std::string key;
  void* arg;
};

using Children = std::vector<const CommandNode*>;
using NamedArgs = std::vector<const NamedArg*>;

// A branch has children; a leaf has a handler and, unless it takes no parameters, params.
struct CommandNode {
  std::string name;  // empty for the root
  std::string description;
  Children children;
  NamedArgs params;
  std::unique_ptr<void*[]> argtable;  // the params' objects in order, then an end marker
  Handler handler;                    // null for a branch
};

// The node; null when name is null. A null description reads as "".
const CommandNode* MakeNode(const char* name, const char* description, Children children,
                            NamedArgs params, Handler handler);

// The pair; null when key or arg is null.
const NamedArg* MakeNamedArg(const char* key, void* arg);

// The pair of a row, whose texts must outlive it.
const NamedArg* MakeParameter(const ParameterSpec& row);

// argtable3 objects of an on/off switch, optional or mandatory. The values are accepted in either
// case. The texts must outlive the object.
void* OptionalSwitch(const char* short_option, const char* long_option, const char* glossary);
void* MandatorySwitch(const char* short_option, const char* long_option, const char* glossary);

// The leaf's parameter of exactly that key, the first in order; null when there is none.
const NamedArg* FindParameter(const CommandNode& leaf, const char* key);

// ---- Getters. Each but TextOr exists for (leaf, key) and for a NamedArg. A key that the leaf does
// not have reads like a parameter that was not given.

bool IsGiven(const CommandNode& leaf, const char* key);
bool IsGiven(const NamedArg& parameter);

// How often the parameter occurred.
int Count(const CommandNode& leaf, const char* key);
int Count(const NamedArg& parameter);

// The first value of an integer or a real parameter; fallback when it was not given.
int Integer(const CommandNode& leaf, const char* key, int fallback);
int Integer(const NamedArg& parameter, int fallback);
double Real(const CommandNode& leaf, const char* key, double fallback);
double Real(const NamedArg& parameter, double fallback);

// A copy of the first value of a text, pattern or file parameter, else of fallback; nothing when it
// was not given and fallback is null.
std::optional<std::string> Text(const CommandNode& leaf, const char* key, const char* fallback);
std::optional<std::string> Text(const NamedArg& parameter, const char* fallback);

// The same where there is always something: fallback is not null.
std::string TextOr(const CommandNode& leaf, const char* key, const char* fallback);

// A switch: 1 for on, 0 for off (in either case), kNotGiven otherwise.
inline constexpr int kNotGiven = -1;
int OnOff(const CommandNode& leaf, const char* key);
int OnOff(const NamedArg& parameter);

}  // namespace corvane
