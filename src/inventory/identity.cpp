#include "inventory/identity.h"

#include <cstdio>

#include "console/status.h"
#include "device/mac_text.h"
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
  puts(MacText(mac).c_str());
}

}  // namespace corvane
