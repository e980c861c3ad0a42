// The models of devices.
#pragma once

#include <cstdint>

namespace corvane {

// The name of the model with that type code (of CorvaneAPIGetDeviceType); null for a code that no
// model has.
const char* ModelName(int32_t type_code);

}  // namespace corvane
