#include <cstdio>
#include <cstring>
#include <string>

#include "device/capabilities.h"
#include "device/report.h"
#include "device/session.h"
#include "device/status.h"
#include "filter/address_wildcard.h"
#include "shell/handlers.h"

namespace {

constexpr int kReservedCounter = CORVANE_COUNTERS_V2 - 1;
constexpr int kNoNumber = -1;  // of an option that was not given
constexpr const char* kCountersUnsupported = "Your device does not support statistics V2";

struct SizeMode {
  const char* key;
  const char* words;
};

// In the order of the codes of size_mode.
constexpr SizeMode kSizeModes[] = {
    {"size_gt", "Greater than"},
    {"size_lt", "Less than"},
    {"size_eq", "Equal to"},
};

struct Condition {
  const char* key;
  const char* label;
  int32_t CounterV2Config::*field;
};

// In the order of the report. The IP versions, which come with an address, stand apart.
constexpr Condition kConditions[] = {
    {"bcast", "Broadcast", &CounterV2Config::bcast},
    {"mcast", "Multicast", &CounterV2Config::mcast},
    {"ucast", "Unicast", &CounterV2Config::ucast},
    {"icmp", "ICMP", &CounterV2Config::icmp},
    {"udp", "UDP", &CounterV2Config::udp},
    {"tcp", "TCP", &CounterV2Config::tcp},
    {"crc_ok", "CRC valid", &CounterV2Config::crc_ok},
    {"hw_dropped", "Hardware dropped", &CounterV2Config::hw_dropped},
};

struct Family {
  const char* key;
  const char* address_key;
  int32_t CounterV2Config::*condition;
  int version;
  const char* invalid;
};

constexpr Family kFamily4 = {"ipv4", "ipv4_addr", &CounterV2Config::ipv4, kIpv4,
                             "ipv4_addr must be a valid IPv4 address"};
constexpr Family kFamily6 = {"ipv6", "ipv6_addr", &CounterV2Config::ipv6, kIpv6,
                             "ipv6_addr must be a valid IPv6 address"};

bool Refuse(const char* message) {
  puts(message);
  return false;
}

bool IsConfigurable(int counter) {
  if (counter < 0 || counter > kReservedCounter) {
    printf(
        "Wrong counter was selected to be configured: %d, or no counter was selected at all; the "
        "value must be between %d and %d\n",
        counter, 0, kReservedCounter);
    return false;
  }
  if (counter == kReservedCounter) {
    printf("Cannot configure counter %d, as it's reserved to represent hardware dropped packets\n",
           kReservedCounter);
    return false;
  }
  return true;
}

bool ApplyMode(const CommandNode& leaf, CounterV2Config& counter) {
  const bool packets = IsGiven(leaf, "packets");
  const bool bytes = IsGiven(leaf, "bytes");
  if (packets && bytes) return Refuse("Select only packets mode or only bytes mode, but not both");
  if (packets) counter.mode = 0;
  if (bytes) counter.mode = 1;
  return true;
}

// The first size that is given counts; -1 is as good as none.
void ApplySize(const CommandNode& leaf, CounterV2Config& counter) {
  int32_t mode = 0;
  for (const SizeMode& size_mode : kSizeModes) {
    const int size = Integer(leaf, size_mode.key, kNoNumber);
    if (size != kNoNumber) {
      counter.size_mode = mode;
      counter.size = size;
      return;
    }
    ++mode;
  }
}

// A family that is named decides about the address and, unless it is named too, ends the other
// family's condition.
bool ApplyFamily(const CommandNode& leaf, const Family& family, const Family& other,
                 CounterV2Config& counter) {
  if (OnOff(leaf, family.key) == kNotGiven) return true;
  counter.*family.condition = OnOff(leaf, family.key);
  if (OnOff(leaf, other.key) == kNotGiven) counter.*other.condition = CORVANE_IGNORE;
  const std::string address = TextOr(leaf, family.address_key, "");
  if (!address.empty()) {
    return SetCounterIpWildcard(address, counter, family.version) || Refuse(family.invalid);
  }
  memset(counter.address, 0, sizeof counter.address);
  memset(counter.mask, 0, sizeof counter.mask);
  return true;
}

bool ApplyFamilies(const CommandNode& leaf, CounterV2Config& counter) {
  if (OnOff(leaf, "ipv4") == 1 && OnOff(leaf, "ipv6") == 1) {
    return Refuse("Select only IPv4 or only IPv6 as enabled, but not both");
  }
  return ApplyFamily(leaf, kFamily4, kFamily6, counter) &&
         ApplyFamily(leaf, kFamily6, kFamily4, counter);
}

bool Apply(const CommandNode& leaf, CounterV2Config& counter) {
  if (!ApplyMode(leaf, counter)) return false;
  ApplySwitch(leaf, "porta", counter.porta);
  ApplySwitch(leaf, "portb", counter.portb);
  ApplySize(leaf, counter);
  if (!ApplyFamilies(leaf, counter)) return false;
  for (const Condition& c : kConditions) ApplySwitch(leaf, c.key, counter.*c.field);
  return true;
}

int GetCounter(DeviceHandle device, int index, CounterV2Config& counter) {
  const int status = CorvaneAPIGetCounterV2(device, static_cast<uint32_t>(index), &counter);
  if (status != kSuccess) {
    printf("Failed to get statistics V2 configuration for counter %d\n", index);
  }
  return status;
}

const char* ConditionText(int32_t condition) {
  if (condition == CORVANE_COUNT_IF_TRUE) return "Count if true";
  return condition == CORVANE_COUNT_IF_FALSE ? "Count if false" : "Ignore";
}

std::string SizeModeText(const CounterV2Config& counter) {
  if (counter.size_mode == CORVANE_IGNORE) return "Disabled";
  const bool known = counter.size_mode == 0 || counter.size_mode == 1;
  const SizeMode& mode = kSizeModes[known ? counter.size_mode : 2];
  return std::string(mode.words) + " " + std::to_string(counter.size);
}

std::string AddressText(const CounterV2Config& counter) {
  if (counter.ipv4 != CORVANE_IGNORE) return FormatCounterIpWildcard(counter, kIpv4);
  if (counter.ipv6 != CORVANE_IGNORE) return FormatCounterIpWildcard(counter, kIpv6);
  return "None";
}

void AppendLine(std::string& report, const char* label, const std::string& value) {
  report += std::string("\t\t") + label + ": " + value + "\n";
}

void AppendCounter(std::string& report, int index, const CounterV2Config& counter) {
  report += "\tCounter " + std::to_string(index) + ":\n";
  AppendLine(report, "Mode", counter.mode != 0 ? "bytes" : "packets");
  AppendLine(report, "Port A", EnabledOrDisabled(counter.porta == 1));
  AppendLine(report, "Port B", EnabledOrDisabled(counter.portb == 1));
  AppendLine(report, "Size mode", SizeModeText(counter));
  AppendLine(report, "IPv4", ConditionText(counter.ipv4));
  AppendLine(report, "IPv6", ConditionText(counter.ipv6));
  AppendLine(report, "IP address", AddressText(counter));
  for (const Condition& c : kConditions) {
    AppendLine(report, c.label, ConditionText(counter.*c.field));
  }
}

}  // namespace

int CountersSet(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), kStatisticsV2)) return Fail(kRejected, kCountersUnsupported);
  const int index = Integer(leaf, "counter", kNoNumber);
  if (!IsConfigurable(index)) return kRejected;

  CounterV2Config counter = {};
  int status = GetCounter(session.device(), index, counter);
  if (status != kSuccess) return status;
  counter.index = index;
  if (!Apply(leaf, counter)) return kRejected;
  status = CorvaneAPISetCounterV2(session.device(), counter);
  if (status != kSuccess) {
    printf("Failed to set statistics V2 configuration for counter %d\n", index);
  }
  return status;
}

// Nothing of the report is printed unless all of it could be read.
int CountersShow(const CommandNode& leaf) {
  const Session session(leaf);
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), kStatisticsV2)) return Fail(kUnsupported, kCountersUnsupported);
  std::string report = "Statistics V2 configuration : \n";
  for (int index = 0; index < CORVANE_COUNTERS_V2; ++index) {
    CounterV2Config counter = {};
    const int status = GetCounter(session.device(), index, counter);
    if (status != kSuccess) return status;
    AppendCounter(report, index, counter);
  }
  fputs(report.c_str(), stdout);
  return kSuccess;
}
