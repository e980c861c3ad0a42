#include "library.h"

#include <dlfcn.h>
#include <strings.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <type_traits>

#include "device/corvane_api_layout.h"  // for its assertions
#include "device/mac_text.h"

namespace lab {

namespace {

constexpr int kWaitAttempts = 50;
constexpr useconds_t kWaitUs = 100'000;

BeforeCall before = nullptr;

// NOLINTBEGIN(bugprone-macro-parentheses): types
#define READ(function, Type, needs) \
#function, sizeof(Type), needs,                     \
      [](DeviceHandle device, uint32_t, void* record) \
           -> int32_t { return LIBRARY(function)(device, static_cast<std::add_pointer_t<Type>>(record)); }
#define WRITE(function, Type) \
#function, [](DeviceHandle device, const void* record) -> int32_t {                \
    Type copy;                                                            \
    memcpy(&copy, record, sizeof copy);                                   \
    return LIBRARY(function)(device, copy);                               \
  }

// NOLINTEND(bugprone-macro-parentheses)

int32_t GetCounter(DeviceHandle device, uint32_t index, void* record) {
  return LIBRARY(CorvaneAPIGetCounterV2)(device, index, static_cast<CounterV2Config*>(record));
}

constexpr Reading kReadings[] = {
    {"versions", READ(CorvaneAPIGetVersions, VersionRecord, 0)},
    {"hw_firmwares", READ(CorvaneAPIGetHwFirmwaresDesc, HwFirmwaresDesc, CORVANE_CAP_MULTIPLE_HW)},
    {"features", READ(CorvaneAPIGetDeviceFeatures, FeaturesRecord, 0),
     WRITE(CorvaneAPISetDeviceFeatures, FeaturesRecord)},
    {"ports_speed",
     READ(CorvaneAPIGetDevicePortsSpeed, PortsSpeedRecord, CORVANE_CAP_SPEED_CONTROL),
     WRITE(CorvaneAPISetDevicePortsSpeed, PortsSpeedRecord)},
    {"packet_filter", READ(CorvaneAPIGetPacketFilter, PacketFilterRecord, CORVANE_CAP_FILTER),
     WRITE(CorvaneAPISetPacketFilter, PacketFilterRecord)},
    {"packet_type_filter",
     READ(CorvaneAPIGetPacketsTypeFilter, PacketTypeFilterRecord, CORVANE_CAP_PACKET_TYPE_FILTER),
     WRITE(CorvaneAPISetPacketsTypeFilter, PacketTypeFilterRecord)},
    {"dpi_filter", READ(CorvaneAPIGetDpiFilter, DpiFilterRecord, CORVANE_CAP_FILTER),
     WRITE(CorvaneAPISetDpiFilter, DpiFilterRecord)},
    {"counters_v2", "CorvaneAPIGetCounterV2", sizeof(CounterV2Config), CORVANE_CAP_STATISTICS_V2,
     GetCounter, WRITE(CorvaneAPISetCounterV2, CounterV2Config), false, CORVANE_COUNTERS_V2},
    {"link_status", READ(CorvaneAPIGetLinkStatus, LinkStatusRecord, 0), nullptr, nullptr, true},
    {"poe_measures", READ(CorvaneAPIPoeGetMeasures, PoeMeasures, CORVANE_CAP_POE), nullptr, nullptr,
     true},
    {"timing_status", READ(CorvaneAPIGetTimingStatus, TimingStatusRecord, CORVANE_CAP_GPS), nullptr,
     nullptr, true},
    {"statistics",
     READ(CorvaneAPIGetStatistics, StatisticsRecord,
          CORVANE_CAP_STATISTICS_V1 | CORVANE_CAP_STATISTICS_V2),
     nullptr, nullptr, true},
    {"disk_dump_status", READ(CorvaneAPIDiskDumpGetStatus, DiskDumpStatus, 0), nullptr, nullptr,
     true},
};

}  // namespace

std::string LoadLibrary() {
  if (dlopen("libCorvaneAPI.so.2", RTLD_LAZY | RTLD_GLOBAL) != nullptr) return "";
  const char* reason = dlerror();
  return reason == nullptr ? "no reason is given" : reason;
}

// Whatever is preloaded before the library comes first, as it does for a program that is linked.
void* FindFunction(const char* name) {
  return dlsym(RTLD_DEFAULT, name);
}

void SetBeforeCall(BeforeCall before_call) {
  before = before_call;
}

void* FunctionToCall(const char* name) {
  void* const found = FindFunction(name);
  before(name, found != nullptr);
  return found;
}

std::span<const Reading> AllReadings() {
  return kReadings;
}

// The list stays: its handles are in use to the end.
std::vector<Device> FindDevices() {
  std::vector<Device> devices;
  const DeviceList* list = nullptr;
  for (int attempt = 0; attempt < kWaitAttempts; ++attempt) {
    list = LIBRARY(CorvaneAPIGetDevicesList)();
    if (list != nullptr && list->first != nullptr) break;
    usleep(kWaitUs);
  }
  if (list == nullptr) return devices;
  for (const DeviceNode* node = list->first; node != nullptr; node = node->next) {
    Device device = {node->handle, "device " + std::to_string(devices.size())};
    uint8_t mac[CORVANE_MAC_SIZE] = {};
    if (LIBRARY(CorvaneAPIGetDeviceMAC)(node->handle, mac) == CORVANE_OK)
      device.name = corvane::MacText(mac);
    devices.push_back(device);
  }
  return devices;
}

std::vector<Device> SelectDevices(const std::vector<Device>& devices, const std::string& text) {
  if (text == "all") return devices;
  for (size_t i = 0; i < devices.size(); ++i) {
    const bool named = strcasecmp(devices[i].name.c_str(), text.c_str()) == 0;
    if (named || std::to_string(i) == text) return {devices[i]};
  }
  return {};
}

}  // namespace lab
