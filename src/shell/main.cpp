#include "console/output.h"
#include "shell/command_table.h"
#include "shell/dispatcher.h"

int main(int argc, char** argv) {
  corvane::PrepareOutput();
  const char* prefix = argc > 0 ? argv[0] : "";
  return corvane::FinishOutput(corvane::Dispatch(corvane::BuildCommandTree(), argc, argv, prefix));
}
