#include "metric_names.h"

#include <algorithm>
#include <iterator>

#include "metric_tables.h"

namespace report {

namespace {

std::string_view LastKey(std::string_view path) {
  return path.substr(path.rfind('.') + 1);
}

std::string Replace(std::string text, char from, std::string_view to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, 1, to);
  }
  return text;
}

void RenameEnd(std::string& name) {
  for (const auto& [end, better] : kRenamedEnds) {
    if (name.ends_with(end)) name.replace(name.size() - end.size(), end.size(), better);
  }
}

}  // namespace

bool IsCounter(std::string_view path) {
  return std::find(std::begin(kCounting), std::end(kCounting), LastKey(path)) !=
         std::end(kCounting);
}

std::string MetricName(std::string path, const std::string& unit) {
  const bool counter = IsCounter(path);
  const size_t total = path.size() - LastKey(path).size();
  if (counter && LastKey(path).starts_with("total_")) path.erase(total, 6);
  if (unit == kUnixTime && path.ends_with("_time")) path.resize(path.size() - 5);
  std::string name = "corvane_" + Replace(path, '.', "_");
  if (!counter) RenameEnd(name);
  if (!unit.empty() && !name.ends_with("_" + unit)) name += "_" + unit;
  return counter ? name + "_total" : name;
}

std::string MetricHelp(const std::string& path) {
  for (const HelpText& help : kHelp) {
    if (help.path == path) return std::string(help.text);
  }
  return Replace(Replace(path, '.', ", "), '_', " ");
}

std::string TakePort(std::string& path) {
  for (const char port : {'a', 'b'}) {
    const size_t at = path.find(std::string("port_") + port);
    const size_t end = at + 6;
    if (at == std::string::npos || (end != path.size() && path[end] != '_')) continue;
    path.erase(at + 4, 2);
    return {static_cast<char>(port - 'a' + 'A')};
  }
  return "";
}

}  // namespace report
