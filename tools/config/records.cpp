#include "records.h"

#include <cstdio>
#include <cstring>

#include "device/device_list.h"
#include "device/mac_text.h"

namespace config {

namespace {

bool show_calls = false;

template <class Type, int32_t (*kGet)(DeviceHandle, Type*)>
int32_t Get(DeviceHandle device, uint32_t /*index*/, void* record) {
  return kGet(device, static_cast<Type*>(record));
}

// The library need not say which counter it is.
int32_t GetCounter(DeviceHandle device, uint32_t index, void* record) {
  auto* counter = static_cast<CounterV2Config*>(record);
  const int32_t status = CorvaneAPIGetCounterV2(device, index, counter);
  counter->index = static_cast<int32_t>(index);
  return status;
}

template <class Type, int32_t (*kSet)(DeviceHandle, Type)>
int32_t Set(DeviceHandle device, const void* record) {
  Type copy;
  memcpy(&copy, record, sizeof copy);
  return kSet(device, copy);
}

constexpr Saving kSaveFeatures = {"CorvaneAPISaveDeviceFeatures", CorvaneAPISaveDeviceFeatures, 0};
constexpr Saving kSaveFilter = {"CorvaneAPISavePacketFilter", CorvaneAPISavePacketFilter,
                                CORVANE_CAP_FILTER};
constexpr Saving kSaveDpi = {"CorvaneAPISaveDpiFilter", CorvaneAPISaveDpiFilter,
                             CORVANE_CAP_FILTER};

#define CORVANE_RECORD(Type, subject) \
  "CorvaneAPIGet" #subject, "CorvaneAPISet" #subject, sizeof(Type)
#define CORVANE_CALLS(Type, subject) \
  Get<Type, CorvaneAPIGet##subject>, Set<Type, CorvaneAPISet##subject>

constexpr Record kRecords[] = {
    {CORVANE_RECORD(FeaturesRecord, DeviceFeatures), 0,
     CORVANE_CALLS(FeaturesRecord, DeviceFeatures), &kSaveFeatures},
    {CORVANE_RECORD(PortsSpeedRecord, DevicePortsSpeed), CORVANE_CAP_SPEED_CONTROL,
     CORVANE_CALLS(PortsSpeedRecord, DevicePortsSpeed), &kSaveFeatures},
    {CORVANE_RECORD(PacketFilterRecord, PacketFilter), CORVANE_CAP_FILTER,
     CORVANE_CALLS(PacketFilterRecord, PacketFilter), &kSaveFilter},
    {CORVANE_RECORD(PacketTypeFilterRecord, PacketsTypeFilter), CORVANE_CAP_PACKET_TYPE_FILTER,
     CORVANE_CALLS(PacketTypeFilterRecord, PacketsTypeFilter), &kSaveFilter},
    {CORVANE_RECORD(DpiFilterRecord, DpiFilter), CORVANE_CAP_FILTER,
     CORVANE_CALLS(DpiFilterRecord, DpiFilter), &kSaveDpi},
    {CORVANE_RECORD(CounterV2Config, CounterV2), CORVANE_CAP_STATISTICS_V2, GetCounter,
     Set<CounterV2Config, CorvaneAPISetCounterV2>, &kSaveFeatures},
};

std::vector<Record> MakeRecords() {
  std::vector<Record> records(std::begin(kRecords), std::end(kRecords));
  for (uint32_t index = 1; index < CORVANE_COUNTERS_V2; ++index) {
    records.push_back(kRecords[kCounters]);
    records.back().index = index;
  }
  return records;
}

// What failed; empty for the status of success.
std::string Called(const Device& device, const char* function, int32_t status) {
  if (show_calls) fprintf(stderr, "%s: %s: status %d\n", device.name.c_str(), function, status);
  if (status == CORVANE_OK) return "";
  return std::string(function) + " failed with status " + std::to_string(status);
}

}  // namespace

const std::vector<Record>& AllRecords() {
  static const std::vector<Record> records = MakeRecords();
  return records;
}

void ShowCalls() {
  show_calls = true;
}

std::vector<Device> FindDevices() {
  std::vector<Device> devices;
  const DeviceList* list = corvane::AttachedDevices();
  if (list == nullptr) return devices;
  int position = 0;
  for (const DeviceNode* node = list->first; node != nullptr; node = node->next, ++position) {
    Device device = {node->handle, position, "device " + std::to_string(position), {}};
    uint8_t mac[CORVANE_MAC_SIZE] = {};
    const int32_t status = CorvaneAPIGetDeviceMAC(node->handle, mac);
    if (Called(device, "CorvaneAPIGetDeviceMAC", status).empty()) {
      device.name = corvane::MacText(mac);
    }
    devices.push_back(device);
  }
  return devices;
}

std::string ReadKind(Device& device) {
  device.kind.capabilities = CorvaneAPIGetDeviceCapabilitiesEx(device.handle);
  const int32_t status = CorvaneAPIGetDeviceType(device.handle, &device.kind.type_code);
  return Called(device, "CorvaneAPIGetDeviceType", status);
}

std::string Read(const Device& device, const Record& record, Bytes& bytes) {
  bytes.assign(record.size, 0);
  const int32_t status = record.get(device.handle, record.index, bytes.data());
  return Called(device, record.get_function, status);
}

std::string Write(const Device& device, const Record& record, const Bytes& bytes) {
  return Called(device, record.set_function, record.set(device.handle, bytes.data()));
}

std::string Save(const Device& device, const Saving& saving) {
  return Called(device, saving.function, saving.save(device.handle));
}

}  // namespace config
