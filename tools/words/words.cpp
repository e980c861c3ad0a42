#include "words.h"

#include <argtable3.h>

#include <cstring>

#include "shell/command_table.h"

using namespace corvane;

namespace words {

namespace {

std::string OneLine(const char* text) {
  std::string line;
  for (const char* c = text == nullptr ? "" : text; *c != '\0'; ++c) {
    if (!isspace(static_cast<unsigned char>(*c))) {
      line += *c;
    } else if (!line.empty() && line.back() != ' ') {
      line += ' ';
    }
  }
  while (line.ends_with(' ')) line.pop_back();
  return line;
}

std::string WithoutBrackets(const char* datatype) {
  std::string text = datatype == nullptr ? "" : datatype;
  if (text.starts_with('<') && text.ends_with('>')) text = text.substr(1, text.size() - 2);
  return text;
}

// The tree does not say what kind of value an option takes; only its datatype shows it.
Values ValuesOf(const std::string& key, const std::string& datatype) {
  if (datatype.empty()) return Values::kNone;
  if (key == "device") return datatype.ends_with("|all") ? Values::kDeviceOrAll : Values::kDevice;
  if (datatype.ends_with("_file")) return Values::kFile;
  if (datatype.ends_with("_dir")) return Values::kFolder;
  return datatype.find('|') == std::string::npos ? Values::kFree : Values::kAlternatives;
}

Option MakeOption(const NamedArg& parameter) {
  const auto& header = *static_cast<const arg_hdr*>(parameter.arg);
  Option option = {.short_name = header.shortopts == nullptr ? "" : header.shortopts,
                   .long_name = header.longopts,
                   .datatype = WithoutBrackets(header.datatype),
                   .help = OneLine(header.glossary),
                   .values = Values::kNone,
                   .alternatives = {},
                   .required = header.mincount > 0};
  option.values = ValuesOf(parameter.key, option.datatype);
  if (option.values == Values::kAlternatives) option.alternatives = SplitAt(option.datatype, '|');
  return option;
}

Command MakeCommand(const CommandNode& node, std::vector<std::string> path) {
  Command command = {path, node.description, {}, {}};
  for (const CommandNode* child : node.children) {
    path.push_back(child->name);
    command.children.push_back(MakeCommand(*child, path));
    path.pop_back();
  }
  for (const NamedArg* parameter : node.params) command.options.push_back(MakeOption(*parameter));
  return command;
}

}  // namespace

Command CollectCommands() {
  return MakeCommand(BuildCommandTree(), {});
}

std::vector<const Command*> AllCommands(const Command& command) {
  std::vector<const Command*> all = {&command};
  for (const Command& child : command.children) {
    const auto below = AllCommands(child);
    all.insert(all.end(), below.begin(), below.end());
  }
  return all;
}

std::vector<const Command*> Leaves(const Command& command) {
  auto commands = AllCommands(command);
  std::erase_if(commands, [](const Command* each) { return !each->children.empty(); });
  return commands;
}

std::vector<std::string> SplitAt(const std::string& text, char separator) {
  std::vector<std::string> parts(1);
  for (const char c : text) {
    if (c == separator) {
      parts.emplace_back();
    } else {
      parts.back() += c;
    }
  }
  return parts;
}

std::string Join(const std::vector<std::string>& words, const char* separator) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : separator) + word;
  return text;
}

std::string Escape(const std::string& text, const char* special, const char* escape) {
  std::string escaped;
  for (const char c : text) {
    if (strchr(special, c) != nullptr) escaped += escape;
    escaped += c;
  }
  return escaped;
}

}  // namespace words
