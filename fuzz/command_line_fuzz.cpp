// The dispatcher on any words: each line of the input is one. Handlers are not run: a command that
// would reach its handler is left alone.
#include <argtable3.h>

#include <cstdio>
#include <sstream>
#include <vector>

#include "shell/command_table.h"

namespace {

int DoNothing(const CommandNode&) {
  return 0;
}

// The tree with every handler replaced.
const CommandNode& HarmlessTree() {
  static const CommandNode* const root = [] {
    const CommandNode& tree = BuildCommandTree();
    std::vector<const CommandNode*> nodes = {&tree};
    while (!nodes.empty()) {
      const CommandNode* node = nodes.back();
      nodes.pop_back();
      if (node->children == nullptr) const_cast<CommandNode*>(node)->handler = DoNothing;
      for (size_t i = 0; node->children != nullptr && node->children[i] != nullptr; ++i) {
        nodes.push_back(node->children[i]);
      }
    }
    return &tree;
  }();
  return *root;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static FILE* const silence = freopen("/dev/null", "w", stdout);
  std::istringstream lines(std::string(reinterpret_cast<const char*>(data), size));
  std::vector<std::string> words = {"corvane"};
  for (std::string line; std::getline(lines, line);) words.emplace_back(line.c_str());
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  if (silence != nullptr) {
    Dispatch(HarmlessTree(), static_cast<int>(words.size()), argv.data(), "corvane");
  }
  return 0;
}
