// The words of the command line for the writers of manual and completion: one record for each
// command, from the tree that the utility itself uses.
#pragma once

#include <string>
#include <vector>

namespace words {

enum class Values {
  kNone,          // a flag
  kFree,          // a number or a text
  kAlternatives,  // one of Option::alternatives
  kFile,
  kFolder,
  kDevice,      // an index or a MAC address
  kDeviceOrAll  // the same, or "all"
};

struct Option {
  std::string short_name;  // one letter, or empty
  std::string long_name;
  std::string datatype;  // without angle brackets
  std::string help;      // one line
  Values values;
  std::vector<std::string> alternatives;
  bool required;
};

// A branch has children, a leaf may have options.
struct Command {
  std::vector<std::string> path;  // empty for the utility itself
  std::string description;
  std::vector<Command> children;
  std::vector<Option> options;
};

// The whole tree.
Command CollectCommands();

// The leaves of the tree in its order.
std::vector<const Command*> Leaves(const Command& command);

// Every command of the tree, each before its children.
std::vector<const Command*> AllCommands(const Command& command);

// The parts of the text between separators: always one more than there are separators.
std::vector<std::string> SplitAt(const std::string& text, char separator);

// The words with the separator between them.
std::string Join(const std::vector<std::string>& words, const char* separator);

// The text with every occurrence of each character of `special` preceded by `escape`.
std::string Escape(const std::string& text, const char* special, const char* escape);

}  // namespace words
