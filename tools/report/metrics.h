// Metrics in the Prometheus text format 0.0.4.
#pragma once

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "labels.h"
#include "value.h"

namespace report {

// Collects the metrics of all reports of a device, because the text format wants those of one name
// together.
class Metrics {
 public:
  // Every metric gets these labels, before its own.
  explicit Metrics(Labels labels) : labels_(std::move(labels)) {}

  // A later value of the same metric replaces the earlier one.
  void Add(const Json& report);

  // All metrics in the text format; empty when there was no report.
  std::string Text();

 private:
  struct Family {
    std::string help;
    const char* type = nullptr;
    std::vector<std::pair<Labels, std::string>> samples;  // labels, value
  };

  // What the reports say about the device itself.
  struct Device {
    Labels info;
    size_t errors = 0;
  };

  void AddValue(const std::string& path, const Labels& labels, const Json& value);
  void AddArray(const std::string& path, const Labels& labels, const Json& array);
  void AddTime(const std::string& path, const Labels& labels, const std::string& text);
  void AddSample(std::string path, Labels labels, const std::string& value,
                 const std::string& unit = "");
  void ReadDevices(const Json& devices);
  void AddDevice(const Labels& labels, const Device& device);
  void AddDevices();

  Labels labels_;
  std::map<std::string, Family> families_;
  std::map<std::string, Device> listed_;  // by their numbers
  Device own_;                            // the one that the reports are of
  bool empty_ = true;
};

}  // namespace report
