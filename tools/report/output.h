// Reports as text.
#pragma once

#include <string>

#include "value.h"

namespace report {

// JSON over several lines. Bytes that are no UTF-8 become U+FFFD.
std::string ToJson(const Json& report);

// One line of JSON whose members are no objects and arrays: "time" is the one given, the others'
// keys are paths with dots, as "ports.A.total_bytes". Elements of an array go by their first
// member, a list becomes one text.
std::string ToLine(const Json& report, const std::string& time);

// Now in UTC as ISO 8601 with milliseconds.
std::string TimeStamp();

}  // namespace report
