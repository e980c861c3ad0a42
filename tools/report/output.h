// Reports as text.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "value.h"

// JSON over several lines. Bytes that are no UTF-8 become U+FFFD.
std::string ToJson(const Json& report);

// One line of JSON whose members are no objects and arrays: "time" is the one given, the others'
// keys are paths with dots, as "ports.A.total_bytes". Elements of an array go by their first
// member, a list becomes one text.
std::string ToLine(const Json& report, const std::string& time);

// Now in UTC as ISO 8601 with milliseconds.
std::string TimeStamp();

// Collects the metrics of any number of reports: the text format wants those of one name together.
class Metrics {
 public:
  // Labels that every metric gets, before its own: `name="value"` separated by commas.
  explicit Metrics(std::string labels) : labels_(std::move(labels)) {}

  // Of two values for the same metric the later one counts.
  void Add(const Json& report);

  // Prometheus text format.
  std::string Text() const;

 private:
  struct Family {
    std::string help;
    const char* type = nullptr;
    std::vector<std::pair<std::string, std::string>> samples;  // labels, value
  };

  void AddValue(const std::string& path, const std::string& labels, const Json& value);
  void AddSample(std::string path, std::string labels, const std::string& value,
                 const std::string& base_unit);
  void AddArray(const std::string& path, const std::string& labels, const Json& array);

  std::string labels_;
  std::map<std::string, Family> families_;
};

// `name="value"`, escaped for the text format; empty when the name is not a possible one.
std::string MetricLabel(const std::string& name, const std::string& value);
