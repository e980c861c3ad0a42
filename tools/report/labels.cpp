#include "labels.h"

#include <algorithm>

#include "value.h"

namespace report {

namespace {

// The value in quotes: three characters get a backslash, all others stand as they are.
std::string Quote(std::string_view value) {
  const std::string valid = ValidText(value);
  std::string quoted = "\"";
  for (const char c : valid) {
    if (c == '\\' || c == '"' || c == '\n') quoted += '\\';
    quoted += c == '\n' ? 'n' : c;
  }
  return quoted + "\"";
}

}  // namespace

bool IsLabelName(std::string_view name) {
  const auto usual = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
  };
  return !name.empty() && std::all_of(name.begin(), name.end(), usual) &&
         (name[0] < '0' || name[0] > '9') && !name.starts_with("__");
}

const std::string* FindLabel(const Labels& labels, std::string_view name) {
  for (const auto& [known, value] : labels) {
    if (known == name) return &value;
  }
  return nullptr;
}

Labels WithLabel(Labels labels, const std::string& name, const std::string& value) {
  for (auto& [known, present] : labels) {
    if (known != name) continue;
    present = value;
    return labels;
  }
  labels.emplace_back(name, value);
  return labels;
}

Labels WithOthers(Labels labels, const Labels& others) {
  for (const auto& [name, value] : others) {
    if (FindLabel(labels, name) == nullptr) labels.emplace_back(name, value);
  }
  return labels;
}

std::string ToText(const Labels& labels) {
  std::string text;
  for (const auto& [name, value] : labels) {
    text += (text.empty() ? "{" : ",") + name + "=" + Quote(value);
  }
  return text.empty() ? text : text + "}";
}

}  // namespace report
