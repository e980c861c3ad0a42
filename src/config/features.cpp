#include "config/features.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr uint16_t kFixedSlice = 128;
// By their index.
constexpr std::string_view kFirmwareModes[] = {"10G", "1G"};
constexpr const char* kOffWithLength = "off ";

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

void SetSlicing(uint16_t length, FeaturesRecord& features) {
  features.slicing_size = length;
  features.slicing = length != 0 ? 1 : 0;
}

// False when the device's type, which determines the length, cannot be read.
bool ApplySlicing(const CommandNode& leaf, DeviceHandle device, FeaturesRecord& features) {
  if (!IsGiven(leaf, kSlicing.parameter.key)) return true;
  SetSlicing(static_cast<uint16_t>(Integer(leaf, kSlicing.parameter.key, 0)), features);
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

std::optional<uint8_t> FirmwareIndex(const std::string& mode) {
  const auto* found = std::ranges::find(kFirmwareModes, mode);
  if (found == std::end(kFirmwareModes)) return std::nullopt;
  return static_cast<uint8_t>(found - std::begin(kFirmwareModes));
}

// True when another firmware was chosen, which the device loads only when it restarts.
bool ApplyFirmwareMode(const CommandNode& leaf, uint32_t capabilities, FeaturesRecord& features) {
  const auto index = FirmwareIndex(TextOr(leaf, kFirmwareMode.parameter.key, ""));
  if (!index || *index == features.firmware_index) return false;
  if ((capabilities & kFirmwareMode.needs) == 0) {
    puts("Warning : Your device does not support multiple HW firmware.");
    return false;
  }
  features.firmware_index = *index;
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

std::optional<Value> ShowSlicing(const FeaturesRecord& features) {
  if (features.slicing == 0 && features.slicing_size != 0) {
    return kOffWithLength + std::to_string(features.slicing_size);
  }
  return int64_t{features.slicing_size};
}

std::string StoreSlicing(const Value& value, const DeviceKind& device, FeaturesRecord& features) {
  const auto* text = std::get_if<std::string>(&value);
  if (text != nullptr && text->starts_with(kOffWithLength)) {
    unsigned length = 0;
    char more = 0;
    if (sscanf(text->c_str() + strlen(kOffWithLength), "%5u%c", &length, &more) == 1 &&
        length <= UINT16_MAX) {
      features.slicing = 0;
      features.slicing_size = static_cast<uint16_t>(length);
      return "";
    }
  }
  const auto length = NumberIn(value, 0, UINT16_MAX);
  if (!length) return "a length from 0 (off) to 65535, or \"off \" and a length";
  if (*length != 0 && *length != kFixedSlice && HasFixedSlicer(device.type_code)) {
    return "0 or 128, the only length of this device";
  }
  SetSlicing(static_cast<uint16_t>(*length), features);
  return "";
}

std::optional<Value> ShowFirmwareMode(const FeaturesRecord& features) {
  const uint8_t index = features.firmware_index;
  return index < std::size(kFirmwareModes)
             ? std::optional<Value>(std::string(kFirmwareModes[index]))
             : std::nullopt;
}

std::string StoreFirmwareMode(const Value& value, const DeviceKind&, FeaturesRecord& features) {
  const auto* mode = std::get_if<std::string>(&value);
  const auto index = mode == nullptr ? std::nullopt : FirmwareIndex(*mode);
  if (!index) return std::string("one of ") + kFirmwareMode.parameter.datatype;
  features.firmware_index = *index;
  return "";
}

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
