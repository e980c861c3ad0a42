#include "value.h"

#include <charconv>
#include <cstdio>
#include <ctime>

#include "pattern.h"

namespace report {

namespace {

constexpr double kKilo = 1024.0;

constexpr Unit kUnits[] = {
    {"V", "volts", 1},       {"A", "amperes", 1},           {"mA", "amperes", 1e-3},
    {"mW", "watts", 1e-3},   {"C", "celsius", 1},           {"ms", "seconds", 1e-3},
    {"ns", "seconds", 1e-9}, {"nm", "metres", 1e-9},        {"B", "bytes", 1},
    {"KB", "bytes", kKilo},  {"MB", "bytes", kKilo* kKilo}, {"GB", "bytes", kKilo* kKilo* kKilo},
    {"bytes", "bytes", 1},
};

struct Switch {
  std::string_view word;
  bool on;
};

constexpr Switch kSwitches[] = {
    {"Enabled", true},  {"Disabled", false}, {"disabled", false},     {"Yes", true},
    {"No", false},      {"yes", true},       {"no", false},           {"on", true},
    {"off", false},     {"detected", true},  {"not detected", false}, {"STARTED", true},
    {"STOPPED", false}, {"forced", true},
};

bool IsAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

template <class Number>
std::optional<Number> Parse(std::string_view text) {
  Number number = {};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return number;
}

// A number is digits, at most one sign and at most one point; anything else gives null.
Json ReadNumber(std::string_view text) {
  if (IsWholeNumber(text)) {
    if (const auto number = Parse<int64_t>(text)) return *number;
    if (const auto number = Parse<uint64_t>(text)) return *number;
    return std::string(text);
  }
  const size_t point = text.find('.');
  if (point == std::string_view::npos || !IsWholeNumber(text.substr(0, point))) return nullptr;
  const std::string_view fraction = text.substr(point + 1);
  if (fraction.starts_with('-') || !IsWholeNumber(fraction)) return nullptr;
  const auto number = Parse<double>(text);
  if (!number) return std::string(text);
  return *number == 0 ? 0.0 : *number;  // the reports write -0.00 too
}

Json ReadQuantity(std::string_view text) {
  const size_t end = text.find_last_of("0123456789");
  if (end == std::string_view::npos) return nullptr;
  const Unit* unit = FindUnit(Trim(text.substr(end + 1)));
  if (unit == nullptr) return nullptr;
  const Json value = ReadNumber(text.substr(0, end + 1));
  return value.is_number() ? WithUnit(value, unit->name) : Json(nullptr);
}

// Null for a text that is not a possible time.
Json ReadClock(std::string_view text) {
  int day, month, year, hour, minute, second;
  char closing = '\0';
  const int fields = sscanf(std::string(text).c_str(), "%2d/%2d/%4d %2d:%2d:%2d (UTC%c", &day,
                            &month, &year, &hour, &minute, &second, &closing);
  const bool possible = fields == 7 && closing == ')' && day >= 1 && day <= 31 && month >= 1 &&
                        month <= 12 && year >= 0 && hour >= 0 && hour <= 23 && minute >= 0 &&
                        minute <= 59 && second >= 0 && second <= 60;
  if (!possible) return nullptr;
  char iso[80];
  snprintf(iso, sizeof iso, "%04d-%02d-%02dT%02d:%02d:%02dZ", year, month, day, hour, minute,
           second);
  return iso;
}

}  // namespace

const Unit* FindUnit(std::string_view name) {
  for (const Unit& unit : kUnits) {
    if (unit.name == name) return &unit;
  }
  return nullptr;
}

std::string ValidText(std::string_view text) {
  const std::string json = Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
  return Json::parse(json).get<std::string>();
}

std::string_view Trim(std::string_view text) {
  const size_t first = text.find_first_not_of(" \t\r");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r") - first + 1);
}

std::string KeyOf(std::string_view label) {
  std::string key;
  bool gap = false;
  for (const char c : label) {
    if (c == '\'') continue;
    if (!IsAlphanumeric(c)) {
      gap = true;
      continue;
    }
    if (gap && !key.empty()) key += '_';
    gap = false;
    key += static_cast<char>(c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c);
  }
  return key;
}

Json WithUnit(const Json& value, std::string_view unit) {
  return {{"value", value}, {"unit", unit}};
}

bool HasUnit(const Json& value) {
  return value.is_object() && value.size() == 2 && value.contains("value") &&
         value.contains("unit");
}

Json ReadValue(std::string_view text) {
  for (const Switch& s : kSwitches) {
    if (text == s.word) return s.on;
  }
  if (text == "None" || text == "N/A") return nullptr;
  for (const auto read : {ReadNumber, ReadQuantity, ReadClock}) {
    Json value = read(text);
    if (!value.is_null()) return value;
  }
  return std::string(text);
}

std::optional<int64_t> UnixTime(const std::string& text) {
  tm utc = {};
  const char* end = strptime(text.c_str(), "%Y-%m-%dT%H:%M:%SZ", &utc);
  if (end != text.c_str() + text.size()) return std::nullopt;
  return timegm(&utc);
}

Json ReadList(std::string_view text) {
  Json items = Json::array();
  if (text == "None") return items;
  const char separator = text.find(',') != std::string_view::npos ? ',' : ' ';
  while (!text.empty()) {
    const size_t end = std::min(text.find(separator), text.size());
    const std::string_view item = Trim(text.substr(0, end));
    if (!item.empty()) items.push_back(ReadValue(item));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return items;
}

}  // namespace report
