// The reports of the utility line by line, each line with every form of its value. Labels and words
// come from the rows that the utility prints.
#pragma once

#include <string>
#include <vector>

namespace schema {

// Stands for whatever a device may have as a text.
inline constexpr const char* kAnyText = "any-text";

struct Line {
  std::string start;  // tabs, label and separator
  std::vector<std::string> values;
  bool always = true;  // in every report of its form
};

using Lines = std::vector<Line>;

// A report has one of several forms.
struct Report {
  std::string command;  // without "corvane"; empty for all commands that only say what was done
  std::vector<Lines> forms;
};

std::vector<Report> AllReports();

}  // namespace schema
