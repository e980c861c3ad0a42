// Reading a configuration file key by key: each table of the file has an array of its keys, and a
// key that is not in it is an error. All readers return false with the error filled when the value
// at the node is not what they expect.
#pragma once

#include <toml++/toml.h>

#include <cstdint>
#include <string>

#include "configuration/configuration.h"

namespace simulator {

using Where = const toml::node&;

// Fills the error with the node's line and the reason; returns false.
bool RefuseValue(Where node, const std::string& reason, ConfigurationError& error);

bool ReadInteger(Where node, int64_t low, int64_t high, int64_t& value, ConfigurationError& error);
bool ReadInt32(Where node, int32_t& value, ConfigurationError& error);
bool ReadReal(Where node, double low, double high, double& value, ConfigurationError& error);
bool ReadText(Where node, std::string& value, ConfigurationError& error);

// Four numbers of 0 to 255 like "1.2.3.4", in the order of the text.
bool ReadVersion(Where node, uint8_t (&numbers)[4], ConfigurationError& error);

// A key of a table and the function that reads it into the target.
template <class Target>
struct Key {
  const char* name;
  bool (*read)(Where node, Target& target, ConfigurationError& error);
};

// Reads every key of the table except records, which have layouts of their own.
template <class Target, size_t kCount>
bool ReadKeys(const toml::table& table, const Key<Target> (&keys)[kCount], Target& target,
              ConfigurationError& error) {
  for (const auto& [name, node] : table) {
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
