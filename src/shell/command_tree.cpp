#include "shell/command_tree.h"

#include <argtable3.h>
#include <strings.h>

#include <cstring>
#include <new>

#include "device/status.h"

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

const char* KeptText(const char* text) {
  const size_t size = strlen(text) + 1;
  return static_cast<const char*>(memcpy(KeptMemory(size), text, size));
}

void** MakeArgtable(const NamedArg* const* params) {
  size_t count = 0;
  while (params != nullptr && params[count] != nullptr) ++count;
  void** argtable = KeptPointers<void*>(count);
  for (size_t i = 0; i < count; ++i) argtable[i] = params[i]->arg;
  argtable[count] = EndMarker();
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

}  // namespace

// A run uses little of the tree that it builds: a block of the program's own is the cheapest.
void* KeptMemory(size_t size) {
  constexpr size_t kBlockSize = 16384;
  alignas(void*) static char block[kBlockSize];
  static size_t used = 0;
  const size_t room = (size + sizeof(void*) - 1) & ~(sizeof(void*) - 1);
  if (room > kBlockSize - used) return new char[room]{};
  used += room;
  return block + used - room;
}

CommandNode* MakeNode(const char* name, const char* description, const CommandNode* const* children,
                      const NamedArg* const* params, Handler handler) {
  if (name == nullptr) return nullptr;
  return new (KeptMemory(sizeof(CommandNode)))
      CommandNode{KeptText(name),
                  KeptText(description == nullptr ? "" : description),
                  children,
                  params,
                  MakeArgtable(params),
                  handler};
}

NamedArg* MakeNamedArg(const char* key, void* arg) {
  if (key == nullptr || arg == nullptr) return nullptr;
  return new (KeptMemory(sizeof(NamedArg))) NamedArg{KeptText(key), arg};
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
  if (leaf.params == nullptr) return nullptr;
  for (const NamedArg* const* parameter = leaf.params; *parameter != nullptr; ++parameter) {
    if (strcmp((*parameter)->key, key) == 0) return *parameter;
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
