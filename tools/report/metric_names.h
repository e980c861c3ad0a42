// The names of metrics. A path is the keys of a value, outermost first, joined by dots.
#pragma once

#include <string>
#include <string_view>

namespace report {

// Stands in place of a base unit for a point in time.
inline constexpr const char* kUnixTime = "timestamp_seconds";

// True for a value that only counts up.
bool IsCounter(std::string_view path);

// The name, ending with the base unit if there is one. A counter ends in _total, and drops a
// "total" of its own key.
std::string MetricName(std::string path, const std::string& unit);

// The text of the HELP line.
std::string MetricHelp(const std::string& path);

// Takes the port out of a path that names one: disable_port_a becomes disable_port. Returns "A" or
// "B"; empty when there is none.
std::string TakePort(std::string& path);

}  // namespace report
