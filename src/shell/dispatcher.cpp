#include <argtable3.h>

#include <cstdio>
#include <cstring>

#include "device/status.h"
#include "shell/command_tree.h"

namespace {

void PrintChildNames(const CommandNode& branch) {
  const char* separator = " <";
  for (const CommandNode* const* child = branch.children; *child != nullptr; ++child) {
    printf("%s%s", separator, (*child)->name);
    separator = "|";
  }
  printf(">\n\n");
}

void PrintChildren(const CommandNode& branch) {
  puts("Available commands :");
  for (const CommandNode* const* child = branch.children; *child != nullptr; ++child) {
    printf("  %-20s\t%s\n", (*child)->name, (*child)->description);
  }
}

const CommandNode* FindChild(const CommandNode& branch, const char* word) {
  for (const CommandNode* const* child = branch.children; *child != nullptr; ++child) {
    if (strcmp((*child)->name, word) == 0) return *child;
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
  if (leaf.params != nullptr && arg_parse(argc, argv, leaf.argtable) > 0) return Refuse(leaf, path);
  return leaf.handler == nullptr ? kRejected : leaf.handler(leaf);
}

}  // namespace

// A leaf without parameters gets no line end after its path: scripts know its help as it is.
int PrintUsage(const CommandNode& node, const std::string& path) {
  printf("Usage :\n  %s", path.c_str());
  if (node.children != nullptr) PrintChildNames(node);
  if (node.params != nullptr) arg_print_syntaxv(stdout, node.argtable, "\n\n");
  printf("Description :\n  %s\n\n", node.description);
  if (node.children != nullptr) PrintChildren(node);
  if (node.params != nullptr) {
    puts("Available parameters :");
    arg_print_glossary_gnu(stdout, node.argtable);
  }
  return kSuccess;
}

int Dispatch(const CommandNode& node, int argc, char** argv, const std::string& prefix) {
  const std::string path = *node.name == '\0' ? prefix : prefix + " " + node.name;
  if (argc > 1 && strcmp(argv[1], "help") == 0) return PrintUsage(node, path);
  return node.children != nullptr ? DispatchBranch(node, argc, argv, path)
                                  : RunLeaf(node, argc, argv, path);
}
