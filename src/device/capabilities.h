// The bits of the mask that CorvaneAPIGetDeviceCapabilitiesEx returns.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"

inline constexpr uint32_t kBasic = 0x1;
inline constexpr uint32_t kDualPorts = 0x2;
inline constexpr uint32_t kSpanMode = 0x4;
inline constexpr uint32_t kGps = 0x8;
inline constexpr uint32_t kUpdate = 0x10;
inline constexpr uint32_t kPoe = 0x20;
inline constexpr uint32_t kSfp = 0x40;
inline constexpr uint32_t kFilter = 0x80;
inline constexpr uint32_t kStatisticsV1 = 0x100;
inline constexpr uint32_t kStatisticsV2 = 0x200;
inline constexpr uint32_t kSpeedControl = 0x400;
inline constexpr uint32_t kLoopback = 0x800;
inline constexpr uint32_t kPhy1 = 0x2000;
inline constexpr uint32_t kPhy2 = 0x4000;
inline constexpr uint32_t kPcapNg = 0x8000;
inline constexpr uint32_t kSlicingLength = 0x10000;
inline constexpr uint32_t kPhy3 = 0x20000;
inline constexpr uint32_t kMultipleHw = 0x40000;
inline constexpr uint32_t kFullFrames = 0x80000;
inline constexpr uint32_t kNtpTimestamps = 0x100000;
inline constexpr uint32_t kPacketTypeFilter = 0x200000;
inline constexpr uint32_t kPpsResolution5ns = 0x400000;
inline constexpr uint32_t kPpsResolution8ns = 0x800000;
inline constexpr uint32_t kAutonegotiation = 0x1000000;
// Tested by the filters, but without a label in the reports.
inline constexpr uint32_t kVlanFilter = 0x2000000;

struct Capability {
  uint32_t bit;
  const char* label;
  const char* legend;
};

// The capabilities that the reports name, in their order.
inline constexpr Capability kCapabilities[] = {
    {kBasic, "Basic", "Basic features, covers 'Features' and 'Capture' tabs in Corvane Manager"},
    {kDualPorts, "Dual ports", "The device has two network ports"},
    {kSpanMode, "Span mode", "The device supports span mode"},
    {kGps, "GPS", "The device has a timing board"},
    {kUpdate, "Update", "The device support firmware update (only using Corvane Manager)"},
    {kPoe, "PoE", "The device has a PoE board"},
    {kSfp, "SFP", "The device has SFP ports"},
    {kFilter, "Filter", "The device supports filtering"},
    {kStatisticsV1, "Statistics V1", "The device supports V1 statistics"},
    {kStatisticsV2, "Statistics V2", "The device supports V2 statistics"},
    {kSpeedControl, "Speed control", "The device can control network ports speed"},
    {kLoopback, "Loopback", "The device can set network ports in loopback mode"},
    {kPhy1, "Phy1", "The device uses a PHY1"},
    {kPhy2, "Phy2", "The device uses a PHY2"},
    {kPcapNg, "PcapNG", "The device can output pcap-ng data"},
    {kSlicingLength, "Slicing length", "The device can change packet slicing length"},
    {kPhy3, "Phy3", "The device uses a PHY3"},
    {kMultipleHw, "Multiple HW", "The device supports multiple HW firmwares"},
    {kFullFrames, "Capture full frames", "The device supports full frames direct capture"},
    {kNtpTimestamps, "Capture NTP disciplined timestamps",
     "The device supports NTP disciplined timestamps"},
    {kPacketTypeFilter, "Packet type filter", "The device supports packets type filtering"},
    {kPpsResolution5ns, "PPS Resolution 5ns", "PPS resolution is 5ns"},
    {kPpsResolution8ns, "PPS Resolution 8ns", "PPS resolution is 8ns"},
    {kAutonegotiation, "10G/1G autonegotiation", "The device can control 1G autonegotiation"},
};

// True when the device has every one of the given bits.
inline bool Supports(DeviceHandle device, uint32_t bits) {
  return (CorvaneAPIGetDeviceCapabilitiesEx(device) & bits) == bits;
}
