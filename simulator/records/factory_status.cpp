#include "records/factory_status.h"

#include <cstdio>

#include "device/capabilities.h"

namespace simulator {
namespace {

enum : int32_t { kLinkDown = 5, k1Gbps = 2, k10Gbps = 3 };

// ---- Copper

// The slots that say yes on a gigabit link without errors: the partner negotiates, has next pages
// and has acknowledged; both receivers are fine.
constexpr uint32_t kGoodSlots[] = {1, 2, 4, 16, 17};

PhyStatus CopperPort(uint32_t master_slave) {
  PhyStatus phy = {};
  phy.slots[CORVANE_PHY_MASTER_SLAVE] = master_slave;
  for (const uint32_t slot : kGoodSlots) phy.slots[slot] = 1;
  // What is advertised follows port control; half-duplex gigabit (slot 6) is in none of its
  // switches.
  for (uint32_t slot = 5; slot <= 12; ++slot) phy.slots[slot] = slot == 6 ? 0 : kLive;
  return phy;
}

void AddCopper(LinkStatusRecord& status) {
  status.link_valid = 1;
  for (LinkEntry& link : status.links) link = {.speed = k1Gbps, .duplex = 0};
  status.phy_valid = 1;
  status.phy_count = CORVANE_PORTS;
  status.phys[0] = CopperPort(0);
  status.phys[1] = CopperPort(1);
}

// ---- SFP

// A 10GBASE-SR module. Rates are in units of 100 MBd and fibre lengths in units of 10 m (km on
// single-mode fibre), as SFF-8472 has them in the module's identification page.
SfpInfo Module(const char* serial_no) {
  SfpInfo sfp = {
      .link_up = 1,
      .vendor_name = "FIBRELINE",
      .vendor_oui = 0x02F1B3,
      .model = "FL-10G-SR",
      .revision = "A2",
      .date_code = "240318",
      .nominal_rate = 103,
      .encoding = 6,
      .rate_id = 0,
      .identifier = 3,
      .ext_identifier = 4,
      .connector = 7,
      .wavelength_nm = 850,
      .monitoring_type = 0,
      .sff8472_compliance = 5,
      .length_om2 = 8,
      .length_om1 = 3,
      .length_om3 = 30,
  };
  snprintf(sfp.serial_no, sizeof sfp.serial_no, "%s", serial_no);
  sfp.ddm.low_alarm = {-5, 2.97F, 2, 0.15F, 0.04F};
  sfp.ddm.low_warning = {0, 3.13F, 3, 0.19F, 0.10F};
  sfp.ddm.high_alarm = {75, 3.63F, 12, 1.00F, 1.00F};
  sfp.ddm.high_warning = {70, 3.46F, 11, 0.79F, 0.79F};
  sfp.mode = static_cast<int32_t>(kLive);
  return sfp;
}

enum : uint32_t { kRxPowerAlarm = 0x10, kRxPowerWarning = 0x200, kStatusBits = 0x1C00 };

// Port A receives weakly, port B nothing at all.
void AddModules(LinkStatusRecord& status) {
  status.link_valid = 1;
  status.links[0] = {.speed = k10Gbps, .duplex = 0};
  status.links[1] = {.speed = kLinkDown, .duplex = 0};
  status.sfp_valid = 1;
  status.sfp_count = CORVANE_PORTS;

  SfpInfo& up = status.sfps[0] = Module("FL2403180417");
  up.ddm.measured = {38.4F, 3.29F, 7.6F, 0.58F, 0.08F};
  up.flags = kRxPowerWarning | kStatusBits;

  SfpInfo& down = status.sfps[1] = Module("FL2403180422");
  down.link_up = 0;
  down.ddm.measured = {36.1F, 3.30F, 7.5F, 0.57F, 0};
  down.flags = kRxPowerAlarm | kRxPowerWarning | kStatusBits;
}

}  // namespace

LinkStatusRecord FactoryLinkStatus(uint32_t capabilities) {
  LinkStatusRecord status = {};
  if ((capabilities & (CORVANE_CAP_PHY1 | CORVANE_CAP_PHY2 | CORVANE_CAP_PHY3)) != 0)
    AddCopper(status);
  if ((capabilities & CORVANE_CAP_SFP) != 0) AddModules(status);
  return status;
}

PoeMeasures FactoryPoeMeasures() {
  return {.pairs = {{48.1F, 0.105F, {0, 0, 1, 1}},
                    {48.1F, 0.103F, {0, 0, 1, 1}},
                    {0.2F, 0.104F, {}},
                    {0.2F, 0.104F, {}}},
          .supply_voltage = 48.3F};
}

TimingStatusRecord FactoryTimingStatus() {
  TimingStatusRecord status = {};
  status.gps_module = 2;
  status.gps_fix = 2;
  status.satellites_used = 9;
  status.satellites_gps = 11;
  status.satellites_glonass = 7;
  status.gps_pps = 1;
  status.synchronized = 1;
  status.pps_deviation = 4.2;
  status.timestamp_source = kLive;
  return status;
}

}  // namespace simulator
