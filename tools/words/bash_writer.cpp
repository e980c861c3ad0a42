#include "writers.h"

namespace words {

namespace {

const char* KindOf(const Option& option) {
  switch (option.values) {
    case Values::kNone:
      return "";
    case Values::kFree:
    case Values::kAlternatives:
      return "%words";
    case Values::kFile:
      return "%file";
    case Values::kFolder:
      return "%dir";
    case Values::kDevice:
      return "%device";
    case Values::kDeviceOrAll:
      return "%device all";
  }
  return "";
}

std::string WordsOf(const Command& command) {
  std::vector<std::string> words;
  for (const Command& child : command.children) words.push_back(child.path.back());
  if (!words.empty()) words.emplace_back("help");
  return Join(words, " ");
}

std::string OptionsOf(const Command& command) {
  std::vector<std::string> options;
  for (const Option& option : command.options) options.push_back("--" + option.long_name);
  return Join(options, " ");
}

// Gives the long name of a short option, under which everything else is found.
void WriteShortName(FILE* out, const std::string& path, const Option& option) {
  if (option.short_name.empty()) return;
  fprintf(out, "    '%s -%s') long='--%s' ;;\n", path.c_str(), option.short_name.c_str(),
          option.long_name.c_str());
}

}  // namespace

void WriteBashWords(FILE* out, const Command& root) {
  for (const Command* command : AllCommands(root)) {
    fprintf(out, "    '%s') commands='%s' options='%s' ;;\n", Join(command->path, " ").c_str(),
            WordsOf(*command).c_str(), OptionsOf(*command).c_str());
  }
}

void WriteBashValues(FILE* out, const Command& root) {
  for (const Command* leaf : Leaves(root)) {
    const std::string path = Join(leaf->path, " ");
    for (const Option& option : leaf->options) {
      WriteShortName(out, path, option);
      if (option.values == Values::kNone) continue;
      fprintf(out, "    '%s --%s') values='%s %s' ;;\n", path.c_str(), option.long_name.c_str(),
              KindOf(option), Join(option.alternatives, " ").c_str());
    }
  }
}

}  // namespace words
