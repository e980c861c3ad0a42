// The dispatcher on any words: each line of the input is one. Handlers are not run: a command that
// would reach its handler is left alone.
#include <cstdio>
#include <sstream>
#include <vector>

#include "require.h"
#include "shell/command_table.h"
#include "shell/dispatcher.h"

using namespace corvane;

namespace {

// Replaces the handler of every leaf.
const CommandNode& Disarm(const CommandNode& node) {
  const auto nothing = [](const CommandNode&) { return 0; };
  if (node.children.empty()) const_cast<CommandNode&>(node).handler = nothing;
  for (const CommandNode* child : node.children) Disarm(*child);
  return node;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static FILE* const silence = freopen("/dev/null", "w", stdout);
  static const CommandNode& tree = Disarm(BuildCommandTree());
  Require(silence != nullptr);
  std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<std::string> words = {"corvane"};
  for (std::string line; std::getline(lines, line);) words.emplace_back(line.c_str());
  std::vector<char*> argv(words.size() + 1);
  for (size_t i = 0; i < words.size(); ++i) argv[i] = words[i].data();
  const int status = Dispatch(tree, static_cast<int>(words.size()), argv.data(), "corvane");
  Require(status == 0 || status == -1);
  return 0;
}
