// Features of a device.
#pragma once

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

using FeatureSwitch = SwitchRow<FeaturesRecord>;

inline constexpr FeatureSwitch kFrameSwitches[] = {
    {SwitchSpec("transmitcrcerrors", "keepcrcerrors", "Keep packets with CRC errors"),
     "Transmit CRC errors", &FeaturesRecord::transmitcrcerrors},
    {SwitchSpec("keepcrc32", "Keep CRC32 filed in captured data"), "Keep CRC32 field",
     &FeaturesRecord::keepcrc32},
    {SwitchSpec("disablea", "Disable port A"), "Disable port A", &FeaturesRecord::disablea},
    {SwitchSpec("disableb", "Disable port B"), "Disable port B", &FeaturesRecord::disableb},
};

inline constexpr ParameterSpec kSlicingLength =
    IntegerSpec("slicing", "<length>", "Length of sliced packed. 0 to disable slicing.");

// A device without the capability is always inline. The switch is written all the same, and the
// report says what the device does.
inline constexpr FeatureSwitch kInlineMode = {
    SwitchSpec("inline", "Enable inline mode. If cleared, the device operates in span mode."),
    "Inline mode", &FeaturesRecord::inline_, CORVANE_CAP_SPAN_MODE};

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

inline constexpr ParameterSpec kFirmwareMode = PatternSpec(
    "firmware_mode", "firmware_mode", "^1G|10G$", "<1G|10G>", 1,
    "Device firmware (using this switch will save the features and reset the device)\n");

inline constexpr auto kFeatureParameters =
    Parameters(kFrameSwitches, kSlicingLength, kInlineMode, kLoopbackMode, kTimestampSwitches,
               kAutonegotiationSwitches, kFirmwareMode);

int FeaturesSet(const CommandNode& leaf);
int FeaturesSave(const CommandNode& leaf);  // serves portcontrol save too
int FeaturesShow(const CommandNode& leaf);

}  // namespace corvane
