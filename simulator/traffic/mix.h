// The traffic at a simulated device's ports: a cycle of frames that repeats for ever at a constant
// rate. So every counter follows from the time alone, and nothing has to run meanwhile.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "device/corvane_api.h"
#include "tap/frame.h"

namespace simulator {

// A station or a group of stations.
struct Host {
  std::array<uint8_t, CORVANE_MAC_SIZE> mac;
  std::array<uint8_t, 4> ipv4;   // all zero when it has none
  std::array<uint8_t, 16> ipv6;  // all zero when it has none
};

enum class Fate : uint8_t {
  kReceived,
  kBadCrc,    // arrives with a wrong frame check sequence
  kHwDropped  // arrives whole, but the device has no room for it
};

// One frame: all that is needed to build its packet, in the order that makes the rows of a mix easy
// to read.
struct Frame {     // NOLINT(clang-analyzer-optin.performance.Padding)
  uint8_t port;    // where it arrives: 0 A, 1 B
  uint16_t size;   // bytes, from the destination MAC to the frame check sequence
  Layer2 network;  // kOther: LLDP
  Transport transport;
  const Host* source;
  const Host* destination;
  uint16_t source_port = 0;       // of ICMP the type, of ARP the operation
  uint16_t destination_port = 0;  // of ICMP the code
  uint8_t tcp_flags = 0;
  uint16_t vlan = 0;  // 802.1Q identifier, 0 for an untagged frame
  Fate fate = Fate::kReceived;
  uint16_t tcp_window = 64240;
};

using Cycle = std::span<const Frame>;

// The built-in mix of frames, in the order of their arrival.
Cycle TrafficCycle();

}  // namespace simulator
