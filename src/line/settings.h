// Rows of settings: an option, its report line and the record's field in one place. What a leaf
// sets and what a report prints both read the rows.
#pragma once

#include <strings.h>

#include <string>

#include "line/node.h"
#include "line/parameter.h"

namespace corvane {

// An on/off switch: on stores 1 in the field, off stores 0.
template <class Record, class Field = uint32_t>
struct SwitchRow {
  ParameterSpec parameter;
  const char* label;
  Field Record::*field;
  uint32_t needs = 0;  // bits of the capability mask without which a device has no such setting
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

// A word that is no choice leaves the field alone.
template <class Record>
void ApplyChoice(const CommandNode& leaf, const ChoiceRow<Record>& row, Record& record) {
  const std::string word = TextOr(leaf, row.parameter.key, "");
  for (const Choice& choice : row.choices) {
    if (choice.word != nullptr && strcasecmp(word.c_str(), choice.word) == 0) {
      record.*row.field = choice.code;
    }
  }
}

inline const char* NameOf(std::span<const Choice> choices, uint32_t code) {
  for (const Choice& choice : choices) {
    if (choice.code == code) return choice.name;
  }
  return "Unknown";
}

}  // namespace corvane
