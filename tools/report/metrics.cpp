#include "metrics.h"

#include <strings.h>

#include <algorithm>
#include <cstdio>
#include <iterator>

#include "lines.h"
#include "metric_names.h"
#include "metric_tables.h"

namespace report {

namespace {

std::string Scaled(double value, double factor) {
  char text[40];
  snprintf(text, sizeof text, "%.15g", value * factor);
  return text;
}

std::string TextOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : value.dump();
}

// The labels that the table finds in the object.
template <size_t kCount>
Labels InfoOf(const Json& object, const InfoLabel (&table)[kCount]) {
  Labels info;
  for (const InfoLabel& row : table) {
    const Json::json_pointer member(row.member);
    const Json value = object.contains(member) ? object[member] : Json();
    if (!value.is_null() && value != "") info.emplace_back(row.label, TextOf(value));
  }
  return info;
}

// True for the device's number, or its address in upper or lower case.
bool IsNamed(const Labels& device, const std::string& name) {
  return std::ranges::any_of(device, [&name](const auto& label) {
    const bool names = label.first == "device" || label.first == "mac";
    return names && strcasecmp(label.second.c_str(), name.c_str()) == 0;
  });
}

// Messages are not numbers of the device.
bool IsSaid(std::string_view key) {
  return std::ranges::any_of(kMessageKeys, [key](const auto& keys) { return key == keys.list; });
}

}  // namespace

void Metrics::Add(const Json& report) {
  empty_ = false;
  own_.info = WithOthers(InfoOf(report, kReportedInfo), own_.info);
  own_.errors += report.value(kErrors, Json::array()).size();
  for (const auto& [key, value] : report.items()) {
    if (key == kDevices && value.is_array()) {
      ReadDevices(value);
    } else if (!IsSaid(key)) {
      AddValue(key, labels_, value);
    }
  }
}

void Metrics::ReadDevices(const Json& devices) {
  for (const Json& element : devices) {
    Device& device = listed_[TextOf(element.front())];
    device.info = WithOthers(InfoOf(element, kListedInfo), device.info);
    device.errors += element.contains("error") ? 1 : 0;
  }
}

void Metrics::AddValue(const std::string& path, const Labels& labels, const Json& value) {
  if (value.is_array()) return AddArray(path, labels, value);
  if (value.is_boolean()) return AddSample(path, labels, value.get<bool>() ? "1" : "0");
  if (value.is_number()) return AddSample(path, labels, value.dump());
  if (value.is_string()) return AddTime(path, labels, value.get<std::string>());
  if (HasUnit(value)) {
    const Unit* unit = FindUnit(value["unit"].get<std::string>());
    if (unit == nullptr) return;
    const Json& number = value["value"];
    const std::string text =
        unit->factor == 1 ? number.dump() : Scaled(number.get<double>(), unit->factor);
    return AddSample(path, labels, text, std::string(unit->base));
  }
  if (!value.is_object()) return;
  for (const auto& [key, member] : value.items()) {
    std::string inner = path;
    AddValue(inner.append(".").append(key), labels, member);
  }
}

// The first member of an element is its label; a list gives the number of its items.
void Metrics::AddArray(const std::string& path, const Labels& labels, const Json& array) {
  const bool elements = !array.empty() && array[0].is_object();
  if (!elements) return AddSample(path, labels, std::to_string(array.size()));
  for (const Json& element : array) {
    const auto name = element.begin();
    const Labels inner = WithLabel(labels, name.key(), TextOf(*name));
    for (auto member = std::next(name); member != element.end(); ++member) {
      AddValue(path + "." + member.key(), inner, member.value());
    }
  }
}

void Metrics::AddSample(std::string path, Labels labels, const std::string& value,
                        const std::string& unit) {
  const std::string port = TakePort(path);
  if (!port.empty()) labels = WithLabel(labels, "port", port);
  Family& family = families_[MetricName(path, unit)];
  if (family.type == nullptr) {
    family.help = MetricHelp(path);
    family.type = IsCounter(path) ? "counter" : "gauge";
  }
  for (auto& [known, latest] : family.samples) {
    if (known != labels) continue;
    latest = value;
    return;
  }
  family.samples.emplace_back(labels, value);
}

// Of all texts only a time is a metric.
void Metrics::AddTime(const std::string& path, const Labels& labels, const std::string& text) {
  const std::optional<int64_t> time = UnixTime(text);
  if (time) AddSample(path, labels, std::to_string(*time), kUnixTime);
}

void Metrics::AddDevice(const Labels& labels, const Device& device) {
  AddSample(kErrors, labels, std::to_string(device.errors));
  if (!device.info.empty()) AddSample(kDeviceInfo, WithOthers(labels, device.info), "1");
}

// A label "device" says which of the listed devices the reports are of; the others have reports of
// their own. Without it, the only device of a list must be that one.
void Metrics::AddDevices() {
  const std::string* name = FindLabel(labels_, "device");
  Device own = own_;
  for (const auto& [number, device] : listed_) {
    const bool same = name != nullptr ? IsNamed(device.info, *name) : listed_.size() == 1;
    if (same) {
      own.info = WithOthers(device.info, own.info);
      own.errors += device.errors;
    } else if (name == nullptr) {
      AddDevice(WithLabel(labels_, "device", number), device);
    }
  }
  AddDevice(labels_, own);
}

std::string Metrics::Text() {
  if (!empty_) AddDevices();
  std::string text;
  for (const auto& [name, family] : families_) {
    text += "# HELP " + name + " Corvane: " + family.help + ".\n";
    text += "# TYPE " + name + " " + family.type + "\n";
    for (const auto& [labels, value] : family.samples) {
      text.append(name).append(ToText(labels)).append(" ").append(value).append("\n");
    }
  }
  return text;
}

}  // namespace report
