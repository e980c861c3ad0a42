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

HwFirmwaresDesc CurrentHwFirmwares(const Call& call) {
  const DeviceConfiguration& device = call.device;
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
  return ReportCall(__func__, device, 0, type_code,
                    [](Call& call) { return call.device.type_code; });
}

int32_t CorvaneAPIGetDeviceMAC(DeviceHandle device, uint8_t* mac) {
  auto* out = reinterpret_cast<std::array<uint8_t, CORVANE_MAC_SIZE>*>(mac);
  return ReportCall(__func__, device, 0, out, [](Call& call) { return call.device.mac; });
}

uint32_t CorvaneAPIGetDeviceCapabilitiesEx(DeviceHandle device) {
  uint32_t mask = 0;
  ReportCall(__func__, device, 0, &mask, [](Call& call) { return call.device.capabilities; });
  return mask;
}

int32_t CorvaneAPIGetVersions(DeviceHandle device, VersionRecord* versions) {
  return ReportCall(__func__, device, 0, versions, CurrentVersions);
}

int32_t CorvaneAPIGetHwFirmwaresDesc(DeviceHandle device, HwFirmwaresDesc* firmwares) {
  return ReportCall(__func__, device, CORVANE_CAP_MULTIPLE_HW, firmwares, CurrentHwFirmwares);
}

int32_t CorvaneAPIRestartDevice(DeviceHandle device) {
  return DeviceCall(__func__, device, Access::kWrite, 0, "", [](Call& call) -> int32_t {
    if (!EndCapture(call, ForgetCapture)) return kCaptureFailed;
    call.state.Restart(call.device.name);
    MarkStarted(call, HostMs() + call.device.boot_ms);
    return CORVANE_OK;
  });
}

}  // extern "C"
