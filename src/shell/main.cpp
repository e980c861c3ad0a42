#include "shell/command_table.h"

int main(int argc, char** argv) {
  return Dispatch(BuildCommandTree(), argc, argv, argc > 0 ? argv[0] : "");
}
