#include <cstdio>

#include "console/status.h"
#include "device/device_list.h"
#include "device/session.h"
#include "inventory/identity.h"
#include "inventory/inventory.h"

namespace corvane {

int ListDevices(const CommandNode&) {
  const Session session;
  const DeviceList* devices = AttachedDevices();
  printf("Found %d corvanes\n", devices == nullptr ? 0 : devices->count);
  const DeviceNode* node = devices == nullptr ? nullptr : devices->first;
  for (int position = 0; node != nullptr; node = node->next, ++position) {
    printf("%d : ", position);
    PrintModelAndMac(node->handle);
  }
  return kSuccess;
}

}  // namespace corvane
