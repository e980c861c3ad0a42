// How metrics are called. A path is the keys of a value from the outermost on, with dots between.
#pragma once

#include <string>
#include <string_view>

namespace report {

// In place of a base unit: a point in time.
inline constexpr const char* kUnixTime = "timestamp_seconds";

// True for what only counts up.
bool IsCounter(std::string_view path);

// The name with the base unit at its end, if there is one. A counter ends in _total, so a key that
// says so itself drops it.
std::string MetricName(std::string path, const std::string& unit);

// What stands in the HELP line.
std::string MetricHelp(const std::string& path);

// Takes the port out of a path that names one in its midst, so that disable_port_a becomes
// disable_port. Returns "A" or "B"; empty when there is none.
std::string TakePort(std::string& path);

}  // namespace report
