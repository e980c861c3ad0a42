// What a device can do, as the reports say it.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"

namespace corvane {

struct Capability {
  uint32_t bit;
  const char* label;
  const char* legend;
};

// The capabilities that the reports name, in their order.
inline constexpr Capability kCapabilities[] = {
    {CORVANE_CAP_BASIC, "Basic",
     "Basic features, covers 'Features' and 'Capture' tabs in Corvane Manager"},
    {CORVANE_CAP_DUAL_PORTS, "Dual ports", "The device has two network ports"},
    {CORVANE_CAP_SPAN_MODE, "Span mode", "The device supports span mode"},
    {CORVANE_CAP_GPS, "GPS", "The device has a timing board"},
    {CORVANE_CAP_UPDATE, "Update",
     "The device support firmware update (only using Corvane Manager)"},
    {CORVANE_CAP_POE, "PoE", "The device has a PoE board"},
    {CORVANE_CAP_SFP, "SFP", "The device has SFP ports"},
    {CORVANE_CAP_FILTER, "Filter", "The device supports filtering"},
    {CORVANE_CAP_STATISTICS_V1, "Statistics V1", "The device supports V1 statistics"},
    {CORVANE_CAP_STATISTICS_V2, "Statistics V2", "The device supports V2 statistics"},
    {CORVANE_CAP_SPEED_CONTROL, "Speed control", "The device can control network ports speed"},
    {CORVANE_CAP_LOOPBACK, "Loopback", "The device can set network ports in loopback mode"},
    {CORVANE_CAP_PHY1, "Phy1", "The device uses a PHY1"},
    {CORVANE_CAP_PHY2, "Phy2", "The device uses a PHY2"},
    {CORVANE_CAP_PCAPNG, "PcapNG", "The device can output pcap-ng data"},
    {CORVANE_CAP_SLICING_LENGTH, "Slicing length", "The device can change packet slicing length"},
    {CORVANE_CAP_PHY3, "Phy3", "The device uses a PHY3"},
    {CORVANE_CAP_MULTIPLE_HW, "Multiple HW", "The device supports multiple HW firmwares"},
    {CORVANE_CAP_FULL_FRAMES, "Capture full frames",
     "The device supports full frames direct capture"},
    {CORVANE_CAP_NTP_TIMESTAMPS, "Capture NTP disciplined timestamps",
     "The device supports NTP disciplined timestamps"},
    {CORVANE_CAP_PACKET_TYPE_FILTER, "Packet type filter",
     "The device supports packets type filtering"},
    {CORVANE_CAP_PPS_RESOLUTION_5NS, "PPS Resolution 5ns", "PPS resolution is 5ns"},
    {CORVANE_CAP_PPS_RESOLUTION_8NS, "PPS Resolution 8ns", "PPS resolution is 8ns"},
    {CORVANE_CAP_AUTONEGOTIATION, "10G/1G autonegotiation",
     "The device can control 1G autonegotiation"},
};

// True when the device has every one of the given bits.
inline bool Supports(DeviceHandle device, uint32_t bits) {
  return (CorvaneAPIGetDeviceCapabilitiesEx(device) & bits) == bits;
}

}  // namespace corvane
