#include "device/model.h"

#include <array>
#include <cstddef>

namespace corvane {

namespace {

// By type code.
constexpr std::array<const char*, 21> kModels = {
    nullptr,      nullptr,      nullptr,      "Corvane-M1", nullptr,      "Corvane-M2",
    "Corvane-M4", "Corvane-M4", "Corvane-M2", "Corvane-M2", "Corvane-M2", "Corvane-M7",
    "Corvane-M7", "Corvane-M8", "Corvane-M5", "Corvane-M6", "Corvane-M3", "Vexo-M1",
    "Vexo-M2",    "Vexo-M3",    "Vexo-M4"};

}  // namespace

const char* ModelName(int32_t type_code) {
  if (type_code < 0 || type_code >= static_cast<int32_t>(kModels.size())) return nullptr;
  return kModels[static_cast<size_t>(type_code)];
}

}  // namespace corvane
