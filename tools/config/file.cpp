#include "file.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "device/selection.h"

using namespace corvane;

namespace config {

namespace {

int LineOf(const toml::source_region& source) {
  return static_cast<int>(source.begin.line);
}

// The problem is told behind the name.
void Add(Mistakes& mistakes, const toml::key& key, std::string name, std::string_view problem) {
  name += problem;
  mistakes.push_back({LineOf(key.source()), std::move(name)});
}

std::optional<Value> ValueOf(const toml::node& node) {
  if (const auto* on = node.as_boolean()) return on->get();
  if (const auto* number = node.as_integer()) return number->get();
  if (const auto* real = node.as_floating_point()) return real->get();
  if (const auto* text = node.as_string()) return text->get();
  return std::nullopt;
}

// The words behind ": expected", each once, in the order in which they come.
std::string Expected(const std::vector<std::string>& words, const char* problem) {
  std::string text = problem;
  for (size_t i = 0; i < words.size(); ++i) {
    if (i > 0 && words[i] == words[i - 1]) continue;
    text += (i == 0 ? "; expected " : ", ") + words[i];
  }
  return text;
}

std::vector<std::string> OptionsOf(const Section& section) {
  std::vector<std::string> options;
  for (const Setting& setting : *section.settings) {
    options.emplace_back(setting.parameter->long_option);
  }
  return options;
}

// What can stand behind the prefix in the name of a section: the words, or the parts of a word.
std::vector<std::string> WordsBehind(const std::string& prefix) {
  std::vector<std::string> words;
  for (const Section& section : AllSections()) {
    if (!section.name.starts_with(prefix)) continue;
    const std::string rest = section.name.substr(prefix.size());
    words.push_back(rest.substr(0, rest.find('.')));
  }
  return words;
}

// The setting of that option, or of its parameter's key: null for none.
const Setting* FindSetting(const Section& section, std::string_view key) {
  for (const Setting& setting : *section.settings) {
    if (key == setting.parameter->long_option || key == setting.parameter->key) return &setting;
  }
  return nullptr;
}

void ReadSettings(const toml::table& table, Wish& wish, Mistakes& mistakes) {
  for (const auto& [key, node] : table) {
    const Setting* setting = FindSetting(*wish.section, key.str());
    const std::string name = wish.section->name + "." + std::string(key.str());
    if (setting == nullptr) {
      Add(mistakes, key, name, Expected(OptionsOf(*wish.section), ": no such setting"));
      continue;
    }
    const std::string option = setting->parameter->long_option;
    if (std::ranges::count(wish.settings, option, &Assignment::key) != 0) {
      Add(mistakes, key, name, ": given already as " + option);
    }
    wish.settings.push_back({option, ValueOf(node), LineOf(key.source())});
  }
}

// A section's table, or the text of its bytes.
void ReadSection(const Section& section, const toml::key& key, const toml::node& node,
                 std::vector<Wish>& wishes, Mistakes& mistakes) {
  Wish wish = {.section = &section, .line = LineOf(key.source()), .settings = {}, .bytes = {}};
  const auto value = ValueOf(node);
  if (const toml::table* table = node.as_table()) {
    ReadSettings(*table, wish, mistakes);
  } else if (value && IsBytes(*value)) {
    wish.bytes = std::get<std::string>(*value);
  } else {
    return Add(mistakes, key, section.name, ": expected a table of settings");
  }
  wishes.push_back(wish);
}

void ReadSections(const toml::table& table, const std::string& prefix, std::vector<Wish>& wishes,
                  Mistakes& mistakes) {
  for (const auto& [key, node] : table) {
    const std::string name = prefix + std::string(key.str());
    const auto parts = WordsBehind(name + ".");
    if (const Section* section = FindSection(name)) {
      ReadSection(*section, key, node, wishes, mistakes);
    } else if (parts.empty()) {
      Add(mistakes, key, name, Expected(WordsBehind(prefix), ": no such section"));
    } else if (node.is_table()) {
      ReadSections(*node.as_table(), name + ".", wishes, mistakes);
    } else {
      Add(mistakes, key, name, Expected(parts, ": no table"));
    }
  }
}

bool IsIndex(const std::string& text) {
  return !text.empty() && text.size() < 10 &&
         text.find_first_not_of("0123456789") == std::string::npos;
}

bool IsMac(const std::string& text) {
  uint8_t mac[CORVANE_MAC_SIZE];
  return text.size() == 17 && ParseMac(text.c_str(), mac) == 0;
}

// The table of a device, or that of all of them.
void ReadDevice(const toml::key& key, const toml::node& node, bool for_all,
                std::vector<DeviceWishes>& devices, Mistakes& mistakes) {
  DeviceWishes device = {std::string(key.str()), LineOf(key.source()), {}};
  std::ranges::transform(device.device, device.device.begin(),
                         [](unsigned char c) { return static_cast<char>(tolower(c)); });
  const std::string name = for_all ? kDefault : "device " + device.device;
  if (!for_all && !IsIndex(device.device) && !IsMac(device.device)) {
    return Add(mistakes, key, name, ": expected a device's index or MAC address");
  }
  if (std::ranges::count(devices, device.device, &DeviceWishes::device) != 0) {
    Add(mistakes, key, name, ": another table is for the same device");
  }
  if (!node.is_table()) return Add(mistakes, key, name, ": expected a table of sections");
  ReadSections(*node.as_table(), "", device.wishes, mistakes);
  for (Wish& wish : device.wishes) wish.for_all = for_all;
  devices.push_back(std::move(device));
}

// The parser's tables are sorted, so "default" comes before "device".
void ReadTables(const toml::table& root, std::vector<DeviceWishes>& devices, Mistakes& mistakes) {
  for (const auto& [key, node] : root) {
    const toml::table* table = node.as_table();
    if (key.str() == kDefault) {
      ReadDevice(key, node, true, devices, mistakes);
    } else if (key.str() == "device" && table != nullptr) {
      for (const auto& [name, each] : *table) ReadDevice(name, each, false, devices, mistakes);
    } else {
      Add(mistakes, key, std::string(key.str()),
          ": expected [device.\"MAC\"], [device.INDEX] or [default]");
    }
  }
}

const char* HintFor(const std::string& problem) {
  const auto names = [&](const char* part) { return problem.find(part) != std::string::npos; };
  if (names("saw ':'")) return " (a MAC address has quotes: [device.\"00:1a:2b:3c:4d:01\"])";
  return names("header") || names("utf-8") ? ""
                                           : " (values are true, false, numbers and \"texts\")";
}

struct CloseFile {
  void operator()(FILE* file) const {
    if (file != stdin) fclose(file);
  }
};

// Nothing, with errno, when it cannot be read.
std::optional<std::string> ReadText(const std::string& path) {
  const std::unique_ptr<FILE, CloseFile> file(path == "-" ? stdin : fopen(path.c_str(), "re"));
  if (file == nullptr) return std::nullopt;
  std::string text;
  char part[4096];
  while (const size_t count = fread(part, 1, sizeof part, file.get())) text.append(part, count);
  if (ferror(file.get()) != 0) return std::nullopt;
  return text;
}

}  // namespace

std::vector<DeviceWishes> ReadFile(const std::string& path, Mistakes& mistakes) {
  std::vector<DeviceWishes> devices;
  const auto text = ReadText(path);
  if (!text) {
    mistakes.push_back({0, std::string("cannot be read: ") + strerror(errno)});
    return devices;
  }
  const toml::parse_result root = toml::parse(*text);
  if (!root) {
    const std::string problem(root.error().description());
    mistakes.push_back({LineOf(root.error().source()), problem + HintFor(problem)});
    return devices;
  }
  ReadTables(root.table(), devices, mistakes);
  for (const DeviceWishes& device : devices) {
    for (const Wish& wish : device.wishes) {
      Bytes record(AllRecords()[wish.section->record].size);
      Fulfil(wish, {}, false, record, mistakes);
    }
  }
  return devices;
}

}  // namespace config
