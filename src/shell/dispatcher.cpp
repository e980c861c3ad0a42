#include "shell/dispatcher.h"

#include <argtable3.h>

#include <cstdio>
#include <cstring>

#include "console/status.h"

namespace corvane {

namespace {

void PrintChildNames(const CommandNode& branch) {
  const char* separator = " <";
  for (const CommandNode* child : branch.children) {
    printf("%s%s", separator, child->name.c_str());
    separator = "|";
  }
  printf(">\n\n");
}

void PrintChildren(const CommandNode& branch) {
  puts("Available commands :");
  for (const CommandNode* child : branch.children) {
    printf("  %-20s\t%s\n", child->name.c_str(), child->description.c_str());
  }
}

const CommandNode* FindChild(const CommandNode& branch, const char* word) {
  for (const CommandNode* child : branch.children) {
    if (child->name == word) return child;
  }
  return nullptr;
}

int Refuse(const CommandNode& node, const std::string& path) {
  PrintUsage(node, path);
  return kRejected;
}

int DispatchBranch(const CommandNode& branch, int argc, char** argv, const std::string& path) {
  const CommandNode* child = argc > 1 ? FindChild(branch, argv[1]) : nullptr;
  return child == nullptr ? Refuse(branch, path) : Dispatch(*child, argc - 1, argv + 1, path);
}

int RunLeaf(const CommandNode& leaf, int argc, char** argv, const std::string& path) {
  if (!leaf.params.empty() && arg_parse(argc, argv, leaf.argtable.get()) > 0)
    return Refuse(leaf, path);
  return leaf.handler == nullptr ? kRejected : leaf.handler(leaf);
}

}  // namespace

// A leaf without parameters gets no line end after its path: scripts rely on that.
int PrintUsage(const CommandNode& node, const std::string& path) {
  printf("Usage :\n  %s", path.c_str());
  if (!node.children.empty()) PrintChildNames(node);
  if (!node.params.empty()) arg_print_syntaxv(stdout, node.argtable.get(), "\n\n");
  printf("Description :\n  %s\n\n", node.description.c_str());
  if (!node.children.empty()) PrintChildren(node);
  if (!node.params.empty()) {
    puts("Available parameters :");
    arg_print_glossary_gnu(stdout, node.argtable.get());
  }
  return kSuccess;
}

int Dispatch(const CommandNode& node, int argc, char** argv, const std::string& prefix) {
  const std::string path = node.name.empty() ? prefix : prefix + " " + node.name;
  if (argc > 1 && strcmp(argv[1], "help") == 0) return PrintUsage(node, path);
  return !node.children.empty() ? DispatchBranch(node, argc, argv, path)
                                : RunLeaf(node, argc, argv, path);
}

}  // namespace corvane
