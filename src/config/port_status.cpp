#include "config/port_status.h"

#include <algorithm>
#include <cstdio>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

// The word for a value of 0 or 1.
const char* Word(uint32_t value, const char* zero, const char* one) {
  if (value > 1) return "N/A";
  return value == 0 ? zero : one;
}

void PrintPort(int port, const LinkEntry& link, const PhyStatus& phy) {
  puts(port == 0 ? "Port A status:" : "Port B status:");
  printf("\tLink: %s\n", LinkName(link));
  printf("\tMaster/Slave: %s\n", Word(phy.slots[CORVANE_PHY_MASTER_SLAVE], "Master", "Slave"));
  printf("\tIdle Error Count: %u\n", phy.slots[CORVANE_PHY_IDLE_ERROR_COUNT] & 0xFF);
  for (int slot = 0; slot < CORVANE_PHY_SLOTS; ++slot) {
    if (kPhyFlags[slot] == nullptr) continue;
    printf("\t%s: %s\n", kPhyFlags[slot], Word(phy.slots[slot], "No", "Yes"));
  }
}

}  // namespace

const char* LinkName(const LinkEntry& link) {
  const bool full_duplex = link.duplex == 0;
  switch (link.speed) {
    case 0:
      return full_duplex ? "10Mbps_FDX" : "10Mbps_HDX";
    case 1:
      return full_duplex ? "100Mbps_FDX" : "100Mbps_HDX";
    case 2:
      return full_duplex ? "1Gbps_FDX" : "1Gbps_HDX";
    case 3:
      return full_duplex ? "10Gbps_FDX" : "10Gbps_HDX";
    case 5:
      return "Down";
    default:
      return "N/A";
  }
}

int PortStatus(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  FeaturesRecord features = {};
  int status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) {
    return Fail(status, "Could not get ports status: failed to get Corvane features configuration");
  }
  LinkStatusRecord ports = {};
  status = CorvaneAPIGetLinkStatus(session.device(), &ports);
  if (status != kSuccess) return Fail(status, "Could not get link status for ports status");
  if (ports.link_valid != 1 || ports.phy_valid != 1) {
    return Fail(kUnsupported,
                "Could not get ports status: your device does not support this feature");
  }
  const int count = std::min<int>(ports.phy_count, CORVANE_PORTS);
  for (int port = 0; port < count; ++port) {
    // In inline mode both ports are one link, port A's.
    const LinkEntry& link = ports.links[features.inline_ != 0 ? 0 : port];
    PrintPort(port, link, ports.phys[port]);
  }
  return kSuccess;
}

}  // namespace corvane
