#include "configuration/configuration.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "configuration/tables.h"

namespace simulator {
namespace {

bool ReadLibraryVersion(Where node, Configuration& configuration, ConfigurationError& error) {
  uint8_t numbers[4];
  const bool ok = ReadValue(node, numbers, error);
  if (ok) memcpy(&configuration.library_version, numbers, sizeof numbers);
  return ok;
}

constexpr Key<Configuration> kFileKeys[] = {
    {"journal", ReadMember<&Configuration::journal>},
    {"journal_times", ReadMember<&Configuration::journal_times>},
    {"journal_quiet", ReadMember<&Configuration::journal_quiet>},
    {"device_count", ReadNumber<INT32_MIN, INT32_MAX, &Configuration::device_count>},
    {"lock_wait_ms", ReadNumber<0, 3'600'000, &Configuration::lock_wait_ms>},
    {"time_scale", ReadNumber<1, 1000, &Configuration::time_scale>},
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
         TakeTables(file, "event", AddEvent, configuration, error) &&
         TakeTables(file, "fault", AddFault, configuration, error) &&
         ReadTable(file, "", kFileKeys, configuration, error);
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
  std::ranges::stable_sort(configuration.events, {}, &Event::at_ms);
  MakePathsWhole(std::filesystem::path(path).parent_path(), configuration);
  return configuration;
}

std::optional<Configuration> ReadConfigurationFile(const std::string& path,
                                                   ConfigurationError& error) {
  std::ifstream file(path);
  const bool is_open = file.is_open();
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  if (!is_open || file.bad()) {
    error = {0, "cannot be read"};
    return std::nullopt;
  }
  return ReadConfiguration(text, path, error);
}

}  // namespace simulator
