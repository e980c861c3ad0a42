// Reading a configuration file key by key: each table of the file has an array of its keys, and a
// key that is not in it is an error. All readers return false with the error filled when the value
// at the node is not what they expect.
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

#include "configuration/configuration.h"

namespace simulator {

using Where = const toml::node&;

// Fills the error with the node's line and the reason; returns false.
bool RefuseValue(Where node, const std::string& reason, ConfigurationError& error);

bool ReadInteger(Where node, int64_t low, int64_t high, int64_t& value, ConfigurationError& error);
bool ReadReal(Where node, double low, double high, double& value, ConfigurationError& error);

// What a value is follows from its type: a truth; a text; four numbers of 0 to 255 like "1.2.3.4",
// in the order of the text; a device's name, given as its MAC address.
bool ReadValue(Where node, bool& value, ConfigurationError& error);
bool ReadValue(Where node, std::string& value, ConfigurationError& error);
bool ReadValue(Where node, uint8_t (&version)[4], ConfigurationError& error);
bool ReadValue(Where node, std::optional<std::string>& device, ConfigurationError& error);

// A key of a table and the function that reads it into the target.
template <class Target>
struct Key {
  const char* name;
  bool (*read)(Where node, Target& target, ConfigurationError& error);
};

// Such functions for members, or for members of members: ReadMember<&Fault::persistent>; with the
// least and the greatest value ReadNumber<1, INT32_MAX, &Fault::from> and ReadRange<-90, 90, ...>;
// milliseconds that the file has as seconds.
template <auto... kPath, class Target>
bool ReadMember(Where node, Target& target, ConfigurationError& error) {
  return ReadValue(node, (target.*....*kPath), error);
}
template <int64_t kLow, int64_t kHigh, auto... kPath, class Target>
bool ReadNumber(Where node, Target& target, ConfigurationError& error) {
  int64_t value = 0;
  if (!ReadInteger(node, kLow, kHigh, value, error)) return false;
  auto& member = (target.*....*kPath);
  member = static_cast<std::remove_reference_t<decltype(member)>>(value);
  return true;
}
template <int64_t kLow, int64_t kHigh, auto kMember, class Target>
bool ReadRange(Where node, Target& target, ConfigurationError& error) {
  return ReadReal(node, kLow, kHigh, target.*kMember, error);
}
template <auto kMember, class Target>
bool ReadSeconds(Where node, Target& target, ConfigurationError& error) {
  double seconds = 0;
  const bool ok = ReadReal(node, 0, 1e9, seconds, error);
  target.*kMember = static_cast<int64_t>(seconds * 1000);
  return ok;
}

// Reads every key of a table except records, which have layouts of their own. wanted: the reason
// when the node is no table.
template <class Target, size_t kCount>
bool ReadTable(Where table, const char* wanted, const Key<Target> (&keys)[kCount], Target& target,
               ConfigurationError& error) {
  if (!table.is_table()) return RefuseValue(table, wanted, error);
  for (const auto& [name, node] : *table.as_table()) {
    const Key<Target>* found = nullptr;
    for (const Key<Target>& key : keys) {
      if (name.str() == key.name) found = &key;
    }
    if (found == nullptr && FindLayout(name.str()) != nullptr) continue;
    if (found == nullptr) {
      return RefuseValue(node, "unknown key \"" + std::string(name.str()) + "\"", error);
    }
    if (!found->read(node, target, error)) return false;
  }
  return true;
}

}  // namespace simulator
