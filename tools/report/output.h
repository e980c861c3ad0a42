// Reports as text.
#pragma once

#include <string>

#include "value.h"

namespace report {

inline constexpr int kFormatVersion = 1;  // of the JSON; docs/report.md says what changes it

// JSON over several lines, its version first. Bytes that are not UTF-8 become U+FFFD.
std::string ToJson(const Json& report);

// One line of JSON without inner objects and arrays: "time" is the one given, all other keys but
// the version's are paths with dots, such as "ports.A.total_bytes". The first member of an array's
// element is its name in the path; a list becomes one text.
std::string ToLine(const Json& report, const std::string& time);

// The time now, in UTC, as ISO 8601 with milliseconds.
std::string TimeStamp();

}  // namespace report
