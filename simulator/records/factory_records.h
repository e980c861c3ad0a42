// The configuration with which a simulated device leaves the factory.
#pragma once

#include <string_view>

#include "records/record_fields.h"

namespace simulator {

// The record of that layout for a device with those capabilities, layout.size bytes.
Bytes FactoryRecord(std::string_view layout, uint32_t capabilities);

}  // namespace simulator
