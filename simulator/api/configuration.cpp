// The configuration records, all of which are read, written and saved in the same way.
#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/past.h"

using namespace simulator;

namespace {

template <class Record>
int32_t GetRecord(const char* function, DeviceHandle device, uint32_t capabilities,
                  const char* name, Record* record) {
  return ReportCall(function, device, capabilities, record,
                    [=](Call& call) { return Current<Record>(call, name); });
}

template <class Record>
int32_t SetRecord(const char* function, DeviceHandle device, uint32_t capabilities,
                  const char* name, const Record& record) {
  const std::string arguments = HexArgument("record", &record, sizeof record);
  return DeviceCall(function, device, Access::kWrite, capabilities, arguments, [&](Call& call) {
    const BeforeChange before = LookBack(call, HostMs());
    call.state.SetConfiguration(call.device.name, name, BytesOf(record));
    NoteChange(call, before);
    return CORVANE_OK;
  });
}

int32_t SaveRecords(const char* function, DeviceHandle device, uint32_t capabilities,
                    std::initializer_list<const char*> names) {
  return DeviceCall(function, device, Access::kWrite, capabilities, "", [&](Call& call) {
    for (const char* name : names) call.state.SaveConfiguration(call.device.name, name);
    return CORVANE_OK;
  });
}

}  // namespace

extern "C" {

int32_t CorvaneAPIGetDeviceFeatures(DeviceHandle device, FeaturesRecord* features) {
  return GetRecord(__func__, device, 0, "features", features);
}

int32_t CorvaneAPISetDeviceFeatures(DeviceHandle device, FeaturesRecord features) {
  return SetRecord(__func__, device, 0, "features", features);
}

// The device stores everything but its filters.
int32_t CorvaneAPISaveDeviceFeatures(DeviceHandle device) {
  return SaveRecords(__func__, device, 0, {"features", "ports_speed", "counters_v2"});
}

int32_t CorvaneAPIGetDevicePortsSpeed(DeviceHandle device, PortsSpeedRecord* speeds) {
  return GetRecord(__func__, device, CORVANE_CAP_SPEED_CONTROL, "ports_speed", speeds);
}

int32_t CorvaneAPISetDevicePortsSpeed(DeviceHandle device, PortsSpeedRecord speeds) {
  return SetRecord(__func__, device, CORVANE_CAP_SPEED_CONTROL, "ports_speed", speeds);
}

int32_t CorvaneAPIGetDpiFilter(DeviceHandle device, DpiFilterRecord* filter) {
  return GetRecord(__func__, device, CORVANE_CAP_FILTER, "dpi_filter", filter);
}

int32_t CorvaneAPISetDpiFilter(DeviceHandle device, DpiFilterRecord filter) {
  return SetRecord(__func__, device, CORVANE_CAP_FILTER, "dpi_filter", filter);
}

int32_t CorvaneAPISaveDpiFilter(DeviceHandle device) {
  return SaveRecords(__func__, device, CORVANE_CAP_FILTER, {"dpi_filter"});
}

int32_t CorvaneAPIGetPacketFilter(DeviceHandle device, PacketFilterRecord* filter) {
  return GetRecord(__func__, device, CORVANE_CAP_FILTER, "packet_filter", filter);
}

int32_t CorvaneAPISetPacketFilter(DeviceHandle device, PacketFilterRecord filter) {
  return SetRecord(__func__, device, CORVANE_CAP_FILTER, "packet_filter", filter);
}

// The library has no call of its own to save the packet types; the device keeps them with the
// packet filter.
int32_t CorvaneAPISavePacketFilter(DeviceHandle device) {
  return SaveRecords(__func__, device, CORVANE_CAP_FILTER, {"packet_filter", "packet_type_filter"});
}

int32_t CorvaneAPIGetPacketsTypeFilter(DeviceHandle device, PacketTypeFilterRecord* filter) {
  return GetRecord(__func__, device, CORVANE_CAP_PACKET_TYPE_FILTER, "packet_type_filter", filter);
}

int32_t CorvaneAPISetPacketsTypeFilter(DeviceHandle device, PacketTypeFilterRecord filter) {
  return SetRecord(__func__, device, CORVANE_CAP_PACKET_TYPE_FILTER, "packet_type_filter", filter);
}

int32_t CorvaneAPIGetCounterV2(DeviceHandle device, uint32_t index, CounterV2Config* counter) {
  const std::string arguments = " index=" + std::to_string(index);
  const auto fill = [=](Call& call, CounterV2Config& record) {
    if (index >= CORVANE_COUNTERS_V2) return kInvalidArgument;
    record = Current<Counters>(call, "counters_v2")[index];
    return int32_t{CORVANE_OK};
  };
  return FillCall(__func__, device, CORVANE_CAP_STATISTICS_V2, arguments, counter, fill);
}

int32_t CorvaneAPISetCounterV2(DeviceHandle device, CounterV2Config counter) {
  const std::string arguments = HexArgument("record", &counter, sizeof counter);
  return DeviceCall(
      __func__, device, Access::kWrite, CORVANE_CAP_STATISTICS_V2, arguments, [&](Call& call) {
        const auto index = static_cast<uint32_t>(counter.index);
        if (index >= CORVANE_COUNTERS_V2) return kInvalidArgument;
        auto counters = Current<Counters>(call, "counters_v2");
        counters[index] = counter;
        call.state.SetConfiguration(call.device.name, "counters_v2", BytesOf(counters));
        return int32_t{CORVANE_OK};
      });
}

}  // extern "C"
