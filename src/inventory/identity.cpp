#include "inventory/identity.h"

#include <cstdio>

#include "console/status.h"
#include "device/model.h"

namespace corvane {

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
