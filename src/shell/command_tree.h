// The tree of command words: its records, the getters through which handlers read their parameters,
// the dispatcher and the usage text.
//
// The tree is built once, dispatched once and left to process exit; nothing in it is ever freed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

struct CommandNode;

// Runs one leaf command. Gets the leaf, from which it reads its parameters; returns the exit
// status.
using Handler = int (*)(const CommandNode& leaf);

// One parameter of a leaf: the key that handlers look it up by (often, but not always, its long
// option) and its argtable3 object, which is not owned.
struct NamedArg {
  const char* key;  // owned
  void* arg;
};

// A branch has children; a leaf has a handler and, unless it takes no parameters, params.
struct CommandNode {
  const char* name;                    // owned; empty for the root
  const char* description;             // owned; empty for none
  const CommandNode* const* children;  // null-terminated, referenced; null for a leaf
  const NamedArg* const* params;       // null-terminated, referenced; null for none
  void** argtable;                     // the params' objects in order, then an end marker; owned
  Handler handler;                     // null for a branch
};

// Memory for the tree: zeroed, aligned for pointers, never freed. Small pieces share a block.
void* KeptMemory(size_t size);

// A null-terminated array of count pointers to fill in.
template <class Pointer>
Pointer* KeptPointers(size_t count) {
  return static_cast<Pointer*>(KeptMemory((count + 1) * sizeof(void*)));
}

// The node, with copies of its texts; null when name is null. A null description reads as "".
CommandNode* MakeNode(const char* name, const char* description, const CommandNode* const* children,
                      const NamedArg* const* params, Handler handler);

// The pair, with a copy of the key; null when key or arg is null.
NamedArg* MakeNamedArg(const char* key, void* arg);

// argtable3 objects of an on/off switch, optional or mandatory. The values are accepted in either
// case. The texts must outlive the object.
void* OptionalSwitch(const char* short_option, const char* long_option, const char* glossary);
void* MandatorySwitch(const char* short_option, const char* long_option, const char* glossary);

// ---- Getters. Each exists for (leaf, key) and for a NamedArg. A key that the leaf does not have
// reads like a parameter that was not given.

// The leaf's parameter of exactly that key, the first in order; null when there is none.
const NamedArg* FindParameter(const CommandNode& leaf, const char* key);

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

// Stores 1 in the field for on, 0 for off; a switch that was not given leaves the field alone.
template <class Field>
void ApplySwitch(const CommandNode& leaf, const char* key, Field& field) {
  const int value = OnOff(leaf, key);
  if (value != kNotGiven) field = static_cast<Field>(value);
}

// ---- Walking the tree.

// Prints the help of one node, reached by the command path; returns 0.
int PrintUsage(const CommandNode& node, const std::string& path);

// Walks down from node by the words after argv[0] (the word that selected node), parses the leaf's
// parameters and runs its handler. Returns the handler's status; 0 for help; -1 with the usage
// printed for an unknown or missing word and for any error in the parameters.
int Dispatch(const CommandNode& node, int argc, char** argv, const std::string& prefix);
