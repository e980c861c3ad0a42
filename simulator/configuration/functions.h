// Which functions of the library can fail.
#pragma once

#include <string_view>

namespace simulator {

// True for a function of the library that can tell its caller of a failure: by a status, or by a
// device list that is null.
bool CanFail(std::string_view function);

}  // namespace simulator
