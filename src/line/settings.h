// Rows of settings: an option, its report line and the record's field in one place. What a leaf
// sets, what a report prints and what a configuration file says all read the rows.
#pragma once

#include <strings.h>

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <tuple>
#include <variant>
#include <vector>

#include "line/node.h"
#include "line/parameter.h"

namespace corvane {

// What a device takes that lacks the capability for a setting: the fields at 0 or at 1, or
// anything, because they are written all the same.
enum class Without : uint8_t { kZero, kOne, kAnything };

// An on/off switch: on stores 1 in the field, off stores 0.
template <class Record, class Field = uint32_t>
struct SwitchRow {
  ParameterSpec parameter;
  const char* label;
  Field Record::*field;
  uint32_t needs = 0;  // bits of the capability mask without which a device has no such setting
  Without without = Without::kZero;
};

// True when a device of these capabilities has the setting.
template <class Record, class Field>
bool Offers(uint32_t capabilities, const SwitchRow<Record, Field>& row) {
  return (capabilities & row.needs) == row.needs;
}

// Stores 1 or 0 in the field; a switch that was not given leaves it alone.
template <class Record, class Field>
void ApplySwitch(const CommandNode& leaf, const SwitchRow<Record, Field>& row, Record& record) {
  const int value = OnOff(leaf, row.parameter.key);
  if (value != kNotGiven) record.*row.field = static_cast<Field>(value);
}

template <class Record, class Field, size_t kCount>
void ApplySwitches(const CommandNode& leaf, const SwitchRow<Record, Field> (&rows)[kCount],
                   Record& record) {
  for (const auto& row : rows) ApplySwitch(leaf, row, record);
}

// A code of a field: the word of the command line and the words of the report.
struct Choice {
  const char* word;  // null for a code that no word sets
  uint32_t code;
  const char* name;
};

// One of several words, in either case.
template <class Record>
struct ChoiceRow {
  ParameterSpec parameter;
  const char* label;
  uint32_t Record::*field;
  std::span<const Choice> choices;
};

// Null when the word is no choice.
inline const Choice* FindChoice(std::span<const Choice> choices, const std::string& word) {
  for (const Choice& choice : choices) {
    if (choice.word != nullptr && strcasecmp(word.c_str(), choice.word) == 0) return &choice;
  }
  return nullptr;
}

// A word that is no choice leaves the field alone.
template <class Record>
void ApplyChoice(const CommandNode& leaf, const ChoiceRow<Record>& row, Record& record) {
  const Choice* choice = FindChoice(row.choices, TextOr(leaf, row.parameter.key, ""));
  if (choice != nullptr) record.*row.field = choice->code;
}

inline const char* NameOf(std::span<const Choice> choices, uint32_t code) {
  for (const Choice& choice : choices) {
    if (choice.code == code) return choice.name;
  }
  return "Unknown";
}

// ---- Rows for a configuration file: a value becomes bytes of the record, and they become the
// value.

// What a setting is set to.
using Value = std::variant<bool, int64_t, double, std::string>;

// The value's whole number, if it is one and in the range.
inline std::optional<int64_t> NumberIn(const Value& value, int64_t least, int64_t most) {
  const auto* number = std::get_if<int64_t>(&value);
  if (number == nullptr || *number < least || *number > most) return std::nullopt;
  return *number;
}

// What decides which settings a device takes. The default takes all of them.
struct DeviceKind {
  uint32_t capabilities = ~0U;
  int32_t type_code = 0;
};

// Bytes of a record.
struct Extent {
  size_t offset;
  size_t size;
};

// A setting that is more than a field. `show` returns the value for what the record holds, nothing
// when there is none; `store` returns what is expected instead of the value, empty when it is
// stored.
template <class Record>
struct CodecRow {
  ParameterSpec parameter;
  std::optional<Value> (*show)(const Record& record);
  std::string (*store)(const Value& value, const DeviceKind& device, Record& record);
  std::array<Extent, 2> extents = {};  // what of the record it is
  uint32_t needs = 0;
};

// Switches off the whole that its section describes, as the command of that name does.
template <class Record>
struct DisableRow {
  ParameterSpec parameter;
  uint32_t Record::*enabled;
};

// Show() and Store() are there for every row of a section, with the contract of CodecRow.

template <class Record, class Field>
std::optional<Value> Show(const SwitchRow<Record, Field>& row, const Record& record) {
  const Field value = record.*row.field;
  return value == 0 || value == 1 ? std::optional<Value>(value == 1) : std::nullopt;
}
template <class Record, class Field>
std::string Store(const SwitchRow<Record, Field>& row, const Value& value, const DeviceKind&,
                  Record& record) {
  const bool* on = std::get_if<bool>(&value);
  if (on == nullptr) return "true or false";
  record.*row.field = *on ? 1 : 0;
  return "";
}

template <class Record>
std::optional<Value> Show(const ChoiceRow<Record>& row, const Record& record) {
  for (const Choice& choice : row.choices) {
    if (choice.code == record.*row.field && choice.word != nullptr) return choice.word;
  }
  return std::nullopt;
}
template <class Record>
std::string Store(const ChoiceRow<Record>& row, const Value& value, const DeviceKind&,
                  Record& record) {
  const auto* word = std::get_if<std::string>(&value);
  const Choice* choice = word == nullptr ? nullptr : FindChoice(row.choices, *word);
  if (choice == nullptr) return std::string("one of ") + row.parameter.datatype;
  record.*row.field = choice->code;
  return "";
}

template <class Record>
std::optional<Value> Show(const CodecRow<Record>& row, const Record& record) {
  return row.show(record);
}
template <class Record>
std::string Store(const CodecRow<Record>& row, const Value& value, const DeviceKind& device,
                  Record& record) {
  return row.store(value, device, record);
}

template <class Record>
std::optional<Value> Show(const DisableRow<Record>& row, const Record& record) {
  return record.*row.enabled == 0 ? std::optional<Value>(true) : std::nullopt;
}
template <class Record>
std::string Store(const DisableRow<Record>& row, const Value& value, const DeviceKind&,
                  Record& record) {
  const bool* off = std::get_if<bool>(&value);
  if (off == nullptr) return "true or false";
  record.*row.enabled = *off ? 0 : 1;
  return "";
}

// A row without its type, over a record without its type.
struct Setting {
  const ParameterSpec* parameter;
  uint32_t needs = 0;
  Without without = Without::kZero;
  std::vector<Extent> extents;  // none when the section is a whole
  std::function<std::optional<Value>(const void* record)> show;
  std::function<std::string(const Value& value, const DeviceKind& device, void* record)> store;
};

template <class Record, class Field>
Extent ExtentOf(Field Record::*field) {
  static const Record record = {};
  const auto* start = reinterpret_cast<const char*>(&record);
  return {static_cast<size_t>(reinterpret_cast<const char*>(&(record.*field)) - start),
          sizeof(Field)};
}

template <class Record, class Row>
Setting SettingOf(const Row& row) {
  Setting setting = {.parameter = &row.parameter};
  if constexpr (requires { row.needs; }) setting.needs = row.needs;
  if constexpr (requires { row.without; }) setting.without = row.without;
  if constexpr (requires { row.field; }) setting.extents = {ExtentOf(row.field)};
  if constexpr (requires { row.extents; }) {
    for (const Extent& extent : row.extents) {
      if (extent.size != 0) setting.extents.push_back(extent);
    }
  }
  setting.show = [&row](const void* record) {
    return Show(row, *static_cast<const Record*>(record));
  };
  setting.store = [&row](const Value& value, const DeviceKind& device, void* record) {
    return Store(row, value, device, *static_cast<Record*>(record));
  };
  return setting;
}

// The rows of a section, std::tie() of rows and arrays of them: as settings of the record, and as
// parameters of a leaf.
template <class Record, class Rows>
std::vector<Setting> SettingsOf(const Rows& rows) {
  std::vector<Setting> settings;
  const auto append = [&](const auto& part) {
    for (const auto& row : RowsOf(part)) settings.push_back(SettingOf<Record>(row));
  };
  std::apply([&](const auto&... parts) { (append(parts), ...); }, rows);
  return settings;
}
template <class Rows>
constexpr auto ParametersOf(const Rows& rows) {
  return std::apply([](const auto&... parts) { return Parameters(parts...); }, rows);
}

}  // namespace corvane
