#include "line/node.h"

#include <argtable3.h>
#include <strings.h>

namespace corvane {

namespace {

constexpr int kMostErrors = 20;  // that the end marker has room for; their texts are never shown
constexpr const char* kSwitchPattern = "^on|off$";
constexpr const char* kSwitchDatatype = "<on|off>";
constexpr int kSwitchFlags = 3;

// The end marker that argtable3 wants after a leaf's objects. Only one leaf is parsed in a run, so
// one marker does for all.
void* EndMarker() {
  static void* marker = nullptr;
  if (marker == nullptr) marker = arg_end(kMostErrors);
  return marker;
}

std::unique_ptr<void* []> MakeArgtable(const NamedArgs& params) {
  auto argtable = std::make_unique<void*[]>(params.size() + 1);
  for (size_t i = 0; i < params.size(); ++i) argtable[i] = params[i]->arg;
  argtable[params.size()] = EndMarker();
  return argtable;
}

// Text, pattern and file parameters keep their values in the same place.
const char* FirstText(const NamedArg& parameter) {
  return static_cast<const arg_str*>(parameter.arg)->sval[0];
}

std::optional<std::string> CopyOf(const char* text) {
  if (text == nullptr) return std::nullopt;
  return text;
}

void* MakeArgument(const ParameterSpec& row) {
  const char* s = row.short_option;
  const char* l = row.long_option;
  const char* glossary = row.compose_glossary == nullptr ? row.glossary : row.compose_glossary();
  switch (row.kind) {
    case ParameterKind::kFlag:
      return arg_lit0(s, l, glossary);
    case ParameterKind::kInteger:
      return arg_int0(s, l, row.datatype, glossary);
    case ParameterKind::kReal:
      return arg_dbl0(s, l, row.datatype, glossary);
    case ParameterKind::kText:
      return arg_str0(s, l, row.datatype, glossary);
    case ParameterKind::kFile:
      return arg_file0(s, l, row.datatype, glossary);
    case ParameterKind::kRequiredFile:
      return arg_file1(s, l, row.datatype, glossary);
    case ParameterKind::kPattern:
      return arg_rex0(s, l, row.pattern, row.datatype, row.flags, glossary);
    case ParameterKind::kSwitch:
      return OptionalSwitch(s, l, glossary);
  }
  return nullptr;
}

}  // namespace

const CommandNode* MakeNode(const char* name, const char* description, Children children,
                            NamedArgs params, Handler handler) {
  if (name == nullptr) return nullptr;
  auto argtable = MakeArgtable(params);
  return new CommandNode{name,
                         description == nullptr ? "" : description,
                         std::move(children),
                         std::move(params),
                         std::move(argtable),
                         handler};
}

const NamedArg* MakeNamedArg(const char* key, void* arg) {
  return key == nullptr || arg == nullptr ? nullptr : new NamedArg{key, arg};
}

const NamedArg* MakeParameter(const ParameterSpec& row) {
  return MakeNamedArg(row.key, MakeArgument(row));
}

void* OptionalSwitch(const char* short_option, const char* long_option, const char* glossary) {
  return arg_rex0(short_option, long_option, kSwitchPattern, kSwitchDatatype, kSwitchFlags,
                  glossary);
}

void* MandatorySwitch(const char* short_option, const char* long_option, const char* glossary) {
  return arg_rex1(short_option, long_option, kSwitchPattern, kSwitchDatatype, kSwitchFlags,
                  glossary);
}

const NamedArg* FindParameter(const CommandNode& leaf, const char* key) {
  for (const NamedArg* parameter : leaf.params) {
    if (parameter->key == key) return parameter;
  }
  return nullptr;
}

// Every argtable3 object begins with its header and its count of occurrences.
int Count(const NamedArg& parameter) {
  return static_cast<const arg_lit*>(parameter.arg)->count;
}

bool IsGiven(const NamedArg& parameter) {
  return Count(parameter) > 0;
}

int Integer(const NamedArg& parameter, int fallback) {
  return IsGiven(parameter) ? static_cast<const arg_int*>(parameter.arg)->ival[0] : fallback;
}

double Real(const NamedArg& parameter, double fallback) {
  return IsGiven(parameter) ? static_cast<const arg_dbl*>(parameter.arg)->dval[0] : fallback;
}

std::optional<std::string> Text(const NamedArg& parameter, const char* fallback) {
  return CopyOf(IsGiven(parameter) ? FirstText(parameter) : fallback);
}

int OnOff(const NamedArg& parameter) {
  if (!IsGiven(parameter)) return kNotGiven;
  if (strcasecmp(FirstText(parameter), "on") == 0) return 1;
  if (strcasecmp(FirstText(parameter), "off") == 0) return 0;
  return kNotGiven;
}

bool IsGiven(const CommandNode& leaf, const char* key) {
  return Count(leaf, key) > 0;
}

int Count(const CommandNode& leaf, const char* key) {
  const NamedArg* parameter = FindParameter(leaf, key);
  return parameter == nullptr ? 0 : Count(*parameter);
}

int Integer(const CommandNode& leaf, const char* key, int fallback) {
  const NamedArg* parameter = FindParameter(leaf, key);
  return parameter == nullptr ? fallback : Integer(*parameter, fallback);
}

double Real(const CommandNode& leaf, const char* key, double fallback) {
  const NamedArg* parameter = FindParameter(leaf, key);
  return parameter == nullptr ? fallback : Real(*parameter, fallback);
}

std::optional<std::string> Text(const CommandNode& leaf, const char* key, const char* fallback) {
  const NamedArg* parameter = FindParameter(leaf, key);
  return parameter == nullptr ? CopyOf(fallback) : Text(*parameter, fallback);
}

std::string TextOr(const CommandNode& leaf, const char* key, const char* fallback) {
  const NamedArg* parameter = FindParameter(leaf, key);
  return parameter != nullptr && IsGiven(*parameter) ? FirstText(*parameter) : fallback;
}

int OnOff(const CommandNode& leaf, const char* key) {
  const NamedArg* parameter = FindParameter(leaf, key);
  return parameter == nullptr ? kNotGiven : OnOff(*parameter);
}

}  // namespace corvane
