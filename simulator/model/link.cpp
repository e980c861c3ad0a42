#include "model/link.h"

#include <net/if.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "device/capabilities.h"
#include "model/capture.h"
#include "model/device_records.h"
#include "records/factory_status.h"
#include "records/surroundings.h"

namespace simulator {
namespace {

enum : int32_t { k10Mbps, k100Mbps, k1Gbps, k10Gbps };

constexpr uint32_t kCopper = CORVANE_CAP_PHY1 | CORVANE_CAP_PHY2 | CORVANE_CAP_PHY3;

// What decides about a port's link.
struct PortFacts {
  PortControl own;
  PortControl partner;
  FeaturesRecord features;
  const LinkEntry* given;  // a configuration file can fix speed and duplex
  const SfpInfo* sfp;      // of a fibre port
  bool has_module;         // in the cage
  uint32_t capabilities;
  bool sfp_autoneg;  // the port's own switch
};

// ---- Copper

// The modes of a link, the best first.
struct Mode {
  uint32_t PortControl::*field;
  int32_t speed;
  bool full_duplex;
};

constexpr Mode kModes[] = {
    {&PortControl::_1000txfd, k1Gbps, true},   {&PortControl::_100txfd, k100Mbps, true},
    {&PortControl::_100txhd, k100Mbps, false}, {&PortControl::_10txfd, k10Mbps, true},
    {&PortControl::_10txhd, k10Mbps, false},
};

// The best mode that both have; null when there is none.
const Mode* CommonMode(const PortControl& one, const PortControl& other) {
  for (const Mode& mode : kModes) {
    if (one.*mode.field == 1 && other.*mode.field == 1) return &mode;
  }
  return nullptr;
}

// The mode to which an end is forced that does not negotiate: one, and not gigabit.
const Mode* ForcedMode(const PortControl& end) {
  const Mode* forced = nullptr;
  for (const Mode& mode : kModes) {
    if (end.*mode.field != 1) continue;
    if (forced != nullptr || mode.speed == k1Gbps) return nullptr;
    forced = &mode;
  }
  return forced;
}

bool CanDo(const PortControl& end, int32_t speed) {
  return std::ranges::any_of(
      kModes, [&](const Mode& mode) { return mode.speed == speed && end.*mode.field == 1; });
}

// A role that is forced wins over a preference. Two ends that say the same draw lots: port A is
// the master, port B the slave.
void ResolveRole(const PortControl& own, const PortControl& partner, size_t port, Link& link) {
  const bool own_forces = own.forcerole == 1;
  const bool partner_forces = partner.forcerole == 1;
  const bool same = own.prefmaster == partner.prefmaster;
  link.role_fault = own_forces && partner_forces && same;
  if (link.role_fault) link.speed = kLinkDown;
  bool master = own.prefmaster == 1;
  if (partner_forces && !own_forces) master = partner.prefmaster != 1;
  if (same && !own_forces && !partner_forces) master = port == 0;
  link.role = master ? 0 : 1;
}

// An end that negotiates finds out the speed of one that does not, but not its duplex, and takes
// half duplex.
void AgreeOnCopper(const PortFacts& facts, size_t port, Link& link) {
  const bool own = facts.own.autoneg == 1;
  const bool partner = facts.partner.autoneg == 1;
  const bool detects = own && !partner;
  link.negotiated = own && partner;
  const Mode* mode = link.negotiated ? CommonMode(facts.own, facts.partner)
                                     : ForcedMode(own ? facts.partner : facts.own);
  bool fits = mode != nullptr;
  if (fits && !link.negotiated) fits = CanDo(own ? facts.own : facts.partner, mode->speed);
  if (fits && !own && !partner) fits = ForcedMode(facts.partner) != nullptr;
  link.detection_fault = detects && !fits;
  if (!fits) return;
  link.speed = mode->speed;
  link.full_duplex = mode->full_duplex && !detects;
  if (link.negotiated && mode->speed == k1Gbps) ResolveRole(facts.own, facts.partner, port, link);
}

// ---- Fibre

bool HasLight(const SfpInfo& sfp) {
  const float received = sfp.ddm.measured.rx_power;
  return received > 0 && received >= sfp.ddm.low_alarm.rx_power;
}

// The hardware firmware decides about the speed. The rate of the module, in units of 100 MBd, must
// be enough; 0 says nothing.
int32_t FibreSpeed(const PortFacts& facts) {
  const bool gigabit =
      (facts.capabilities & CORVANE_CAP_MULTIPLE_HW) != 0 && facts.features.firmware_index == 1;
  const int32_t rate = facts.sfp->nominal_rate;
  if (rate > 0 && rate < (gigabit ? 10 : 100)) return kLinkDown;
  if (!gigabit) return k10Gbps;
  const bool can_choose = (facts.capabilities & CORVANE_CAP_AUTONEGOTIATION) != 0;
  if (can_choose && facts.sfp_autoneg != (facts.partner.autoneg == 1)) return kLinkDown;
  return facts.partner._1000txfd == 1 ? k1Gbps : kLinkDown;
}

void AgreeOnFibre(const PortFacts& facts, Link& link) {
  const SfpInfo& sfp = *facts.sfp;
  const bool given = sfp.link_up != kLiveByte;
  if (!facts.has_module) return;
  if (given ? sfp.link_up != 0 : HasLight(sfp)) link.speed = FibreSpeed(facts);
  link.over_fibre = link.speed != kLinkDown;
}

// ---- Both

// A file or an interface that is not there. A capture that runs has it, even where this program
// cannot see it: a network namespace has interfaces of its own.
bool SourceIsMissing(const Call& call, const PortSource& source) {
  bool missing = false;
  if (source.kind == SourceKind::kPcap) missing = access(source.file.c_str(), R_OK) != 0;
  if (source.kind == SourceKind::kInterface) {
    missing = if_nametoindex(source.interface.c_str()) == 0;
  }
  return missing && !CaptureIsRunning(CapturePlaceOf(call));
}

// Before anything is agreed on: there must be a port, a cable and something at its other end.
bool CanLink(const Call& call, const FeaturesRecord& features, const Surroundings& around,
             size_t port) {
  if (port == 1 && !HasCapability(call, CORVANE_CAP_DUAL_PORTS)) return false;
  const bool disabled = (port == 0 ? features.disablea : features.disableb) == 1;
  return !disabled && around.cables[port] != 0 && !SourceIsMissing(call, call.device.ports[port]);
}

Link LinkOf(const PortFacts& facts, size_t port) {
  Link link;
  const bool has_fibre = (facts.capabilities & CORVANE_CAP_SFP) != 0;
  const bool has_copper = (facts.capabilities & kCopper) != 0;
  if (has_fibre) AgreeOnFibre(facts, link);
  if (has_copper && link.speed == kLinkDown) AgreeOnCopper(facts, port, link);
  if (!has_fibre && !has_copper) link.speed = k10Gbps;  // no report tells
  const auto speed = static_cast<uint32_t>(facts.given->speed);
  if (speed != kLive) link.speed = facts.given->speed;
  if (facts.given->duplex != kLive) link.full_duplex = facts.given->duplex == 0;
  return link;
}

Links LinksOf(Call& call, const LinkStatusRecord& status) {
  const auto features = Current<FeaturesRecord>(call, "features");
  const auto speeds = Current<PortsSpeedRecord>(call, "ports_speed");
  const auto around = Current<Surroundings>(call, "surroundings");
  Links links;
  for (size_t port = 0; port < CORVANE_PORTS; ++port) {
    if (!CanLink(call, features, around, port)) continue;
    const uint32_t autoneg = port == 0 ? features.autonega : features.autonegb;
    const PortFacts facts = {
        speeds.ports[port],       around.partners[port], features,
        &status.links[port],      &status.sfps[port],    around.modules[port] != 0,
        call.device.capabilities, autoneg == 1};
    links[port] = LinkOf(facts, port);
  }
  const bool copper = HasCapability(call, kCopper) && !links[0].over_fibre && !links[1].over_fibre;
  const bool one_down = links[0].speed == kLinkDown || links[1].speed == kLinkDown;
  if (copper && one_down && HasCapability(call, CORVANE_CAP_DUAL_PORTS) && IsInline(call)) {
    for (Link& link : links) link.speed = kLinkDown;  // both ports form one link
  }
  return links;
}

// ---- Reports

// The ten alarms and warnings in the order of the bits, then what the module can tell.
uint32_t SfpFlags(const SfpInfo& sfp) {
  constexpr uint32_t kStatusBits = 0x1C00;
  constexpr int kQuantities = sizeof(SfpQuantities) / sizeof(float);
  const auto& ddm = sfp.ddm;
  const SfpQuantities groups[] = {ddm.measured, ddm.low_alarm, ddm.high_alarm, ddm.low_warning,
                                  ddm.high_warning};
  float values[std::size(groups)][kQuantities];
  memcpy(values, groups, sizeof values);
  uint32_t flags = kStatusBits;
  for (int group : {1, 3}) {
    for (int i = 0; i < kQuantities; ++i) {
      const float value = values[0][i];
      const bool beyond = value < values[group][i] || value > values[group + 1][i];
      if (beyond) flags |= 1U << (group / 2 * kQuantities + i);
    }
  }
  return flags;
}

void FillModule(const Link& link, bool is_inline, SfpInfo& sfp) {
  FillLive(sfp.link_up, 1);
  if (link.speed == kLinkDown || !link.over_fibre) sfp.link_up = 0;
  FillLive(sfp.flags, SfpFlags(sfp));
  FillLive(sfp.mode, is_inline ? 0 : 1);
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

void FillPhy(const Link& link, const PortControl& own, PhyStatus& phy) {
  FillLive(phy.slots[CORVANE_PHY_MASTER_SLAVE], link.role);
  const uint32_t negotiated = link.negotiated ? 1 : 0;
  for (const uint32_t slot : {1U, 4U}) FillLive(phy.slots[slot], negotiated);
  FillLive(phy.slots[2], link.negotiated && link.speed == k1Gbps ? 1 : 0);
  for (const Advertisement& advertisement : kAdvertisements) {
    FillLive(phy.slots[advertisement.slot], own.autoneg == 1 ? own.*advertisement.field : 0);
  }
  FillLive(phy.slots[13], link.detection_fault ? 1 : 0);
  FillLive(phy.slots[15], link.role_fault ? 1 : 0);
  for (const uint32_t slot : {16U, 17U}) FillLive(phy.slots[slot], link.speed != kLinkDown ? 1 : 0);
}

}  // namespace

bool HasCapability(const Call& call, uint32_t capability) {
  return (call.device.capabilities & capability) != 0;
}

bool IsLoopback(Call& call) {
  return HasCapability(call, CORVANE_CAP_LOOPBACK) &&
         Current<FeaturesRecord>(call, "features").loopback == 1;
}

bool IsInline(Call& call) {
  if (IsLoopback(call)) return false;
  return !HasCapability(call, CORVANE_CAP_SPAN_MODE) ||
         Current<FeaturesRecord>(call, "features").inline_ != 0;
}

int64_t BitsPerSecond(const Link& link) {
  constexpr int64_t kRates[] = {10'000'000, 100'000'000, 1'000'000'000, 10'000'000'000};
  if (link.speed == kLinkDown) return 0;
  const bool known = link.speed >= 0 && link.speed < std::ssize(kRates);
  return known ? kRates[link.speed] : kRates[k10Gbps];
}

Links CurrentLinks(Call& call) {
  return LinksOf(call, Current<LinkStatusRecord>(call, "link_status"));
}

LinkStatusRecord CurrentLinkStatus(Call& call) {
  auto status = Current<LinkStatusRecord>(call, "link_status");
  if (IsGivenRaw(call, "link_status")) return status;
  const Links links = LinksOf(call, status);
  const auto speeds = Current<PortsSpeedRecord>(call, "ports_speed");
  const int32_t ports = HasCapability(call, CORVANE_CAP_DUAL_PORTS) ? CORVANE_PORTS : 1;
  FillLive(status.sfp_count, ports);
  FillLive(status.phy_count, ports);
  for (size_t port = 0; port < CORVANE_PORTS; ++port) {
    status.links[port].speed = links[port].speed;
    FillLive(status.links[port].duplex, links[port].full_duplex ? 0 : 1);
    if (status.sfp_valid == 1) FillModule(links[port], IsInline(call), status.sfps[port]);
    FillPhy(links[port], speeds.ports[port], status.phys[port]);
  }
  return status;
}

// Without a powered device at port B nothing flows. What the pairs bring flows back in the pairs
// of their return paths, in equal shares; the supply is above the pairs by what the line takes.
PoeMeasures CurrentPoe(Call& call) {
  constexpr float kLineLoss = 0.2F;
  auto measures = Current<PoeMeasures>(call, "poe_measures");
  if (IsGivenRaw(call, "poe_measures")) return measures;
  const bool powered = Current<Surroundings>(call, "surroundings").cables[1] != 0;
  float highest = 0;
  float returned[CORVANE_POE_PAIRS] = {};
  for (PoePair& pair : measures.pairs) {
    highest = std::max(highest, pair.voltage);
    const auto paths =
        std::ranges::count_if(pair.return_path, [](uint8_t path) { return path != 0; });
    if (!powered) pair.voltage = pair.current = 0;
    for (int back = 0; back < CORVANE_POE_PAIRS; ++back) {
      if (pair.return_path[back] != 0) returned[back] += pair.current / static_cast<float>(paths);
    }
  }
  for (int i = 0; i < CORVANE_POE_PAIRS; ++i) FillLive(measures.pairs[i].current, returned[i]);
  FillLive(measures.supply_voltage, highest + kLineLoss);
  return measures;
}

}  // namespace simulator
