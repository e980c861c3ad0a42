#include "configuration/functions.h"

namespace simulator {
namespace {

constexpr std::string_view kFunctions[] = {
    "CorvaneAPIInitialize",           "CorvaneAPIUninitialize",
    "CorvaneAPIGetDevicesList",       "CorvaneAPIGetDeviceType",
    "CorvaneAPIGetDeviceMAC",         "CorvaneAPIGetVersions",
    "CorvaneAPIGetDeviceFeatures",    "CorvaneAPISetDeviceFeatures",
    "CorvaneAPISaveDeviceFeatures",   "CorvaneAPIGetHwFirmwaresDesc",
    "CorvaneAPIRestartDevice",        "CorvaneAPIGetDevicePortsSpeed",
    "CorvaneAPISetDevicePortsSpeed",  "CorvaneAPIGetLinkStatus",
    "CorvaneAPIGetDpiFilter",         "CorvaneAPISetDpiFilter",
    "CorvaneAPISaveDpiFilter",        "CorvaneAPIPoeGetMeasures",
    "CorvaneAPIDiskDumpGetStatus",    "CorvaneAPIDiskDumpSetConfig",
    "CorvaneAPIDiskDumpSetConfigEx",  "CorvaneAPIDiskDumpStart",
    "CorvaneAPIDiskDumpStop",         "CorvaneAPIGetStatistics",
    "CorvaneAPIGetCounterV2",         "CorvaneAPISetCounterV2",
    "CorvaneAPIFirmwareUpdateStart",  "CorvaneAPIFirmwareUpdateGetProgress",
    "CorvaneAPIGetPacketFilter",      "CorvaneAPISetPacketFilter",
    "CorvaneAPISavePacketFilter",     "CorvaneAPIGetPacketsTypeFilter",
    "CorvaneAPISetPacketsTypeFilter", "CorvaneAPIGetTimingStatus",
    "CorvaneAPISetTimingTime",        "CorvaneAPIGPSOutputFlush",
    "CorvaneAPIGPSOutputRead",
};

}  // namespace

bool CanFail(std::string_view function) {
  for (const std::string_view known : kFunctions) {
    if (function == known) return true;
  }
  return false;
}

}  // namespace simulator
