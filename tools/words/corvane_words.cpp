// corvane_words TEMPLATE OUTPUT: copies the template and replaces each line that consists of one of
// the marks below with text from the utility's own command tree.
#include <cstdio>
#include <cstring>
#include <memory>

#include "writers.h"

using namespace words;

namespace {

struct Mark {
  const char* line;
  void (*write)(FILE* out, const Command& root);
};

constexpr Mark kMarks[] = {
    {"@manual-commands@\n", WriteManualCommands}, {"@manual-statuses@\n", WriteManualStatuses},
    {"@bash-words@\n", WriteBashWords},           {"@bash-values@\n", WriteBashValues},
    {"@zsh-functions@\n", WriteZshFunctions},     {"@fish-commands@\n", WriteFishCommands},
};

struct CloseFile {
  void operator()(FILE* file) const { fclose(file); }
};
using File = std::unique_ptr<FILE, CloseFile>;

void WriteLine(FILE* out, const char* line, const Command& root) {
  for (const Mark& mark : kMarks) {
    if (strcmp(line, mark.line) == 0) return mark.write(out, root);
  }
  fputs(line, out);
}

int Fail(const char* path) {
  perror(path);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    fputs("usage: corvane_words TEMPLATE OUTPUT\n", stderr);
    return 2;
  }
  const File in(fopen(argv[1], "r"));
  if (in == nullptr) return Fail(argv[1]);
  const File out(fopen(argv[2], "w"));
  if (out == nullptr) return Fail(argv[2]);

  const Command root = CollectCommands();
  char line[1024];
  while (fgets(line, sizeof line, in.get()) != nullptr) WriteLine(out.get(), line, root);
  return ferror(in.get()) != 0 || fflush(out.get()) != 0 ? Fail(argv[2]) : 0;
}
