#include <cstdio>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "inventory/inventory.h"
#include "line/device_option.h"

namespace corvane {

int CapabilitiesShow(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const uint32_t mask = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  puts("Device's capabilities:");
  for (const Capability& capability : kCapabilities) {
    printf("\t%s: %s\n", capability.label, YesOrNo((mask & capability.bit) != 0));
  }
  return kSuccess;
}

// The legend is the same for every device, so none is selected and --device is not read.
int CapabilitiesLegend(const CommandNode&) {
  puts("Legend of device's capabilities:");
  for (const Capability& capability : kCapabilities) {
    printf("\t%s: %s\n", capability.label, capability.legend);
  }
  return kSuccess;
}

}  // namespace corvane
