#include "output.h"

#include <toml++/toml.h>

#include <algorithm>
#include <sstream>

using namespace corvane;
using Json = nlohmann::ordered_json;

namespace config {

namespace {

std::string Dump(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

// The name's parts before and behind its dot.
std::pair<std::string, std::string> Split(const std::string& name) {
  const size_t dot = name.find('.');
  return {name.substr(0, dot), dot == std::string::npos ? "" : name.substr(dot + 1)};
}

void Insert(const Wish& wish, toml::table& table) {
  const auto [word, part] = Split(wish.section->name);
  toml::table* parent = &table;
  if (!part.empty()) parent = table.insert(word, toml::table()).first->second.as_table();
  const std::string& key = part.empty() ? word : part;
  if (wish.bytes) {
    parent->insert(key, *wish.bytes);
    return;
  }
  toml::table settings;
  for (const Assignment& each : wish.settings) {
    std::visit([&](const auto& value) { settings.insert(each.key, value); }, *each.value);
  }
  parent->insert(key, std::move(settings));
}

std::string OneLine(const char* text) {
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

// Values of which every setting takes one.
std::vector<Value> Candidates(const Setting& setting) {
  std::vector<Value> candidates = {true,
                                   "00:1a:*:*:*:*",
                                   "10.1.*.*",
                                   "2001:0db8:****:****:****:****:****:****",
                                   "sixteen letters.",
                                   "0123456789abcdef0123456789abcdef",
                                   "0x0000ffff",
                                   int64_t{128},
                                   -19.79};
  const char* datatype = setting.parameter->datatype;
  std::istringstream words(datatype == nullptr ? "" : datatype + 1);
  for (std::string word; std::getline(words, word, '|');) candidates.emplace_back(word);
  return candidates;
}

// The first value that the section takes, if need be beside the setting before.
std::string Sample(const Section& section, const Setting& setting, Wish& before) {
  for (const Value& value : Candidates(setting)) {
    for (const bool beside : {false, true}) {
      Wish wish = {.section = &section, .settings = {}, .bytes = {}};
      if (beside) wish.settings = before.settings;
      wish.settings.push_back({setting.parameter->long_option, value, 0});
      Bytes record(AllRecords()[section.record].size);
      Mistakes mistakes;
      Fulfil(wish, {}, false, record, mistakes);
      if (!mistakes.empty()) continue;
      before.settings = {wish.settings.back()};
      return TextOf(value);
    }
  }
  return "";
}

}  // namespace

std::string ToToml(const std::vector<Shown>& devices) {
  toml::table table;
  for (const Shown& device : devices) {
    toml::table sections;
    for (const Wish& wish : device.sections) Insert(wish, sections);
    table.insert(device.device, std::move(sections));
  }
  std::ostringstream text;
  text << toml::toml_formatter(
              toml::table{{"device", std::move(table)}},
              (toml::toml_formatter::default_flags & ~toml::format_flags::indentation &
               ~toml::format_flags::allow_literal_strings) |
                  toml::format_flags::relaxed_float_precision)
       << "\n";
  return text.str();
}

std::string ToJson(const std::vector<Shown>& devices) {
  Json json = {{"format", kFormatVersion}, {"device", Json::object()}};
  for (const Shown& device : devices) {
    Json& sections = json["device"][device.device] = Json::object();
    for (const Wish& wish : device.sections) {
      const auto [word, part] = Split(wish.section->name);
      (part.empty() ? sections[word] : sections[word][part]) = JsonOf(wish);
    }
  }
  return Dump(json, 2) + "\n";
}

std::string DifferencesAsText(const std::vector<Plan>& plans) {
  std::string text;
  const auto value = [](const Json& json) { return json.is_null() ? "-" : Dump(json, -1); };
  for (const Plan& plan : plans) {
    for (const Difference& each : DifferencesOf(plan)) {
      text += plan.device.name + " " + each.setting + ": " + value(each.before) + " -> " +
              value(each.after) + "\n";
    }
  }
  return text;
}

std::string DifferencesAsJson(const std::vector<Plan>& plans) {
  Json list = Json::array();
  for (const Plan& plan : plans) {
    for (const Difference& each : DifferencesOf(plan)) {
      list.push_back({{"device", plan.device.name},
                      {"setting", each.setting},
                      {"old", each.before},
                      {"new", each.after}});
    }
  }
  return Dump({{"format", kFormatVersion}, {"differences", list}}, 2) + "\n";
}

std::string ExampleFile() {
  std::string text =
      "# Every setting of corvane-config. Take off the # where one is wanted. A section is for "
      "the\n"
      "# device of a MAC address, [device.\"00:1a:2b:3c:4d:01\"], or of an index, [device.0]; here "
      "it\n"
      "# is for every device that has the capability.\n";
  const std::vector<Setting>* shown = nullptr;  // of ports and counters the first ones
  for (const Section& section : AllSections()) {
    if (section.settings == shown) continue;
    shown = section.settings;
    const uint32_t needs = section.needs | AllRecords()[section.record].needs;
    text += "\n# [" + std::string(kDefault) + "." + section.name + "]";
    text += (needs == 0 ? "" : "  # needs " + NamesOf(needs)) + "\n";
    if (section.whole != nullptr) text += "# A whole: replaces what the device has.\n";
    Wish before = {.section = &section, .settings = {}, .bytes = {}};
    for (const Setting& setting : *section.settings) {
      text += std::string("# ") + setting.parameter->long_option + " = " +
              Sample(section, setting, before) + "  # " + OneLine(setting.parameter->glossary) +
              (setting.needs == 0 ? "" : " (needs " + NamesOf(setting.needs) + ")") + "\n";
    }
  }
  return text;
}

std::string ToText(const std::string& path, Mistakes mistakes) {
  std::ranges::stable_sort(mistakes, {}, &Mistake::line);
  std::string text;
  for (const Mistake& mistake : mistakes) {
    text += (path == "-" ? "standard input" : path) + ":" +
            (mistake.line == 0 ? "" : std::to_string(mistake.line) + ":") + " " + mistake.text +
            "\n";
  }
  return text;
}

}  // namespace config
