// Features of a device.
#pragma once

#include <cstddef>

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kFeaturesCommand = "features";

using FeatureSwitch = SwitchRow<FeaturesRecord>;

inline constexpr FeatureSwitch kFrameSwitches[] = {
    {SwitchSpec("transmitcrcerrors", "keepcrcerrors", "Keep packets with CRC errors"),
     "Transmit CRC errors", &FeaturesRecord::transmitcrcerrors},
    {SwitchSpec("keepcrc32", "Keep CRC32 filed in captured data"), "Keep CRC32 field",
     &FeaturesRecord::keepcrc32},
    {SwitchSpec("disablea", "Disable port A"), "Disable port A", &FeaturesRecord::disablea},
    {SwitchSpec("disableb", "Disable port B"), "Disable port B", &FeaturesRecord::disableb},
};

// A length; 0, or "off" with a length that the device keeps, when slicing is off.
std::optional<Value> ShowSlicing(const FeaturesRecord& features);
std::string StoreSlicing(const Value& value, const DeviceKind& device, FeaturesRecord& features);

inline constexpr CodecRow<FeaturesRecord> kSlicing = {
    IntegerSpec("slicing", "<length>", "Length of sliced packed. 0 to disable slicing."),
    ShowSlicing,
    StoreSlicing,
    {{{offsetof(FeaturesRecord, slicing), sizeof FeaturesRecord::slicing},
      {offsetof(FeaturesRecord, slicing_size), sizeof FeaturesRecord::slicing_size}}}};

// A device without the capability is always inline. The switch is written all the same, and the
// report says what the device does.
inline constexpr FeatureSwitch kInlineMode = {
    SwitchSpec("inline", "Enable inline mode. If cleared, the device operates in span mode."),
    "Inline mode", &FeaturesRecord::inline_, CORVANE_CAP_SPAN_MODE, Without::kAnything};

inline constexpr FeatureSwitch kLoopbackMode = {SwitchSpec("loopback", "Enable loopback"),
                                                "Loopback", &FeaturesRecord::loopback,
                                                CORVANE_CAP_LOOPBACK};

inline constexpr FeatureSwitch kTimestampSwitches[] = {
    {SwitchSpec("ts", "timestamps", "Enable precise timestamps in packets"),
     "Timestamps in packets", &FeaturesRecord::ts},
    {SwitchSpec("syncts", "Synchronize timestamps with host"), "Synchronized timestamps",
     &FeaturesRecord::syncts},
};

// In the order of the ports.
inline constexpr FeatureSwitch kAutonegotiationSwitches[] = {
    {SwitchSpec("autonega", "Enable SFP port A 1G autoneg"), "Port A autonegotiation",
     &FeaturesRecord::autonega, CORVANE_CAP_AUTONEGOTIATION},
    {SwitchSpec("autonegb", "Enable SFP port B 1G autoneg"), "Port B autonegotiation",
     &FeaturesRecord::autonegb, CORVANE_CAP_AUTONEGOTIATION},
};

std::optional<Value> ShowFirmwareMode(const FeaturesRecord& features);
std::string StoreFirmwareMode(const Value& value, const DeviceKind& device,
                              FeaturesRecord& features);

inline constexpr CodecRow<FeaturesRecord> kFirmwareMode = {
    PatternSpec(
        "firmware_mode", "firmware_mode", "^1G|10G$", "<1G|10G>", 1,
        "Device firmware (using this switch will save the features and reset the device)\n"),
    ShowFirmwareMode,
    StoreFirmwareMode,
    {{{offsetof(FeaturesRecord, firmware_index), sizeof FeaturesRecord::firmware_index}}},
    CORVANE_CAP_MULTIPLE_HW};

inline constexpr auto kFeatureRows =
    std::tie(kFrameSwitches, kSlicing, kInlineMode, kLoopbackMode, kTimestampSwitches,
             kAutonegotiationSwitches, kFirmwareMode);
inline constexpr auto kFeatureParameters = ParametersOf(kFeatureRows);

int FeaturesSet(const CommandNode& leaf);
int FeaturesSave(const CommandNode& leaf);  // serves portcontrol save too
int FeaturesShow(const CommandNode& leaf);

}  // namespace corvane
