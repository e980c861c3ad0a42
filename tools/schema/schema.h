// JSON Schemas from examples of what they describe: the types, the words, the members that all
// objects of a place have. A number is at least 0 when no example is negative.
#pragma once

#include <string>

#include "reports.h"

namespace schema {

struct Schema {
  std::string name;
  std::string text;  // JSON
};

// The schema of a report: of what corvane-report reads in its lines. Without a text, and with the
// reason on standard error, when it cannot read them.
Schema SchemaOf(const Report& report);

// The schema of a line of corvane-report --lines.
Schema SchemaOfLine();

}  // namespace schema
