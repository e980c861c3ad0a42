// The sections of a configuration file: from the rows of the command line, what a section says
// becomes bytes of a record, and they become what it says.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "records.h"

namespace config {

struct Section {
  std::string name;   // "features", "portcontrol.a", "statsv2.3"
  size_t record;      // in AllRecords()
  size_t offset = 0;  // of its block in the record
  size_t size;
  uint32_t needs = 0;  // bits of the capability mask, beside those of the record
  const std::vector<corvane::Setting>* settings;
  // The block where a whole starts from, and what of it is no setting; null when settings change
  // one by one.
  const void* whole = nullptr;
  std::vector<corvane::Extent> kept = {};
  // What is wrong with the settings together; null when nothing is.
  const char* (*check)(void* block) = nullptr;
  Bytes mask = {};  // 0xFF for each byte of the block that is a setting, 0 for the others
};

const std::vector<Section>& AllSections();

// The section of that name; null for none.
const Section* FindSection(const std::string& name);

// One setting as a file has it. Without a value it is of a type that no setting has.
struct Assignment {
  std::string key;
  std::optional<corvane::Value> value;
  int line = 0;
};

// What a file says of a section: settings, or in their place all bytes of the block.
struct Wish {
  const Section* section = nullptr;
  bool for_all = false;  // a device that cannot do it is left alone
  int line = 0;
  std::vector<Assignment> settings;
  std::optional<std::string> bytes;
};

// What is wrong, with its line.
struct Mistake {
  int line;
  std::string text;
};
using Mistakes = std::vector<Mistake>;

// Changes the section's bytes of the record as the wish says. `checked` is false when the record is
// no device's: what is wrong with its settings together is then of no interest.
void Fulfil(const Wish& wish, const corvane::DeviceKind& kind, bool checked, Bytes& record,
            Mistakes& mistakes);

// The wish that gives the section's bytes of the record: in words as far as words can, else as
// bytes, which are also forced when `as_bytes`. Nothing when the device has no such section.
std::optional<Wish> Describe(const Section& section, const corvane::DeviceKind& kind,
                             const Bytes& record, bool as_bytes);

// A text that gives the bytes of a setting or a section, in place of words.
bool IsBytes(const corvane::Value& value);

// A value as TOML and JSON have it.
std::string TextOf(const corvane::Value& value);

// What lacks, by the names of "capabilities show".
std::string NamesOf(uint32_t capabilities);

}  // namespace config
