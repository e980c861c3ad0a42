// What the simulator says to people.
#pragma once

#include <string>

namespace simulator {

// Writes one line on standard error; returns false.
bool Complain(const std::string& text);
// The same, but each text once a process.
bool ComplainOnce(const std::string& text);

}  // namespace simulator
