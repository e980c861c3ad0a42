// What the tool prints.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "plan.h"

namespace config {

inline constexpr int kFormatVersion = 1;  // of the JSON

// What was read of one device.
struct Shown {
  std::string device;
  std::vector<Wish> sections;
};

std::string ToToml(const std::vector<Shown>& devices);
std::string ToJson(const std::vector<Shown>& devices);

// A line for each setting that differs, or an array of them.
std::string DifferencesAsText(const std::vector<Plan>& plans);
std::string DifferencesAsJson(const std::vector<Plan>& plans);

// Every setting there is, commented out with a value that it takes and what it is about.
std::string ExampleFile();

// Mistakes in the order of their lines.
std::string ToText(const std::string& path, Mistakes mistakes);

}  // namespace config
