#include "device/selection.h"

#include <strings.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "console/status.h"
#include "device/device_list.h"

namespace corvane {

namespace {

constexpr long kNoIndex = -1;  // of a device that is not sought by its position

bool HasMac(DeviceHandle device, const uint8_t* wanted) {
  uint8_t mac[CORVANE_MAC_SIZE] = {};
  if (CorvaneAPIGetDeviceMAC(device, mac) != kSuccess) return false;
  return memcmp(mac, wanted, sizeof mac) == 0;
}

// The first device for which matches(position, handle) holds; none when the list is not longer than
// the index.
template <class Matches>
DeviceHandle FindDevice(long index, Matches matches) {
  const DeviceList* devices = AttachedDevices();
  if (devices == nullptr || index >= devices->count) return CORVANE_NO_DEVICE;
  const DeviceNode* node = devices->first;
  for (long position = 0; node != nullptr; node = node->next, ++position) {
    if (matches(position, node->handle)) return node->handle;
  }
  return CORVANE_NO_DEVICE;
}

DeviceHandle DeviceWithMac(const uint8_t* wanted) {
  return FindDevice(kNoIndex,
                    [wanted](long, DeviceHandle device) { return HasMac(device, wanted); });
}

DeviceHandle DeviceAt(long index) {
  return FindDevice(index, [index](long position, DeviceHandle) { return position == index; });
}

}  // namespace

int ParseMac(const char* text, uint8_t* mac) {
  unsigned bytes[CORVANE_MAC_SIZE] = {};
  const int fields = sscanf(text, "%02x:%02x:%02x:%02x:%02x:%02x", &bytes[0], &bytes[1], &bytes[2],
                            &bytes[3], &bytes[4], &bytes[5]);
  const bool complete = fields == CORVANE_MAC_SIZE;
  for (int i = 0; i < CORVANE_MAC_SIZE; ++i) {
    mac[i] = complete ? static_cast<uint8_t>(bytes[i]) : uint8_t{0};
  }
  return complete ? 0 : -1;
}

DeviceHandle ResolveDevice(const char* text) {
  if (strcasecmp(text, "all") == 0) return CORVANE_NO_DEVICE;
  char* end = nullptr;
  const long index = strtol(text, &end, 10);
  if (*end == '\0') return DeviceAt(index);
  uint8_t mac[CORVANE_MAC_SIZE];
  return ParseMac(text, mac) == 0 ? DeviceWithMac(mac) : CORVANE_NO_DEVICE;
}

DeviceHandle DefaultDevice() {
  return DeviceAt(0);
}

int FailSelection() {
  puts("Invalid Corvane device selected");
  return kNoDevice;
}

DeviceHandle SelectDevice(const std::optional<std::string>& text) {
  const DeviceHandle device = text ? ResolveDevice(text->c_str()) : DefaultDevice();
  if (device == CORVANE_NO_DEVICE) {
    FailSelection();
  } else {
    puts("Corvane detected");
  }
  return device;
}

}  // namespace corvane
