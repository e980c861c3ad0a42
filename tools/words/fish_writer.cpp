#include "writers.h"

namespace words {

namespace {

std::string Quote(const std::string& text) {
  return "'" + Escape(text, "'\\", "\\") + "'";
}

std::string ValuesOf(const Option& option) {
  switch (option.values) {
    case Values::kNone:
      return "";
    case Values::kFree:
      return " -x";
    case Values::kAlternatives:
      return " -x -a " + Quote(Join(option.alternatives, " "));
    case Values::kFile:
      return " -r -F";
    case Values::kFolder:
      return " -x -a '(__fish_complete_directories)'";
    case Values::kDevice:
      return " -x -a '(__corvane_devices)'";
    case Values::kDeviceOrAll:
      return " -x -a 'all (__corvane_devices)'";
  }
  return "";
}

void WriteWord(FILE* out, const std::string& path, const std::string& word,
               const std::string& description) {
  const std::string condition = "__corvane_at " + path;
  fprintf(out, "complete -c corvane -n %s -a %s -d %s\n", Quote(condition).c_str(), word.c_str(),
          Quote(description).c_str());
}

void WriteOption(FILE* out, const std::string& path, const Option& option) {
  const char* test = option.values == Values::kNone ? "__corvane_lacks" : "__corvane_lacks_value";
  const std::string short_option = option.short_name.empty() ? "" : "-" + option.short_name;
  const std::string condition =
      Join({test, "--" + option.long_name, "'" + short_option + "'", path}, " ");
  const std::string letter = option.short_name.empty() ? "" : " -s " + option.short_name;
  fprintf(out, "complete -c corvane -n %s%s -l %s%s -d %s\n", Quote(condition).c_str(),
          letter.c_str(), option.long_name.c_str(), ValuesOf(option).c_str(),
          Quote(option.help).c_str());
}

}  // namespace

void WriteFishCommands(FILE* out, const Command& root) {
  for (const Command* command : AllCommands(root)) {
    const std::string path = Join(command->path, " ");
    for (const Command& child : command->children) {
      WriteWord(out, path, child.path.back(), child.description);
    }
    if (!command->children.empty()) WriteWord(out, path, "help", "Explain this command");
    for (const Option& option : command->options) WriteOption(out, path, option);
  }
}

}  // namespace words
