// What a device answered to each Get: asked now, or read from a journal.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "library.h"

namespace lab {

struct Answer {
  int32_t status;
  Bytes bytes;  // empty when it failed
};

struct Answers {
  std::string device;  // its MAC address
  // By "CorvaneAPIGetCounterV2 index=3": the function, and the index where it has one.
  std::map<std::string, Answer> of;
};

std::string KeyOf(const std::string& function, std::optional<uint32_t> index = std::nullopt);

struct Source {
  std::optional<uint32_t> library_version;
  std::vector<Answers> devices;
};

// Asks the device everything that can be asked without changing it.
Answers Ask(const Device& device);

// What the file's calls gave, or set: the last that was a success, else the failure. Empty, or what
// is wrong with the file.
std::string ReadCalls(const std::string& path, Source& source);

}  // namespace lab
