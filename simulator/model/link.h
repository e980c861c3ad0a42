// The links at a device's ports: whether each is up, and what its two ends have agreed on. Reports,
// counters and traffic all follow them.
//
// Sources: priorities and parallel detection: IEEE 802.3, annex 28B and 28.2.3; master and slave:
// 40.5.2; gigabit fibre: clause 37. Alarms and warnings: SFF-8472, table 9-2.
#pragma once

#include <array>

#include "model/call.h"

namespace simulator {

inline constexpr int32_t kLinkDown = 5;

struct Link {
  int32_t speed = kLinkDown;  // as in LinkEntry
  bool full_duplex = true;
  bool over_fibre = false;       // not copper
  bool negotiated = false;       // both ends told each other what they can do
  uint32_t role = 2;             // as in CORVANE_PHY_MASTER_SLAVE
  bool role_fault = false;       // both ends insist on the same role
  bool detection_fault = false;  // the partner does not negotiate, and its speed is beyond this end
};
using Links = std::array<Link, CORVANE_PORTS>;

Links CurrentLinks(Call& call);

// What the link carries; 0 when it is down.
int64_t BitsPerSecond(const Link& link);

bool HasCapability(const Call& call, uint32_t capability);

// True when the frames of each port leave by the other one. A device that cannot do otherwise
// always does that, unless a loopback sends them back.
bool IsInline(Call& call);
bool IsLoopback(Call& call);

// The report of the links, of their modules and of their PHYs.
LinkStatusRecord CurrentLinkStatus(Call& call);

// The report of the power that passes through the ports.
PoeMeasures CurrentPoe(Call& call);

}  // namespace simulator
