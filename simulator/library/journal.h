// The file in which every call leaves a line.
#pragma once

#include <string>

namespace simulator {

// Appends the line, which ends with a line feed, to the file, which is made when it is not there.
// False, with errno set, when that fails; then no part of the line stays in the file.
bool WriteJournal(const std::string& path, const std::string& line);

}  // namespace simulator
