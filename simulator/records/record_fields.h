// The records as named fields, so that a configuration file can give them by name.
#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace simulator {

using Bytes = std::vector<uint8_t>;

template <class Record>
Bytes BytesOf(const Record& record) {
  Bytes bytes(sizeof record);
  memcpy(bytes.data(), &record, sizeof record);
  return bytes;
}

enum class FieldKind : uint8_t {
  kInteger,  // little-endian, width bytes, signed or not
  kFloat,    // IEEE 754, 4 or 8 bytes
  kBytes,    // width bytes, written as hexadecimal digits
  kText,     // width bytes, NUL-terminated
  kGroup     // count sub-records of width bytes each, with their own fields
};

struct Field {
  const char* name;
  uint32_t offset;
  uint32_t width;
  FieldKind kind;
  std::span<const Field> fields{};  // of a group
  uint32_t count = 1;               // of a group; above 1 it is written as an array of tables
};

// A record of a device that the configuration file may give.
struct RecordLayout {
  const char* name;  // of the table in the file
  uint32_t size;
  std::span<const Field> fields;
};

// The layout of that name; null when there is none.
const RecordLayout* FindLayout(std::string_view name);
std::span<const RecordLayout> AllLayouts();

}  // namespace simulator
