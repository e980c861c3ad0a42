// The link status, of which some fields follow the rest of the device.
#include "model/device_records.h"
#include "records/factory_status.h"

namespace simulator {
namespace {

constexpr int32_t kLinkDown = 5;

// The speeds to which a port can be forced, and the link that results.
struct ForcedSpeed {
  uint32_t PortControl::*field;
  int32_t speed;
  uint32_t duplex;
};

constexpr ForcedSpeed kForcedSpeeds[] = {
    {&PortControl::_100txfd, 1, 0},
    {&PortControl::_100txhd, 1, 1},
    {&PortControl::_10txfd, 0, 0},
    {&PortControl::_10txhd, 0, 1},
};

// The speed to which the port is forced; null when it negotiates, or is set to no speed or to
// several.
const ForcedSpeed* FindForcedSpeed(const PortControl& port) {
  if (port.autoneg != 0) return nullptr;
  const ForcedSpeed* found = nullptr;
  for (const ForcedSpeed& forced : kForcedSpeeds) {
    if (port.*forced.field != 1) continue;
    if (found != nullptr) return nullptr;
    found = &forced;
  }
  return found;
}

void FollowSpeed(const PortControl& port, LinkEntry& link) {
  const ForcedSpeed* forced = FindForcedSpeed(port);
  if (forced == nullptr || link.speed == kLinkDown) return;
  link.speed = forced->speed;
  link.duplex = forced->duplex;
}

// Where the PHY's status says what the port advertises.
struct Advertisement {
  uint32_t slot;
  uint32_t PortControl::*field;
};

constexpr Advertisement kAdvertisements[] = {
    {5, &PortControl::_1000txfd}, {7, &PortControl::_100txfd}, {8, &PortControl::_100txhd},
    {9, &PortControl::_10txfd},   {10, &PortControl::_10txhd}, {11, &PortControl::asympause},
    {12, &PortControl::sympause},
};

void FollowAdvertisements(const PortControl& port, PhyStatus& phy) {
  for (const Advertisement& advertisement : kAdvertisements) {
    uint32_t& slot = phy.slots[advertisement.slot];
    if (slot == kLive) slot = port.*advertisement.field;
  }
}

void FollowMode(const FeaturesRecord& features, SfpInfo& sfp) {
  if (static_cast<uint32_t>(sfp.mode) == kLive) sfp.mode = features.inline_ != 0 ? 0 : 1;
}

void Disconnect(LinkEntry& link, SfpInfo& sfp) {
  link.speed = kLinkDown;
  sfp.link_up = 0;
}

}  // namespace

LinkStatusRecord CurrentLinkStatus(Call& call) {
  auto status = Current<LinkStatusRecord>(call, "link_status");
  if (IsGivenRaw(call, "link_status")) return status;
  const auto features = Current<FeaturesRecord>(call, "features");
  const auto speeds = Current<PortsSpeedRecord>(call, "ports_speed");
  const bool disabled[] = {features.disablea == 1, features.disableb == 1};
  for (int i = 0; i < CORVANE_PORTS; ++i) {
    FollowSpeed(speeds.ports[i], status.links[i]);
    FollowAdvertisements(speeds.ports[i], status.phys[i]);
    FollowMode(features, status.sfps[i]);
    if (disabled[i]) Disconnect(status.links[i], status.sfps[i]);
  }
  return status;
}

}  // namespace simulator
