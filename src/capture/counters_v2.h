// The configurable counters of a device, each of packets or bytes that match its conditions.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"
#include "filter/address_wildcard.h"
#include "line/settings.h"

namespace corvane {

const char* CounterIndexGlossary();

inline constexpr ParameterSpec kCounterIndex = {.key = "counter",
                                                .long_option = "counter",
                                                .kind = ParameterKind::kInteger,
                                                .datatype = "<counter>",
                                                .compose_glossary = CounterIndexGlossary};

inline constexpr ParameterSpec kCountPackets = FlagSpec("packets", "Count the values in packets");
inline constexpr ParameterSpec kCountBytes = FlagSpec("bytes", "Count the values in bytes");

using CounterSwitch = SwitchRow<CounterV2Config, int32_t>;

inline constexpr CounterSwitch kCountedPorts[] = {
    {SwitchSpec("porta", "Count the values for port A"), "Port A", &CounterV2Config::porta},
    {SwitchSpec("portb", "Count the values for port B"), "Port B", &CounterV2Config::portb},
};

// In the order of the codes of size_mode.
struct SizeMode {
  ParameterSpec parameter;
  const char* words;
};

inline constexpr SizeMode kSizeModes[] = {
    {IntegerSpec("size_gt", "<size>",
                 "Only count the packet if its size is greater than the specified"),
     "Greater than"},
    {IntegerSpec("size_lt", "<size>",
                 "Only count the packet if its size is less than the specified"),
     "Less than"},
    {IntegerSpec("size_eq", "<size>",
                 "Only count the packet if its size is equal to the specified"),
     "Equal to"},
};

// An IP version: its condition, which comes with an address.
struct IpFamily {
  CounterSwitch condition;
  ParameterSpec address;
  int version;
  const char* invalid;
};

inline constexpr IpFamily kFamily4 = {
    {SwitchSpec("ipv4", "Test if a packet is IPv4"), "IPv4", &CounterV2Config::ipv4},
    TextSpec("ipv4_addr", "<ipv4_addr>", "Compare IP address of the packet with this one"),
    kIpv4,
    "ipv4_addr must be a valid IPv4 address"};
inline constexpr IpFamily kFamily6 = {
    {SwitchSpec("ipv6", "Test if a packet is IPv6"), "IPv6", &CounterV2Config::ipv6},
    TextSpec("ipv6_addr", "<ipv6_addr>", "Compare IP address of the packet with this one"),
    kIpv6,
    "ipv6_addr must be a valid IPv6 address"};

inline constexpr CounterSwitch kBroadcast = {SwitchSpec("bcast", "Test if a packet is broadcast"),
                                             "Broadcast", &CounterV2Config::bcast};
inline constexpr CounterSwitch kUnicast = {SwitchSpec("ucast", "Test if a packet is unicast"),
                                           "Unicast", &CounterV2Config::ucast};
inline constexpr CounterSwitch kMulticast = {SwitchSpec("mcast", "Test if a packet is multicast"),
                                             "Multicast", &CounterV2Config::mcast};
inline constexpr CounterSwitch kOtherConditions[] = {
    {SwitchSpec("icmp", "Test if a packet is ICMP"), "ICMP", &CounterV2Config::icmp},
    {SwitchSpec("udp", "Test if a packet is UDP"), "UDP", &CounterV2Config::udp},
    {SwitchSpec("tcp", "Test if a packet is TCP"), "TCP", &CounterV2Config::tcp},
    {SwitchSpec("crc_ok", "Test if a packet has a valid CRC"), "CRC valid",
     &CounterV2Config::crc_ok},
    {SwitchSpec("hw_dropped", "Test if a packet was dropped by hardware"), "Hardware dropped",
     &CounterV2Config::hw_dropped},
};

inline constexpr auto kCounterParameters =
    Parameters(kCounterIndex, kCountPackets, kCountBytes, kCountedPorts, kSizeModes,
               kFamily4.condition, kFamily4.address, kFamily6.condition, kFamily6.address,
               kBroadcast, kUnicast, kMulticast, kOtherConditions);

int CountersSet(const CommandNode& leaf);
int CountersShow(const CommandNode& leaf);

}  // namespace corvane
