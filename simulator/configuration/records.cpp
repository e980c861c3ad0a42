#include "configuration/records.h"

#include <charconv>
#include <cstring>

namespace simulator {
namespace {

bool Refuse(const Field& field, Where node, const std::string& wanted, ConfigurationError& error) {
  return RefuseValue(node, std::string(field.name) + " wants " + wanted, error);
}

bool WriteInteger(const Field& field, Where node, uint8_t* at, ConfigurationError& error) {
  const auto* value = node.as_integer();
  const bool whole = value != nullptr || node.is_boolean();
  if (!whole) return Refuse(field, node, "an integer", error);
  const int64_t number = value != nullptr ? value->get() : (node.as_boolean()->get() ? 1 : 0);
  // Signed and unsigned numbers will do: -1 and 0xffffffff mean the same in a 32-bit field.
  const bool wide = field.width == sizeof number;
  const int64_t high = wide ? INT64_MAX : (int64_t{1} << (8 * field.width)) - 1;
  if (number > high || number < -(high / 2) - 1) {
    return RefuseValue(node, std::string(field.name) + " does not hold this number", error);
  }
  memcpy(at, &number, field.width);
  return true;
}

bool WriteFloat(const Field& field, Where node, uint8_t* at, ConfigurationError& error) {
  const auto number = node.value<double>();
  if (!number) return Refuse(field, node, "a number", error);
  const auto single = static_cast<float>(*number);
  if (field.width == sizeof single) {
    memcpy(at, &single, sizeof single);
  } else {
    memcpy(at, &*number, sizeof *number);
  }
  return true;
}

bool WriteBytes(const Field& field, Where node, uint8_t* at, ConfigurationError& error) {
  Bytes bytes;
  const auto* text = node.as_string();
  if (text == nullptr || !ReadHex(text->get(), bytes) || bytes.size() != field.width) {
    return Refuse(field, node, std::to_string(2 * field.width) + " hexadecimal digits", error);
  }
  memcpy(at, bytes.data(), field.width);
  return true;
}

bool WriteText(const Field& field, Where node, uint8_t* at, ConfigurationError& error) {
  const auto* text = node.as_string();
  if (text == nullptr || text->get().size() >= field.width) {
    const std::string most = std::to_string(field.width - 1);
    return Refuse(field, node, "a text of at most " + most + " bytes", error);
  }
  memset(at, 0, field.width);
  memcpy(at, text->get().data(), text->get().size());
  return true;
}

bool WriteTable(std::span<const Field> fields, Where node, uint8_t* at, ConfigurationError& error);

bool WriteGroup(const Field& field, Where node, uint8_t* at, ConfigurationError& error) {
  if (field.count == 1) return WriteTable(field.fields, node, at, error);
  const auto* tables = node.as_array();
  if (tables == nullptr || tables->size() > field.count) {
    const std::string most = std::to_string(field.count);
    return Refuse(field, node, "an array of at most " + most + " tables", error);
  }
  for (Where table : *tables) {
    if (!WriteTable(field.fields, table, at, error)) return false;
    at += field.width;
  }
  return true;
}

constexpr decltype(&WriteGroup) kWriters[] = {WriteInteger, WriteFloat, WriteBytes, WriteText,
                                              WriteGroup};  // by FieldKind

bool WriteTable(std::span<const Field> fields, Where node, uint8_t* at, ConfigurationError& error) {
  const auto* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "a table of fields is expected here", error);
  for (const auto& [key, value] : *table) {
    const Field* found = nullptr;
    for (const Field& field : fields) {
      if (key.str() == field.name) found = &field;
    }
    if (found == nullptr) {
      return RefuseValue(value, "unknown field \"" + std::string(key.str()) + "\"", error);
    }
    const auto write = kWriters[static_cast<size_t>(found->kind)];
    if (!write(*found, value, at + found->offset, error)) return false;
  }
  return true;
}

}  // namespace

bool ReadHex(std::string_view text, Bytes& bytes) {
  bytes.clear();
  if (text.size() % 2 != 0) return false;
  for (size_t i = 0; i < text.size(); i += 2) {
    uint8_t byte = 0;
    const char* end = text.data() + i + 2;
    const auto [stop, failure] = std::from_chars(text.data() + i, end, byte, 16);
    if (failure != std::errc() || stop != end) return false;
    bytes.push_back(byte);
  }
  return true;
}

bool ReadRecord(const RecordLayout& layout, Where node, Bytes& record, ConfigurationError& error) {
  const auto* raw = node.as_string();
  if (raw == nullptr) return WriteTable(layout.fields, node, record.data(), error);
  const Field whole = {layout.name, 0, layout.size, FieldKind::kBytes};
  return WriteBytes(whole, node, record.data(), error);
}

}  // namespace simulator
