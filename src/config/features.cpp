#include "config/features.h"

#include <cstdio>
#include <iterator>
#include <string>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr uint16_t kFixedSlice = 128;
constexpr uint8_t kFirmware10G = 0;
constexpr uint8_t kFirmware1G = 1;

// The models whose slicer knows one length only.
bool HasFixedSlicer(int32_t type_code) {
  switch (type_code) {
    case 3:
    case 6:
    case 9:
    case 13:
    case 14:
    case 15:
    case 16:
    case 17:
    case 18:
      return true;
    default:
      return false;
  }
}

// False when the device's type, which determines the length, cannot be read.
bool ApplySlicing(const CommandNode& leaf, DeviceHandle device, FeaturesRecord& features) {
  if (!IsGiven(leaf, kSlicingLength.key)) return true;
  features.slicing_size = static_cast<uint16_t>(Integer(leaf, kSlicingLength.key, 0));
  features.slicing = features.slicing_size != 0 ? 1 : 0;
  if (features.slicing_size == 0 || features.slicing_size == kFixedSlice) return true;

  int32_t type_code = 0;
  if (CorvaneAPIGetDeviceType(device, &type_code) != kSuccess) return false;
  if (HasFixedSlicer(type_code)) {
    puts(
        "Warning : Your device does not support slicing other than 128 Bytes. Setting slicing size "
        "to 128");
    features.slicing_size = kFixedSlice;
  }
  return true;
}

void ApplyLoopback(const CommandNode& leaf, uint32_t capabilities, FeaturesRecord& features) {
  ApplySwitch(leaf, kLoopbackMode, features);
  if (OnOff(leaf, kLoopbackMode.parameter.key) == 1 && !Offers(capabilities, kLoopbackMode)) {
    puts("Warning : Your device does not support loopback mode.");
    features.loopback = 0;
  }
}

void ApplyAutonegotiation(const CommandNode& leaf, uint32_t capabilities,
                          FeaturesRecord& features) {
  char port = 'A';
  for (const FeatureSwitch& row : kAutonegotiationSwitches) {
    if (Offers(capabilities, row)) {
      ApplySwitch(leaf, row, features);
    } else if (OnOff(leaf, row.parameter.key) != kNotGiven) {
      printf("Warning : Your device does not support SFP port %c autoneg.\n", port);
    }
    ++port;
  }
}

// True when another firmware was chosen, which the device loads only when it restarts.
bool ApplyFirmwareMode(const CommandNode& leaf, uint32_t capabilities, FeaturesRecord& features) {
  const std::string mode = TextOr(leaf, kFirmwareMode.key, "");
  uint8_t index = features.firmware_index;
  if (mode == "1G") index = kFirmware1G;
  if (mode == "10G") index = kFirmware10G;
  if (index == features.firmware_index) return false;
  if ((capabilities & CORVANE_CAP_MULTIPLE_HW) == 0) {
    puts("Warning : Your device does not support multiple HW firmware.");
    return false;
  }
  features.firmware_index = index;
  return true;
}

int Save(DeviceHandle device) {
  const int status = CorvaneAPISaveDeviceFeatures(device);
  if (status != kSuccess) puts("Failed to save Corvane Features configuration");
  return status;
}

int SaveAndRestart(DeviceHandle device) {
  const int saved = Save(device);
  if (saved != kSuccess) return saved;
  const int restarted = CorvaneAPIRestartDevice(device);
  if (restarted != kSuccess) puts("Failed to reset Corvane device");
  return restarted;
}

void PrintSwitch(const FeatureSwitch& row, const FeaturesRecord& features) {
  printf("\t%s : %s\n", row.label, EnabledOrDisabled(features.*row.field == 1));
}

// A device without the capability does as it must, whatever the record holds.
void PrintSwitchOr(const char* forced, const FeatureSwitch& row, uint32_t capabilities,
                   const FeaturesRecord& features) {
  if (Offers(capabilities, row)) {
    PrintSwitch(row, features);
  } else {
    printf("\t%s : %s (forced)\n", row.label, forced);
  }
}

void PrintFirmware(const FeaturesRecord& features, const HwFirmwaresDesc& firmwares) {
  const uint8_t index = features.firmware_index;
  const bool valid = index < firmwares.count && index < std::size(firmwares.names);
  if (!valid) {
    puts("\tLoaded firmware: INVALID");
    return;
  }
  const auto& name = firmwares.names[index];
  printf("\tLoaded firmware: %.*s\n", TextLength(name), name);
}

void PrintFeatures(const FeaturesRecord& features, uint32_t capabilities) {
  puts("Features Configuration : ");
  for (const FeatureSwitch& row : kFrameSwitches) PrintSwitch(row, features);
  printf("\tPacket slicing : %s %u bytes\n", EnabledOrDisabled(features.slicing == 1),
         features.slicing_size);
  PrintSwitchOr("Enabled", kInlineMode, capabilities, features);
  PrintSwitchOr("Disabled", kLoopbackMode, capabilities, features);
  for (const FeatureSwitch& row : kTimestampSwitches) PrintSwitch(row, features);
  for (const FeatureSwitch& row : kAutonegotiationSwitches) {
    if (Offers(capabilities, row)) PrintSwitch(row, features);
  }
}

}  // namespace

int FeaturesSet(const CommandNode& leaf) {
  Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const DeviceHandle device = session.device();
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(device);
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(device, &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane Features configuration");

  ApplySwitches(leaf, kFrameSwitches, features);
  if (!ApplySlicing(leaf, device, features)) {
    // Kept for the scripts that rely on it: success, and the library stays open.
    session.LeaveOpen();
    puts("Error");
    return kSuccess;
  }
  ApplySwitch(leaf, kInlineMode, features);
  ApplyLoopback(leaf, capabilities, features);
  ApplySwitches(leaf, kTimestampSwitches, features);
  ApplyAutonegotiation(leaf, capabilities, features);
  const bool restart = ApplyFirmwareMode(leaf, capabilities, features);

  status = CorvaneAPISetDeviceFeatures(device, features);
  if (status != kSuccess) return Fail(status, "Failed to set Corvane Features configuration");
  return restart ? SaveAndRestart(device) : kSuccess;
}

int FeaturesSave(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  return session.has_device() ? Save(session.device()) : kNoDevice;
}

int FeaturesShow(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane Features configuration");

  const bool multiple_firmwares = (capabilities & CORVANE_CAP_MULTIPLE_HW) != 0;
  HwFirmwaresDesc firmwares = {};
  if (multiple_firmwares) {
    status = CorvaneAPIGetHwFirmwaresDesc(session.device(), &firmwares);
    if (status != kSuccess) return Fail(status, "Failed to get Corvane firmware description");
  }
  PrintFeatures(features, capabilities);
  if (multiple_firmwares) PrintFirmware(features, firmwares);
  return kSuccess;
}

}  // namespace corvane
