// What a device is: type, address, capabilities, versions, firmwares; and its restart.
#include <cstring>

#include "device/capabilities.h"
#include "library/call_frame.h"
#include "model/capture.h"
#include "model/clock.h"
#include "model/device_records.h"
#include "model/facts.h"

using namespace simulator;

namespace {

HwFirmwaresDesc FirmwaresOf(const DeviceConfiguration& device) {
  if (device.hw_firmwares_record) return *device.hw_firmwares_record;
  HwFirmwaresDesc firmwares = {};
  for (const std::string& name : device.hw_firmwares) {
    memcpy(firmwares.names[firmwares.count++], name.c_str(), name.size() + 1);
  }
  return firmwares;
}

}  // namespace

extern "C" {

int32_t CorvaneAPIGetDeviceType(DeviceHandle device, int32_t* type_code) {
  return FillCall(__func__, device, 0, "", type_code, [](Call& call, int32_t& code) {
    code = call.device.type_code;
    return CORVANE_OK;
  });
}

int32_t CorvaneAPIGetDeviceMAC(DeviceHandle device, uint8_t* mac) {
  using Mac = uint8_t[CORVANE_MAC_SIZE];
  auto* out = reinterpret_cast<Mac*>(mac);
  return FillCall(__func__, device, 0, "", out, [](Call& call, Mac& record) {
    memcpy(record, call.device.mac, sizeof record);
    return CORVANE_OK;
  });
}

uint32_t CorvaneAPIGetDeviceCapabilitiesEx(DeviceHandle device) {
  uint32_t mask = 0;
  FillCall(__func__, device, 0, "", &mask, [](Call& call, uint32_t& record) {
    record = call.device.capabilities;
    return CORVANE_OK;
  });
  return mask;
}

int32_t CorvaneAPIGetVersions(DeviceHandle device, VersionRecord* versions) {
  return FillCall(__func__, device, 0, "", versions, [](Call& call, VersionRecord& record) {
    record = CurrentVersions(call);
    return CORVANE_OK;
  });
}

int32_t CorvaneAPIGetHwFirmwaresDesc(DeviceHandle device, HwFirmwaresDesc* firmwares) {
  const auto fill = [](Call& call, HwFirmwaresDesc& record) {
    record = FirmwaresOf(call.device);
    return CORVANE_OK;
  };
  return FillCall(__func__, device, CORVANE_CAP_MULTIPLE_HW, "", firmwares, fill);
}

int32_t CorvaneAPIRestartDevice(DeviceHandle device) {
  return DeviceCall(__func__, device, Access::kWrite, 0, "", [](Call& call) -> int32_t {
    if (!ForgetCapture(CapturePlaceOf(call))) return kCaptureFailed;
    call.state.Restart(call.device.name);
    MarkStarted(call, HostMs() + call.device.boot_ms);
    return CORVANE_OK;
  });
}

}  // extern "C"
