#include "inventory/identity.h"

#include <array>
#include <cstdio>

#include "console/status.h"

namespace corvane {

namespace {

// By type code; null for a code that no model has.
constexpr std::array<const char*, 21> kModels = {
    nullptr,      nullptr,      nullptr,      "Corvane-M1", nullptr,      "Corvane-M2",
    "Corvane-M4", "Corvane-M4", "Corvane-M2", "Corvane-M2", "Corvane-M2", "Corvane-M7",
    "Corvane-M7", "Corvane-M8", "Corvane-M5", "Corvane-M6", "Corvane-M3", "Vexo-M1",
    "Vexo-M2",    "Vexo-M3",    "Vexo-M4"};

const char* ModelName(int32_t type_code) {
  if (type_code < 0 || type_code >= static_cast<int32_t>(kModels.size())) return nullptr;
  return kModels[static_cast<size_t>(type_code)];
}

}  // namespace

void PrintModelAndMac(DeviceHandle device) {
  int32_t type_code = 0;
  if (CorvaneAPIGetDeviceType(device, &type_code) != kSuccess) {
    puts("Error");
    return;
  }
  printf("%d ", type_code);
  const char* model = ModelName(type_code);
  if (model == nullptr) {
    puts("Error");
    return;
  }
  printf("%s ", model);

  uint8_t mac[CORVANE_MAC_SIZE] = {};
  if (CorvaneAPIGetDeviceMAC(device, mac) != kSuccess) {
    puts("MAC error");
    return;
  }
  printf("%02x:%02x:%02x:%02x:%02x:%02x\n", mac[0], mac[1], mac[2], mac[3], mac[4], mac[5]);
}

}  // namespace corvane
