// Exit statuses and commands as mdoc(7).
#include <cctype>
#include <cstring>

#include "console/status.h"
#include "writers.h"

using namespace corvane;

namespace words {

namespace {

// Escapes literal text. A hyphen at the start of a word belongs to an option.
std::string Text(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    const bool starts_word = escaped.empty() || strchr(" -'(", escaped.back()) != nullptr;
    if (c == '\\') {
      escaped += "\\e";
    } else if (c == '-' && starts_word) {
      escaped += "\\-";
    } else {
      escaped += c;
    }
  }
  return escaped;
}

constexpr size_t kTextWidth = 78;

bool EndsSentence(const std::string& word, const std::string& next) {
  return word.ends_with('.') && islower(static_cast<unsigned char>(next[0])) == 0;
}

// Fills lines. Each sentence begins a new line, and no line looks like a request.
void WriteText(FILE* out, const std::string& text) {
  const std::vector<std::string> words = SplitAt(Text(text), ' ');
  size_t column = 0;
  for (size_t i = 0; i < words.size(); ++i) {
    const bool sentence = i > 0 && EndsSentence(words[i - 1], words[i]);
    if (i > 0 && !sentence && column + 1 + words[i].size() <= kTextWidth) {
      column += static_cast<size_t>(fprintf(out, " %s", words[i].c_str()));
      continue;
    }
    const bool request = words[i].starts_with('.') || words[i].starts_with('\'');
    column = words[i].size();
    fprintf(out, "%s%s%s", i > 0 ? "\n" : "", request ? "\\&" : "", words[i].c_str());
  }
  fputs(text.ends_with('.') ? "\n" : ".\n", out);
}

std::string ValueOf(const Option& option) {
  switch (option.values) {
    case Values::kNone:
      return "";
    case Values::kAlternatives:
      return " Ns = Ns Cm " + Join(option.alternatives, " Ns | Ns Cm ");
    default:
      return " Ns = Ns Ar " + option.datatype;
  }
}

void WriteOption(FILE* out, const Option& option) {
  fputs(".It ", out);
  if (!option.short_name.empty()) fprintf(out, "Fl %s , ", option.short_name.c_str());
  fprintf(out, "Fl \\-%s%s\n", option.long_name.c_str(), ValueOf(option).c_str());
  WriteText(out, option.help);
  if (option.required) fputs("Required.\n", out);
}

bool NamesDevice(const Option& option) {
  return option.values == Values::kDevice || option.values == Values::kDeviceOrAll;
}

// The page explains --device once for all commands; those that take "all" say so.
void WriteLeaf(FILE* out, const Command& leaf) {
  fprintf(out, ".Ss corvane %s\n", Join(leaf.path, " ").c_str());
  WriteText(out, leaf.description);
  std::vector<Option> options;
  for (const Option& option : leaf.options) {
    if (!NamesDevice(option)) options.push_back(option);
    if (option.values == Values::kDeviceOrAll) {
      fputs("Takes\n.Fl \\-device Ns = Ns Cm all .\n", out);
    }
  }
  if (options.empty()) return;
  fputs(".Bl -tag -width Ds\n", out);
  for (const Option& option : options) WriteOption(out, option);
  fputs(".El\n", out);
}

}  // namespace

void WriteManualCommands(FILE* out, const Command& root) {
  for (const Command* leaf : Leaves(root)) WriteLeaf(out, *leaf);
}

void WriteManualStatuses(FILE* out, const Command&) {
  fputs(".Bl -column \"Status\" \"Result\" \"Meaning\"\n.It Em Status Ta Em Result Ta Em Meaning\n",
        out);
  for (const StatusMeaning& each : kStatusMeanings) {
    fprintf(out, ".It %d Ta %s%d Ta %s\n", each.status & 0xff, each.status < 0 ? "\\-" : "",
            each.status < 0 ? -each.status : each.status, each.meaning);
  }
  fputs(".El\n", out);
}

}  // namespace words
