// Prometheus text format 0.0.4.
#include <algorithm>
#include <cstdio>
#include <iterator>
#include <string_view>

#include "output.h"

namespace {

// The keys that only ever count up, until the device restarts.
constexpr std::string_view kCounting[] = {
    "bytes_written",
    "between_64_and_1518_bytes",
    "collisions",
    "count",
    "crc_errors",
    "dropped",
    "files_written",
    "hw_dropped",
    "jabbers",
    "less_than_64bytes",
    "link_down",
    "link_up",
    "more_than_1518_bytes",
    "sw_dropped",
    "total_bytes",
    "total_invalid_packets",
    "total_valid_packets",
    "written",
};

std::string_view LastKey(std::string_view path) {
  return path.substr(path.rfind('.') + 1);
}

bool Counts(std::string_view path) {
  return std::find(std::begin(kCounting), std::end(kCounting), LastKey(path)) !=
         std::end(kCounting);
}

std::string Replace(std::string text, char from, std::string_view to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, 1, to);
  }
  return text;
}

// Ends that the text format keeps for other things.
constexpr std::pair<std::string_view, std::string_view> kRenamedEnds[] = {{"_count", ""},
                                                                          {"_bits", "_flags"}};

void RenameEnd(std::string& name) {
  for (const auto& [end, better] : kRenamedEnds) {
    if (name.ends_with(end)) name.replace(name.size() - end.size(), end.size(), better);
  }
}

// A counter ends in _total, so a key that says so itself drops it.
std::string NameOf(std::string path, const std::string& base_unit) {
  const bool counter = Counts(path);
  const size_t total = path.size() - LastKey(path).size();
  if (counter && LastKey(path).starts_with("total_")) path.erase(total, 6);
  std::string name = "corvane_" + Replace(path, '.', "_");
  if (!counter) RenameEnd(name);
  if (!base_unit.empty() && !name.ends_with("_" + base_unit)) name += "_" + base_unit;
  return counter ? name + "_total" : name;
}

std::string HelpOf(const std::string& path) {
  return Replace(Replace(path, '.', ", "), '_', " ");
}

// Where the label of the name begins; npos when it is not there. Inner quotes are escaped, so it
// cannot be mistaken for a part of a value.
size_t FindLabel(const std::string& labels, const std::string& name) {
  if (labels.starts_with(name + "=\"")) return 0;
  const size_t at = labels.find("," + name + "=\"");
  return at == std::string::npos ? at : at + 1;
}

size_t EndOfLabel(const std::string& labels, size_t at) {
  for (at = labels.find('"', at) + 1; at < labels.size() && labels[at] != '"'; ++at) {
    if (labels[at] == '\\') ++at;
  }
  return std::min(at + 1, labels.size());
}

// Adds a label, in the place of one of the same name.
std::string Join(std::string labels, const std::string& name, const std::string& value) {
  const std::string label = MetricLabel(name, value);
  const size_t present = FindLabel(labels, name);
  if (present != std::string::npos) {
    return labels.replace(present, EndOfLabel(labels, present) - present, label);
  }
  return labels.empty() ? label : labels + "," + label;
}

// The port that a key names in its midst, as disable_port_a: it is taken out, down to disable_port.
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

std::string Scaled(double value, double factor) {
  char text[40];
  snprintf(text, sizeof text, "%.15g", value * factor);
  return text;
}

bool IsLabelName(const std::string& name) {
  return !name.empty() &&
         name.find_first_not_of(
             "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVW"
             "XYZ0123456789_") == std::string::npos &&
         (name[0] < '0' || name[0] > '9') && !name.starts_with("__");
}

}  // namespace

std::string MetricLabel(const std::string& name, const std::string& value) {
  if (!IsLabelName(name)) return "";
  const std::string escaped =
      Replace(Replace(Replace(value, '\\', "\\\\"), '"', "\\\""), '\n', "\\n");
  return std::string(name).append("=\"").append(escaped).append("\"");
}

void Metrics::Add(const Json& report) {
  AddValue("", labels_, report);
}

void Metrics::AddValue(const std::string& path, const std::string& labels, const Json& value) {
  if (value.is_array()) return AddArray(path, labels, value);
  if (value.is_boolean()) return AddSample(path, labels, value.get<bool>() ? "1" : "0", "");
  if (value.is_number()) return AddSample(path, labels, value.dump(), "");
  if (HasUnit(value)) {
    const Unit* unit = FindUnit(value["unit"].get<std::string>());
    if (unit == nullptr) return;
    const Json& number = value["value"];
    const std::string text =
        unit->factor == 1 ? number.dump() : Scaled(number.get<double>(), unit->factor);
    return AddSample(path, labels, text, std::string(unit->base));
  }
  if (!value.is_object()) return;
  const std::string prefix = path.empty() ? "" : path + ".";
  for (const auto& [key, member] : value.items()) {
    std::string inner = prefix;
    AddValue(inner += key, labels, member);
  }
}

// The elements' first member is their label; a list counts by its items.
void Metrics::AddArray(const std::string& path, const std::string& labels, const Json& array) {
  const bool elements = !array.empty() && array[0].is_object();
  if (!elements) return AddSample(path, labels, std::to_string(array.size()), "");
  for (const Json& element : array) {
    const auto name = element.begin();
    const std::string text = name->is_string() ? name->get<std::string>() : name->dump();
    for (auto member = std::next(name); member != element.end(); ++member) {
      AddValue(path + "." + member.key(), Join(labels, name.key(), text), member.value());
    }
  }
}

void Metrics::AddSample(std::string path, std::string labels, const std::string& value,
                        const std::string& base_unit) {
  const std::string port = TakePort(path);
  if (!port.empty()) labels = Join(labels, "port", port);
  Family& family = families_[NameOf(path, base_unit)];
  if (family.type == nullptr) {
    family.help = HelpOf(path);
    family.type = Counts(path) ? "counter" : "gauge";
  }
  for (auto& [known, latest] : family.samples) {
    if (known != labels) continue;
    latest = value;
    return;
  }
  family.samples.emplace_back(labels, value);
}

std::string Metrics::Text() const {
  std::string text;
  for (const auto& [name, family] : families_) {
    text += "# HELP " + name + " Corvane: " + family.help + ".\n";
    text += "# TYPE " + name + " " + family.type + "\n";
    for (const auto& [labels, value] : family.samples) {
      text.append(name);
      if (!labels.empty()) text.append("{").append(labels).append("}");
      text.append(" ").append(value).append("\n");
    }
  }
  return text;
}
