#include "device/output.h"
#include "shell/command_table.h"

int main(int argc, char** argv) {
  PrepareOutput();
  return FinishOutput(Dispatch(BuildCommandTree(), argc, argv, argc > 0 ? argv[0] : ""));
}
