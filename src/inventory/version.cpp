#include <cstdio>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "inventory/inventory.h"
#include "line/device_option.h"

namespace corvane {

namespace {

void PrintVersion(const char* label, const uint8_t (&numbers)[4]) {
  printf("%s version : %u.%u.%u.%u\n", label, numbers[0], numbers[1], numbers[2], numbers[3]);
}

void PrintLibraryVersion() {
  const uint32_t packed = CorvaneAPIGetVersion();
  uint8_t numbers[4];  // lowest byte first
  for (int i = 0; i < 4; ++i) numbers[i] = static_cast<uint8_t>(packed >> (8 * i));
  PrintVersion("Corvane API", numbers);
}

}  // namespace

int Version(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  puts("Command line utility version : " CORVANE_VERSION);
  PrintLibraryVersion();
  if (!session.has_device()) return kNoDevice;

  VersionRecord versions = {};
  const int status = CorvaneAPIGetVersions(session.device(), &versions);
  if (status != kSuccess) return Fail(status, "Failed to get version information from device");
  PrintVersion("Driver", versions.driver);
  PrintVersion("SW firmware", versions.sw_firmware);
  printf("HW firmware version : %04u\n", versions.hw_firmware);
  return kSuccess;
}

}  // namespace corvane
