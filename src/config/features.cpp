#include <iterator>

#include "device/capabilities.h"
#include "device/report.h"
#include "device/session.h"
#include "device/status.h"
#include "shell/handlers.h"

namespace {

constexpr uint16_t kFixedSlice = 128;
constexpr uint8_t kFirmware10G = 0;
constexpr uint8_t kFirmware1G = 1;

struct SwitchField {
  const char* key;
  uint32_t FeaturesRecord::*field;
};

constexpr SwitchField kSwitchesBeforeSlicing[] = {
    {"transmitcrcerrors", &FeaturesRecord::transmitcrcerrors},
    {"keepcrc32", &FeaturesRecord::keepcrc32},
    {"disablea", &FeaturesRecord::disablea},
    {"disableb", &FeaturesRecord::disableb},
};

constexpr SwitchField kSwitchesAfterLoopback[] = {
    {"ts", &FeaturesRecord::ts},
    {"syncts", &FeaturesRecord::syncts},
};

template <size_t kCount>
void ApplySwitches(const CommandNode& leaf, const SwitchField (&switches)[kCount],
                   FeaturesRecord& features) {
  for (const SwitchField& s : switches) ApplySwitch(leaf, s.key, features.*s.field);
}

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

// False when the device's type, which decides about the length, cannot be read.
bool ApplySlicing(const CommandNode& leaf, DeviceHandle device, FeaturesRecord& features) {
  if (!IsGiven(leaf, "slicing")) return true;
  features.slicing_size = static_cast<uint16_t>(Integer(leaf, "slicing", 0));
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
  ApplySwitch(leaf, "loopback", features.loopback);
  if (OnOff(leaf, "loopback") == 1 && (capabilities & kLoopback) == 0) {
    puts("Warning : Your device does not support loopback mode.");
    features.loopback = 0;
  }
}

void ApplyAutoneg(const CommandNode& leaf, const char* key, uint32_t capabilities,
                  const char* warning, uint32_t& field) {
  if ((capabilities & kAutonegotiation) != 0) {
    ApplySwitch(leaf, key, field);
  } else if (OnOff(leaf, key) != kNotGiven) {
    puts(warning);
  }
}

// True when another firmware was chosen, which the device loads only when it restarts.
bool ApplyFirmwareMode(const CommandNode& leaf, uint32_t capabilities, FeaturesRecord& features) {
  const std::string mode = TextOr(leaf, "firmware_mode", "");
  uint8_t index = features.firmware_index;
  if (mode == "1G") index = kFirmware1G;
  if (mode == "10G") index = kFirmware10G;
  if (index == features.firmware_index) return false;
  if ((capabilities & kMultipleHw) == 0) {
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

void PrintSwitch(const char* label, uint32_t field) {
  printf("\t%s : %s\n", label, EnabledOrDisabled(field == 1));
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
  PrintSwitch("Transmit CRC errors", features.transmitcrcerrors);
  PrintSwitch("Keep CRC32 field", features.keepcrc32);
  PrintSwitch("Disable port A", features.disablea);
  PrintSwitch("Disable port B", features.disableb);
  printf("\tPacket slicing : %s %u bytes\n", EnabledOrDisabled(features.slicing == 1),
         features.slicing_size);
  if ((capabilities & kSpanMode) != 0) {
    PrintSwitch("Inline mode", features.inline_);
  } else {
    puts("\tInline mode : Enabled (forced)");
  }
  if ((capabilities & kLoopback) != 0) {
    PrintSwitch("Loopback", features.loopback);
  } else {
    puts("\tLoopback : Disabled (forced)");
  }
  PrintSwitch("Timestamps in packets", features.ts);
  PrintSwitch("Synchronized timestamps", features.syncts);
  if ((capabilities & kAutonegotiation) != 0) {
    PrintSwitch("Port A autonegotiation", features.autonega);
    PrintSwitch("Port B autonegotiation", features.autonegb);
  }
}

}  // namespace

int FeaturesSet(const CommandNode& leaf) {
  Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const DeviceHandle device = session.device();
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(device);
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(device, &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane Features configuration");

  ApplySwitches(leaf, kSwitchesBeforeSlicing, features);
  if (!ApplySlicing(leaf, device, features)) {
    // Kept for the scripts that rely on it: success, and the library stays open.
    session.LeaveOpen();
    puts("Error");
    return kSuccess;
  }
  ApplySwitch(leaf, "inline", features.inline_);
  ApplyLoopback(leaf, capabilities, features);
  ApplySwitches(leaf, kSwitchesAfterLoopback, features);
  ApplyAutoneg(leaf, "autonega", capabilities,
               "Warning : Your device does not support SFP port A autoneg.", features.autonega);
  ApplyAutoneg(leaf, "autonegb", capabilities,
               "Warning : Your device does not support SFP port B autoneg.", features.autonegb);
  const bool restart = ApplyFirmwareMode(leaf, capabilities, features);

  status = CorvaneAPISetDeviceFeatures(device, features);
  if (status != kSuccess) return Fail(status, "Failed to set Corvane Features configuration");
  return restart ? SaveAndRestart(device) : kSuccess;
}

int FeaturesSave(const CommandNode& leaf) {
  const Session session(leaf);
  return session.has_device() ? Save(session.device()) : kNoDevice;
}

int FeaturesShow(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  const uint32_t capabilities = CorvaneAPIGetDeviceCapabilitiesEx(session.device());
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane Features configuration");

  const bool multiple_firmwares = (capabilities & kMultipleHw) != 0;
  HwFirmwaresDesc firmwares = {};
  if (multiple_firmwares) {
    status = CorvaneAPIGetHwFirmwaresDesc(session.device(), &firmwares);
    if (status != kSuccess) return Fail(status, "Failed to get Corvane firmware description");
  }
  PrintFeatures(features, capabilities);
  if (multiple_firmwares) PrintFirmware(features, firmwares);
  return kSuccess;
}
