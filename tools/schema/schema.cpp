#include "schema.h"

#include <regex.h>

#include <algorithm>
#include <cstdio>

#include "../report/lines.h"
#include "../report/output.h"
#include "../report/parser.h"
#include "../report/value.h"

using report::Json;
using report::kFormatKey;
using report::kMessageKeys;

namespace schema {

namespace {

using Examples = std::vector<Json>;

// What all of the examples are.
Json SchemaOf(const Examples& examples);

// Texts that are data. Any other text is a word of the reports, and a new word is a new format.
constexpr const char* kPatterns[] = {
    R"(^[0-9]+(\.[0-9]+)*$)",                                       // a version
    R"(^[0-9a-f]+$)",                                               // bytes
    R"(^0x[0-9a-f]+$)",                                             // bits
    R"(^[0-9a-f*]+([.:][0-9a-f*]+)+$)",                             // an address, a wildcard
    R"(^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}Z$)",  // a time
    R"(^[0-9]+/[0-9]+/[0-9]+ [0-9]+:[0-9]+:[0-9]+ \(UTC\)$)",       // no time that there is
    R"(^-?(nan|inf))",                                              // no number
};

bool FitsPattern(const char* pattern, const std::string& text) {
  regex_t compiled;
  if (regcomp(&compiled, pattern, REG_EXTENDED | REG_NOSUB) != 0) return false;
  const bool fits = regexec(&compiled, text.c_str(), 0, nullptr, 0) == 0;
  regfree(&compiled);
  return fits;
}

const char* PatternOf(const std::string& text) {
  for (const char* pattern : kPatterns) {
    if (FitsPattern(pattern, text)) return pattern;
  }
  return nullptr;
}

void AddOnce(Json& list, const Json& value) {
  if (std::ranges::find(list, value) == list.end()) list.push_back(value);
}

// ---- The schemas of which one fits, for values of a kind.

Json SchemasOfNull(const Examples&) {
  return Json::array({{{"type", "null"}}});
}

Json SchemasOfSwitches(const Examples& switches) {
  const bool both = std::ranges::find(switches, Json(!switches[0].get<bool>())) != switches.end();
  return Json::array({both ? Json({{"type", "boolean"}}) : Json({{"const", switches[0]}})});
}

Json SchemasOfNumbers(const Examples& numbers) {
  const bool whole = std::ranges::all_of(numbers, &Json::is_number_integer);
  Json schema = {{"type", whole ? "integer" : "number"}};
  if (std::ranges::none_of(numbers, [](const Json& number) { return number < 0; })) {
    schema["minimum"] = 0;
  }
  return Json::array({schema});
}

Json SchemasOfTexts(const Examples& texts) {
  Json patterns = Json::array();
  Json words = Json::array();
  for (const Json& text : texts) {
    if (text == kAnyText) return Json::array({{{"type", "string"}}});
    const char* pattern = PatternOf(text.get<std::string>());
    if (pattern == nullptr) AddOnce(words, text);
    if (pattern != nullptr) AddOnce(patterns, {{"type", "string"}, {"pattern", pattern}});
  }
  if (!words.empty()) patterns.push_back({{"enum", words}});
  return patterns;
}

Json SchemasOfArrays(const Examples& arrays) {
  Json schema = {{"type", "array"}};
  Examples items;
  size_t fewest = arrays[0].size();
  for (const Json& array : arrays) {
    items.insert(items.end(), array.begin(), array.end());
    fewest = std::min(fewest, array.size());
  }
  schema["items"] = SchemaOf(items);
  if (fewest > 0) schema["minItems"] = fewest;
  return Json::array({schema});
}

bool IsMessage(const std::string& key) {
  return std::ranges::any_of(kMessageKeys, [&key](const auto& keys) { return key == keys.text; });
}

Json SchemaOfObjects(const Examples& objects) {
  Json members = Json::object();  // the examples of each
  for (const Json& object : objects) {
    for (const auto& [key, value] : object.items()) members[key].push_back(value);
  }
  Json schema = {{"type", "object"}, {"properties", Json::object()}, {"required", Json::array()}};
  for (const auto& [key, values] : members.items()) {
    schema["properties"][key] = IsMessage(key) && values[0].is_string()
                                    ? Json({{"type", "string"}})
                                    : SchemaOf(values.get<Examples>());
    if (values.size() == objects.size()) schema["required"].push_back(key);
  }
  if (schema["required"].empty()) schema.erase("required");
  return schema;
}

Json SchemasOfObjects(const Examples& objects) {
  return Json::array({SchemaOfObjects(objects)});
}

// Types alone are a list of types.
Json AnyOf(const Json& schemas) {
  if (schemas.size() == 1) return schemas[0];
  Json types = Json::array();
  for (const Json& schema : schemas) {
    if (schema.size() == 1 && schema.contains("type")) types.push_back(schema["type"]);
  }
  return types.size() == schemas.size() ? Json({{"type", types}}) : Json({{"anyOf", schemas}});
}

struct Kind {
  bool (Json::*is)() const noexcept;
  Json (*schemas)(const Examples& examples);
};

constexpr Kind kKinds[] = {
    {&Json::is_null, SchemasOfNull},      {&Json::is_boolean, SchemasOfSwitches},
    {&Json::is_number, SchemasOfNumbers}, {&Json::is_string, SchemasOfTexts},
    {&Json::is_array, SchemasOfArrays},   {&Json::is_object, SchemasOfObjects},
};

Json SchemaOf(const Examples& examples) {
  Json schemas = Json::array();
  for (const Kind& kind : kKinds) {
    Examples found;
    for (const Json& example : examples) {
      if ((example.*kind.is)()) found.push_back(example);
    }
    if (found.empty()) continue;
    for (const Json& schema : kind.schemas(found)) schemas.push_back(schema);
  }
  return AnyOf(schemas);
}

// ---- Reports

// Value number `round` of each line, or of those that are always there.
std::string ExampleOf(const Lines& lines, size_t round, bool all) {
  std::string text;
  for (const Line& line : lines) {
    if (all || line.always) text += line.start + line.values[round % line.values.size()] + "\n";
  }
  return text;
}

// False unless the text can be read and is one report, or nothing.
bool ReadExample(const std::string& text, Examples& examples) {
  Json example = Json::object();
  int reports = 0;
  report::ReportParser parser([&](const Json& read) {
    example = read;
    ++reports;
  });
  bool good = true;
  for (size_t start = 0; start < text.size();) {
    const size_t end = text.find('\n', start);
    const std::string line = text.substr(start, end - start);
    const char* problem = parser.ReadLine(line);
    if (problem != nullptr) fprintf(stderr, "corvane_schema: %s %s\n", line.c_str(), problem);
    good = good && problem == nullptr;
    start = end + 1;
  }
  parser.Finish();
  if (reports > 1)
    fprintf(stderr, "corvane_schema: these are %d reports:\n%s", reports, text.c_str());
  for (const auto& keys : kMessageKeys) example.erase(keys.list);
  examples.push_back(example);
  return good && reports < 2;
}

// Enough of them that every value of every line is in one, and without the lines that may be
// absent.
bool ReadExamples(const Lines& lines, Examples& examples) {
  size_t rounds = 1;
  for (const Line& line : lines) rounds = std::max(rounds, line.values.size());
  bool good = ReadExample(ExampleOf(lines, 0, false), examples);
  for (size_t round = 0; round < rounds; ++round) {
    good = ReadExample(ExampleOf(lines, round, true), examples) && good;
  }
  return good;
}

// The schema's name for programs, and what it is of.
Json Begin(const std::string& name, const std::string& title) {
  return {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
          {"$id", "urn:corvane:report:" + std::to_string(report::kFormatVersion) + ":" + name},
          {"title", title},
          {"type", "object"},
          {"properties", {{kFormatKey, {{"const", report::kFormatVersion}}}}},
          {"required", {kFormatKey}}};
}

bool Contains(const Json& list, const Json& other) {
  return std::ranges::all_of(
      other, [&list](const Json& each) { return std::ranges::find(list, each) != list.end(); });
}

// Of the lists of members of which a report has one, those that do not contain another.
Json Shortest(const Json& lists) {
  Json shortest = Json::array();
  for (const Json& list : lists) {
    const bool longer = std::ranges::any_of(
        lists, [&list](const Json& other) { return other != list && Contains(list, other); });
    if (!longer) AddOnce(shortest, {{"required", list}});
  }
  return shortest;
}

}  // namespace

Schema SchemaOf(const Report& report) {
  const std::string title = report.command.empty() ? "messages" : report.command;
  std::string name = title;
  std::ranges::replace(name, ' ', '-');
  Json schema = Begin(name, report.command.empty() ? "What a command did" : "corvane " + title);
  Json lists = Json::array();
  for (const auto& keys : kMessageKeys) {
    schema["properties"][keys.list] = {
        {"type", "array"}, {"items", {{"type", "string"}}}, {"minItems", 1}};
    // Messages alone are no report.
    if (keys.list != kMessageKeys[0].list) lists.push_back({keys.list});
  }
  Examples all;
  for (const Lines& form : report.forms) {
    Examples examples;
    if (!ReadExamples(form, examples)) return {name, ""};
    const Json required = SchemaOfObjects(examples).value("required", Json::array());
    lists.push_back(required.empty() ? Json({kMessageKeys[0].list}) : required);
    all.insert(all.end(), examples.begin(), examples.end());
  }
  schema["properties"].update(SchemaOfObjects(all)["properties"]);
  schema["anyOf"] = Shortest(lists);
  return {name, schema.dump(2)};
}

Schema SchemaOfLine() {
  Json schema = Begin("line", "A line of corvane-report --lines");
  const char* time = R"(^[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\.[0-9]{3}Z$)";
  schema["properties"]["time"] = {{"type", "string"}, {"pattern", time}};
  schema["required"].push_back("time");
  schema["additionalProperties"] = {{"type", {"string", "number", "boolean", "null"}}};
  return {"line", schema.dump(2)};
}

}  // namespace schema
