// corvane_schema FOLDER: writes the JSON Schemas of the reports into the folder.
#include <cstdio>

#include "schema.h"

using namespace schema;

namespace {

bool Write(const std::string& folder, const Schema& schema) {
  if (schema.text.empty()) return false;
  const std::string path = folder + "/" + schema.name + ".json";
  FILE* file = fopen(path.c_str(), "w");
  const bool opened = file != nullptr;
  if (opened) fprintf(file, "%s\n", schema.text.c_str());
  const bool written = opened && ferror(file) == 0;
  if (opened && fclose(file) == 0 && written) return true;
  perror(path.c_str());
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fputs("usage: corvane_schema FOLDER\n", stderr);
    return 2;
  }
  bool good = Write(argv[1], SchemaOfLine());
  for (const Report& report : AllReports()) good = Write(argv[1], SchemaOf(report)) && good;
  return good ? 0 : 1;
}
