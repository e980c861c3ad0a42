// Parameters of leaves as data. The rows stand in the headers of the subjects; from them come the
// command line's objects, help, completion and manual.
//
// Texts are part of the interface: leading blanks, trailing newlines and spelling stay as they are.
// So do the patterns.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace corvane {

enum class ParameterKind : uint8_t {
  kFlag,
  kInteger,
  kReal,
  kText,
  kFile,
  kRequiredFile,
  kPattern,
  kSwitch
};

// A text that a parameter does not have is null.
struct ParameterSpec {
  const char* key;  // what handlers look it up by: often, but not always, its long option
  const char* short_option = nullptr;
  const char* long_option;
  ParameterKind kind;
  const char* datatype = nullptr;
  const char* glossary = nullptr;
  const char* pattern = nullptr;
  int flags = 0;                                // argtable3's, of a pattern
  const char* (*compose_glossary)() = nullptr;  // in place of glossary; the text is static
};

constexpr ParameterSpec FlagSpec(const char* name, const char* glossary) {
  return {.key = name, .long_option = name, .kind = ParameterKind::kFlag, .glossary = glossary};
}
constexpr ParameterSpec IntegerSpec(const char* key, const char* long_option, const char* datatype,
                                    const char* glossary) {
  return {.key = key,
          .long_option = long_option,
          .kind = ParameterKind::kInteger,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec IntegerSpec(const char* name, const char* datatype, const char* glossary) {
  return IntegerSpec(name, name, datatype, glossary);
}
constexpr ParameterSpec RealSpec(const char* name, const char* datatype, const char* glossary) {
  return {.key = name,
          .long_option = name,
          .kind = ParameterKind::kReal,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec TextSpec(const char* name, const char* datatype, const char* glossary) {
  return {.key = name,
          .long_option = name,
          .kind = ParameterKind::kText,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec FileSpec(const char* short_option, const char* name, const char* datatype,
                                 const char* glossary) {
  return {.key = name,
          .short_option = short_option,
          .long_option = name,
          .kind = ParameterKind::kFile,
          .datatype = datatype,
          .glossary = glossary};
}
constexpr ParameterSpec PatternSpec(const char* key, const char* long_option, const char* pattern,
                                    const char* datatype, int flags, const char* glossary) {
  return {.key = key,
          .long_option = long_option,
          .kind = ParameterKind::kPattern,
          .datatype = datatype,
          .glossary = glossary,
          .pattern = pattern,
          .flags = flags};
}
constexpr ParameterSpec SwitchSpec(const char* key, const char* long_option, const char* glossary) {
  return {
      .key = key, .long_option = long_option, .kind = ParameterKind::kSwitch, .glossary = glossary};
}
constexpr ParameterSpec SwitchSpec(const char* name, const char* glossary) {
  return SwitchSpec(name, name, glossary);
}

// The parameters of a leaf in their order.
using ParameterList = std::span<const ParameterSpec* const>;

// ---- Collecting them from rows: anything that has a parameter, alone or in an array.

constexpr const ParameterSpec& ParameterOf(const ParameterSpec& parameter) {
  return parameter;
}
template <class Row>
constexpr const ParameterSpec& ParameterOf(const Row& row) {
  return row.parameter;
}

template <class Row>
constexpr std::span<const Row> RowsOf(const Row& row) {
  return {&row, 1};
}
template <class Row, size_t kCount>
constexpr std::span<const Row> RowsOf(const Row (&rows)[kCount]) {
  return rows;
}

template <class Row>
inline constexpr size_t kRowsIn = 1;
template <class Row, size_t kCount>
inline constexpr size_t kRowsIn<Row[kCount]> = kCount;

// The list of all parameters of the parts, in their order, as an array.
template <class... Parts>
constexpr auto Parameters(const Parts&... parts) {
  std::array<const ParameterSpec*, (kRowsIn<Parts> + ...)> list = {};
  size_t count = 0;
  const auto append = [&](const auto& rows) {
    for (const auto& row : rows) list[count++] = &ParameterOf(row);
  };
  (append(RowsOf(parts)), ...);
  return list;
}

}  // namespace corvane
