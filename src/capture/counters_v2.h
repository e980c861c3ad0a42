// The configurable counters of a device, each of packets or bytes that match its conditions.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"
#include "filter/address_wildcard.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kCountersCommand = "statsv2";
inline constexpr int kReservedCounter = CORVANE_COUNTERS_V2 - 1;

const char* CounterIndexGlossary();

inline constexpr ParameterSpec kCounterIndex = {.key = "counter",
                                                .long_option = "counter",
                                                .kind = ParameterKind::kInteger,
                                                .datatype = "<counter>",
                                                .compose_glossary = CounterIndexGlossary};

// What is counted, by the code of mode.
struct CountMode {
  ParameterSpec parameter;
  int32_t mode;
};

inline constexpr CountMode kCountModes[] = {{FlagSpec("packets", "Count the values in packets"), 0},
                                            {FlagSpec("bytes", "Count the values in bytes"), 1}};

using CounterSwitch = SwitchRow<CounterV2Config, int32_t>;

inline constexpr CounterSwitch kCountedPorts[] = {
    {SwitchSpec("porta", "Count the values for port A"), "Port A", &CounterV2Config::porta},
    {SwitchSpec("portb", "Count the values for port B"), "Port B", &CounterV2Config::portb},
};

// By the code of size_mode.
struct SizeMode {
  ParameterSpec parameter;
  const char* words;
  int32_t mode;
};

inline constexpr SizeMode kSizeModes[] = {
    {IntegerSpec("size_gt", "<size>",
                 "Only count the packet if its size is greater than the specified"),
     "Greater than", 0},
    {IntegerSpec("size_lt", "<size>",
                 "Only count the packet if its size is less than the specified"),
     "Less than", 1},
    {IntegerSpec("size_eq", "<size>",
                 "Only count the packet if its size is equal to the specified"),
     "Equal to", 2},
};

// The address that comes with the condition of an IP version.
struct CounterAddress {
  ParameterSpec parameter;
  int version;
  int32_t CounterV2Config::*condition;
};

// An IP version.
struct IpFamily {
  CounterSwitch condition;
  CounterAddress address;
  const char* invalid;
};

inline constexpr IpFamily kFamily4 = {
    {SwitchSpec("ipv4", "Test if a packet is IPv4"), "IPv4", &CounterV2Config::ipv4},
    {TextSpec("ipv4_addr", "<ipv4_addr>", "Compare IP address of the packet with this one"), kIpv4,
     &CounterV2Config::ipv4},
    "ipv4_addr must be a valid IPv4 address"};
inline constexpr IpFamily kFamily6 = {
    {SwitchSpec("ipv6", "Test if a packet is IPv6"), "IPv6", &CounterV2Config::ipv6},
    {TextSpec("ipv6_addr", "<ipv6_addr>", "Compare IP address of the packet with this one"), kIpv6,
     &CounterV2Config::ipv6},
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

inline constexpr auto kCounterRows = std::tie(
    kCountModes, kCountedPorts, kSizeModes, kFamily4.condition, kFamily4.address,
    kFamily6.condition, kFamily6.address, kBroadcast, kUnicast, kMulticast, kOtherConditions);
inline constexpr auto kCounterParameters = std::apply(
    [](const auto&... rows) { return Parameters(kCounterIndex, rows...); }, kCounterRows);

// In a file a counter is a whole that starts from this one: both ports, no condition, and a mode
// that CompleteCounter() sets unless the file does.
inline constexpr CounterV2Config kCounterWhole = {.ipv4 = CORVANE_IGNORE,
                                                  .ipv6 = CORVANE_IGNORE,
                                                  .bcast = CORVANE_IGNORE,
                                                  .mcast = CORVANE_IGNORE,
                                                  .ucast = CORVANE_IGNORE,
                                                  .icmp = CORVANE_IGNORE,
                                                  .udp = CORVANE_IGNORE,
                                                  .tcp = CORVANE_IGNORE,
                                                  .crc_ok = CORVANE_IGNORE,
                                                  .hw_dropped = CORVANE_IGNORE,
                                                  .size_mode = CORVANE_IGNORE,
                                                  .porta = 1,
                                                  .portb = 1,
                                                  .mode = -1};
// What is wrong with the settings of a counter together; null when nothing is.
const char* CompleteCounter(CounterV2Config& counter);

// As every row of a section has them.
std::optional<Value> Show(const CountMode& row, const CounterV2Config& counter);
std::string Store(const CountMode& row, const Value& value, const DeviceKind& device,
                  CounterV2Config& counter);
std::optional<Value> Show(const SizeMode& row, const CounterV2Config& counter);
std::string Store(const SizeMode& row, const Value& value, const DeviceKind& device,
                  CounterV2Config& counter);
std::optional<Value> Show(const CounterAddress& row, const CounterV2Config& counter);
std::string Store(const CounterAddress& row, const Value& value, const DeviceKind& device,
                  CounterV2Config& counter);

int CountersSet(const CommandNode& leaf);
int CountersShow(const CommandNode& leaf);

}  // namespace corvane
