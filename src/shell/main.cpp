#include "device/output.h"
#include "shell/command_table.h"

int main(int argc, char** argv) {
  PrepareOutput();
  const bool named = argc > 0;
  const CommandNode& root = BuildCommandTree(named ? argv + 1 : argv);
  return FinishOutput(Dispatch(root, argc, argv, named ? argv[0] : ""));
}
