#include "records/factory_status.h"

#include <cstdio>
#include <limits>

#include "device/capabilities.h"

namespace simulator {
namespace {

constexpr auto kLiveNumber = static_cast<int32_t>(kLive);
constexpr double kLiveReal = std::numeric_limits<double>::quiet_NaN();

// ---- Copper

// What the PHY finds out about its link, its partner and itself; the other slots are errors, of
// which there are none.
constexpr uint32_t kLiveSlots[] = {0, 1, 2, 4, 5, 7, 8, 9, 10, 11, 12, 13, 15, 16, 17};

void AddCopper(LinkStatusRecord& status) {
  status.phy_valid = 1;
  status.phy_count = kLiveNumber;
  for (PhyStatus& phy : status.phys) {
    for (const uint32_t slot : kLiveSlots) phy.slots[slot] = kLive;
  }
}

// ---- SFP

// A 10GBASE-SR module. Rates are in units of 100 MBd and fibre lengths in units of 10 m (km on
// single-mode fibre), as SFF-8472 has them in the module's identification page.
SfpInfo Module(const char* serial_no) {
  SfpInfo sfp = {
      .link_up = kLiveByte,
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
  sfp.flags = kLive;
  sfp.mode = kLiveNumber;
  return sfp;
}

// Port A receives weakly, port B nothing at all.
void AddModules(LinkStatusRecord& status) {
  status.sfp_valid = 1;
  status.sfp_count = kLiveNumber;
  status.sfps[0] = Module("FL2403180417");
  status.sfps[0].ddm.measured = {38.4F, 3.29F, 7.6F, 0.58F, 0.08F};
  status.sfps[1] = Module("FL2403180422");
  status.sfps[1].ddm.measured = {36.1F, 3.30F, 7.5F, 0.57F, 0};
}

}  // namespace

LinkStatusRecord FactoryLinkStatus(uint32_t capabilities) {
  LinkStatusRecord status = {};
  for (LinkEntry& link : status.links) link = {.speed = kLiveNumber, .duplex = kLive};
  if ((capabilities & (CORVANE_CAP_PHY1 | CORVANE_CAP_PHY2 | CORVANE_CAP_PHY3)) != 0)
    AddCopper(status);
  if ((capabilities & CORVANE_CAP_SFP) != 0) AddModules(status);
  status.link_valid = status.phy_valid | status.sfp_valid;
  return status;
}

PoeMeasures FactoryPoeMeasures() {
  constexpr auto kLiveCurrent = static_cast<float>(kLiveReal);
  return {.pairs = {{48.1F, 0.105F, {0, 0, 1, 1}},
                    {48.1F, 0.103F, {0, 0, 1, 1}},
                    {0.2F, kLiveCurrent, {}},
                    {0.2F, kLiveCurrent, {}}},
          .supply_voltage = kLiveCurrent};
}

TimingStatusRecord FactoryTimingStatus() {
  TimingStatusRecord status = {};
  status.gps_module = kLive;
  status.gps_fix = 2;
  status.satellites_used = 9;
  status.satellites_gps = 11;
  status.satellites_glonass = 7;
  status.gps_pps = kLive;
  status.synchronized = kLive;
  status.pps_deviation = kLiveReal;
  status.timestamp_source = kLive;
  status.rtc_hour = status.rtc_minute = status.rtc_second = kLive;
  status.rtc_year = status.rtc_month = status.rtc_day = kLive;
  return status;
}

}  // namespace simulator
