// Values of the reports as JSON.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace report {

using Json = nlohmann::ordered_json;

// A unit of the reports and the base unit of its metrics.
struct Unit {
  std::string_view name;
  std::string_view base;  // as metric names spell it
  double factor;          // from the unit to its base
};

// Null for a name that is not a unit.
const Unit* FindUnit(std::string_view name);

// The text with U+FFFD for bytes that are not UTF-8.
std::string ValidText(std::string_view text);

// The text without blanks, tabs and carriage returns at both ends.
std::string_view Trim(std::string_view text);

// The key for a label: lower case, one underscore for everything between letters and digits;
// apostrophes vanish.
std::string KeyOf(std::string_view label);

// Reads one value: a switch word is a boolean; "None" and "N/A" are null; a whole number is an
// exact integer (text when it has more than 64 bits), one with a fraction a number; a number
// followed by a unit is {"value", "unit"}; the clock's "dd/mm/yyyy hh:mm:ss (UTC)" is ISO 8601; all
// else is text.
Json ReadValue(std::string_view text);

// The seconds since 1970 of a time as ReadValue returns it; none for any other text.
std::optional<int64_t> UnixTime(const std::string& text);

// The items of a list, split at commas or, if there is none, at blanks. "None" has no items.
Json ReadList(std::string_view text);

// Makes {"value", "unit"}, and recognizes it.
Json WithUnit(const Json& value, std::string_view unit);
bool HasUnit(const Json& value);

}  // namespace report
