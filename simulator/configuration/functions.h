// The names of the library's functions.
#pragma once

#include <string_view>

namespace simulator {

// True for a function whose failure its caller can see: one that returns a status, or the device
// list, which then is null.
bool CanFail(std::string_view function);

}  // namespace simulator
