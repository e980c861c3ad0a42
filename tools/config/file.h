// A configuration file: TOML, with a table for each device and one for all of them.
#pragma once

#include <string>
#include <vector>

#include "section.h"

namespace config {

// What the file says of a device: its index, its MAC address in lower case, or "default".
struct DeviceWishes {
  std::string device;
  int line;
  std::vector<Wish> wishes;
};

inline constexpr const char* kDefault = "default";

// What the file says, "default" first. Everything that the rows refuse is a mistake; so is a file
// that cannot be read, in line 0. "-" is standard input.
std::vector<DeviceWishes> ReadFile(const std::string& path, Mistakes& mistakes);

}  // namespace config
