#include "capture/counters_v2.h"

#include <cstdio>
#include <cstring>
#include <string>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "filter/address_wildcard.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr int kReservedCounter = CORVANE_COUNTERS_V2 - 1;
constexpr int kNoNumber = -1;  // of an option that was not given
constexpr const char* kCountersUnsupported = "Your device does not support statistics V2";

// The report has multicast before unicast.
constexpr const CounterSwitch* kDestinationsAsReported[] = {&kBroadcast, &kMulticast, &kUnicast};

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
  const bool packets = IsGiven(leaf, kCountPackets.key);
  const bool bytes = IsGiven(leaf, kCountBytes.key);
  if (packets && bytes) return Refuse("Select only packets mode or only bytes mode, but not both");
  if (packets) counter.mode = 0;
  if (bytes) counter.mode = 1;
  return true;
}

// The first size that is given counts; -1 is as good as none.
void ApplySize(const CommandNode& leaf, CounterV2Config& counter) {
  int32_t mode = 0;
  for (const SizeMode& size_mode : kSizeModes) {
    const int size = Integer(leaf, size_mode.parameter.key, kNoNumber);
    if (size != kNoNumber) {
      counter.size_mode = mode;
      counter.size = size;
      return;
    }
    ++mode;
  }
}

int OnOffOf(const CommandNode& leaf, const IpFamily& family) {
  return OnOff(leaf, family.condition.parameter.key);
}

// Naming a family sets the address and, unless the other family is named too, lets the other's
// condition be ignored.
bool ApplyFamily(const CommandNode& leaf, const IpFamily& family, const IpFamily& other,
                 CounterV2Config& counter) {
  if (OnOffOf(leaf, family) == kNotGiven) return true;
  counter.*family.condition.field = OnOffOf(leaf, family);
  if (OnOffOf(leaf, other) == kNotGiven) counter.*other.condition.field = CORVANE_IGNORE;
  const std::string address = TextOr(leaf, family.address.key, "");
  if (!address.empty()) {
    return SetCounterIpWildcard(address, counter, family.version) || Refuse(family.invalid);
  }
  memset(counter.address, 0, sizeof counter.address);
  memset(counter.mask, 0, sizeof counter.mask);
  return true;
}

bool ApplyFamilies(const CommandNode& leaf, CounterV2Config& counter) {
  if (OnOffOf(leaf, kFamily4) == 1 && OnOffOf(leaf, kFamily6) == 1) {
    return Refuse("Select only IPv4 or only IPv6 as enabled, but not both");
  }
  return ApplyFamily(leaf, kFamily4, kFamily6, counter) &&
         ApplyFamily(leaf, kFamily6, kFamily4, counter);
}

bool Apply(const CommandNode& leaf, CounterV2Config& counter) {
  if (!ApplyMode(leaf, counter)) return false;
  ApplySwitches(leaf, kCountedPorts, counter);
  ApplySize(leaf, counter);
  if (!ApplyFamilies(leaf, counter)) return false;
  for (const auto* row : {&kBroadcast, &kUnicast, &kMulticast}) ApplySwitch(leaf, *row, counter);
  ApplySwitches(leaf, kOtherConditions, counter);
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

void AppendCondition(std::string& report, const CounterSwitch& row,
                     const CounterV2Config& counter) {
  AppendLine(report, row.label, ConditionText(counter.*row.field));
}

void AppendCounter(std::string& report, int index, const CounterV2Config& counter) {
  report += "\tCounter " + std::to_string(index) + ":\n";
  AppendLine(report, "Mode", counter.mode != 0 ? "bytes" : "packets");
  for (const CounterSwitch& row : kCountedPorts) {
    AppendLine(report, row.label, EnabledOrDisabled(counter.*row.field == 1));
  }
  AppendLine(report, "Size mode", SizeModeText(counter));
  AppendCondition(report, kFamily4.condition, counter);
  AppendCondition(report, kFamily6.condition, counter);
  AppendLine(report, "IP address", AddressText(counter));
  for (const CounterSwitch* row : kDestinationsAsReported) AppendCondition(report, *row, counter);
  for (const CounterSwitch& row : kOtherConditions) AppendCondition(report, row, counter);
}

}  // namespace

const char* CounterIndexGlossary() {
  static char glossary[128];
  snprintf(glossary, sizeof glossary,
           "Index of the counter to be configured; possible values are from 0 to %d except for %d",
           CORVANE_COUNTERS_V2, kReservedCounter);
  return glossary;
}

int CountersSet(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_STATISTICS_V2)) {
    return Fail(kRejected, kCountersUnsupported);
  }
  const int index = Integer(leaf, kCounterIndex.key, kNoNumber);
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
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_STATISTICS_V2)) {
    return Fail(kUnsupported, kCountersUnsupported);
  }
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

}  // namespace corvane
