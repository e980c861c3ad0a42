#include "configuration/functions.h"

#include <string>

namespace simulator {
namespace {

constexpr std::string_view kPrefix = "CorvaneAPI";

// Their names after the prefix, each between two blanks.
constexpr std::string_view kFunctions =
    " Initialize Uninitialize GetDevicesList GetDeviceType GetDeviceMAC GetVersions"
    " GetDeviceFeatures SetDeviceFeatures SaveDeviceFeatures GetHwFirmwaresDesc RestartDevice"
    " GetDevicePortsSpeed SetDevicePortsSpeed GetLinkStatus GetDpiFilter SetDpiFilter SaveDpiFilter"
    " PoeGetMeasures DiskDumpGetStatus DiskDumpSetConfig DiskDumpSetConfigEx DiskDumpStart"
    " DiskDumpStop GetStatistics GetCounterV2 SetCounterV2 FirmwareUpdateStart"
    " FirmwareUpdateGetProgress GetPacketFilter SetPacketFilter SavePacketFilter"
    " GetPacketsTypeFilter SetPacketsTypeFilter GetTimingStatus SetTimingTime GPSOutputFlush"
    " GPSOutputRead ";

}  // namespace

bool CanFail(std::string_view function) {
  if (!function.starts_with(kPrefix) || function.find(' ') != std::string_view::npos) return false;
  const std::string name(function.substr(kPrefix.size()));
  return kFunctions.find(' ' + name + ' ') != std::string_view::npos;
}

}  // namespace simulator
