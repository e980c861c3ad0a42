#include "writers.h"

namespace words {

namespace {

std::string Quote(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

// The part after the option's description: ":message:action".
std::string ActionOf(const Option& option) {
  std::string message = ":" + Escape(option.datatype, ":\\", "\\") + ":";
  switch (option.values) {
    case Values::kNone:
      return "";
    case Values::kFree:
      return message;
    case Values::kAlternatives:
      return message + "(" + Join(option.alternatives, " ") + ")";
    case Values::kFile:
      return message + "_files";
    case Values::kFolder:
      return message + "_files -/";
    case Values::kDevice:
      return message + "_corvane_devices";
    case Values::kDeviceOrAll:
      return message + "_corvane_devices all";
  }
  return "";
}

// _arguments does not offer an option twice, but with two names it must be told that they are one.
std::string SpecOf(const Option& option) {
  const bool valued = option.values != Values::kNone;
  const std::string text = "[" + Escape(option.help, "[]:\\", "\\") + "]" + ActionOf(option);
  const std::string name = "--" + option.long_name + (valued ? "=" : "");
  if (option.short_name.empty()) return Quote(name + text);
  const std::string letter = "-" + option.short_name;
  return "'(" + letter + " --" + option.long_name + ")'{" + letter + (valued ? "+" : "") + "," +
         name + "}" + Quote(text);
}

std::string FunctionOf(const Command& command) {
  std::vector<std::string> words = command.path;
  words.insert(words.begin(), "_corvane_command");
  return Join(words, "_");
}

void WriteBranch(FILE* out, const Command& branch) {
  fprintf(out, "  _corvane_branch %s", FunctionOf(branch).c_str());
  for (const Command& child : branch.children) {
    const std::string text = child.path.back() + ":" + Escape(child.description, ":\\", "\\");
    fprintf(out, " \\\n    %s", Quote(text).c_str());
  }
}

void WriteLeaf(FILE* out, const Command& leaf) {
  fputs(leaf.options.empty() ? "  _message 'no more arguments'" : "  _arguments", out);
  for (const Option& option : leaf.options) fprintf(out, " \\\n    %s", SpecOf(option).c_str());
}

}  // namespace

void WriteZshFunctions(FILE* out, const Command& root) {
  for (const Command* command : AllCommands(root)) {
    fprintf(out, "%s() {\n", FunctionOf(*command).c_str());
    (command->children.empty() ? WriteLeaf : WriteBranch)(out, *command);
    fputs("\n}\n", out);
  }
}

}  // namespace words
