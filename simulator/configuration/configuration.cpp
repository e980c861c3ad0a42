#include "configuration/configuration.h"

#include <filesystem>
#include <fstream>
#include <sstream>

#include "configuration/tables.h"

namespace simulator {
namespace {

bool ReadJournal(Where node, Configuration& configuration, ConfigurationError& error) {
  return ReadText(node, configuration.journal, error);
}

bool ReadLibraryVersion(Where node, Configuration& configuration, ConfigurationError& error) {
  uint8_t numbers[4];
  if (!ReadVersion(node, numbers, error)) return false;
  configuration.library_version = 0;
  for (int i = 0; i < 4; ++i) {
    configuration.library_version |= static_cast<uint32_t>(numbers[i]) << (8 * i);
  }
  return true;
}

bool ReadLockWait(Where node, Configuration& configuration, ConfigurationError& error) {
  return ReadInteger(node, 0, 3'600'000, configuration.lock_wait_ms, error);
}

bool ReadDeviceCount(Where node, Configuration& configuration, ConfigurationError& error) {
  return ReadInt32(node, configuration.device_count.emplace(), error);
}

constexpr Key<Configuration> kFileKeys[] = {
    {"journal", ReadJournal},
    {"device_count", ReadDeviceCount},
    {"lock_wait_ms", ReadLockWait},
    {"library_version", ReadLibraryVersion},
};

using AddTable = bool (*)(Where, Configuration&, ConfigurationError&);

// Takes every [[name]] table out of the file.
bool TakeTables(toml::table& file, const char* name, AddTable add, Configuration& configuration,
                ConfigurationError& error) {
  const toml::node* node = file.get(name);
  if (node == nullptr) return true;
  const toml::array* tables = node->as_array();
  if (tables == nullptr) {
    return RefuseValue(*node, std::string(name) + " wants [[" + name + "]] tables", error);
  }
  for (Where table : *tables) {
    if (!add(table, configuration, error)) return false;
  }
  file.erase(name);
  return true;
}

bool ReadFile(toml::table& file, Configuration& configuration, ConfigurationError& error) {
  return TakeTables(file, "device", AddDevice, configuration, error) &&
         TakeTables(file, "fault", AddFault, configuration, error) &&
         ReadKeys(file, kFileKeys, configuration, error);
}

void MakePathsWhole(const std::filesystem::path& folder, Configuration& configuration) {
  if (!configuration.journal.empty()) configuration.journal = folder / configuration.journal;
  for (DeviceConfiguration& device : configuration.devices) {
    for (PortSource& port : device.ports) {
      if (!port.file.empty()) port.file = std::filesystem::absolute(folder / port.file);
    }
  }
}

}  // namespace

std::optional<Configuration> ReadConfiguration(std::string_view text, const std::string& path,
                                               ConfigurationError& error) {
  toml::parse_result parsed = toml::parse(text);
  if (!parsed) {
    error = {parsed.error().source().begin.line, std::string(parsed.error().description())};
    return std::nullopt;
  }
  Configuration configuration;
  configuration.library_version = 0x01040702;  // 2.7.4.1
  if (!ReadFile(parsed.table(), configuration, error)) return std::nullopt;
  MakePathsWhole(std::filesystem::path(path).parent_path(), configuration);
  return configuration;
}

std::optional<Configuration> ReadConfigurationFile(const std::string& path,
                                                   ConfigurationError& error) {
  std::ifstream file(path);
  std::stringstream text;
  text << file.rdbuf();
  if (!file || !text) {
    error = {0, "cannot be read"};
    return std::nullopt;
  }
  return ReadConfiguration(text.str(), path, error);
}

}  // namespace simulator
