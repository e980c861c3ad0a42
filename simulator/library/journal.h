// The file in which every call leaves a line.
#pragma once

#include <string>

namespace simulator {

// Adds the line, which ends with a line feed, to the file, making it when it is not there. False,
// with errno set, when it cannot; then the file has no part of the line.
bool WriteJournal(const std::string& path, const std::string& line);

}  // namespace simulator
