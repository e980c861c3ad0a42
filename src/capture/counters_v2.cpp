#include "capture/counters_v2.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <string>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "filter/address_wildcard.h"
#include "line/device_option.h"

namespace corvane {

namespace {

constexpr int kNoNumber = -1;  // of an option that was not given
constexpr const char* kOneMode = "Select only packets mode or only bytes mode, but not both";
constexpr const char* kOneFamily = "Select only IPv4 or only IPv6 as enabled, but not both";
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
  int given = 0;
  for (const CountMode& row : kCountModes) {
    if (!IsGiven(leaf, row.parameter.key)) continue;
    counter.mode = row.mode;
    ++given;
  }
  return given < 2 || Refuse(kOneMode);
}

// The first size that is given counts; -1 is as good as none.
void ApplySize(const CommandNode& leaf, CounterV2Config& counter) {
  for (const SizeMode& row : kSizeModes) {
    const int size = Integer(leaf, row.parameter.key, kNoNumber);
    if (size == kNoNumber) continue;
    counter.size_mode = row.mode;
    counter.size = size;
    return;
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
  const std::string address = TextOr(leaf, family.address.parameter.key, "");
  if (!address.empty()) {
    return SetCounterIpWildcard(address, counter, family.address.version) || Refuse(family.invalid);
  }
  memset(counter.address, 0, sizeof counter.address);
  memset(counter.mask, 0, sizeof counter.mask);
  return true;
}

bool ApplyFamilies(const CommandNode& leaf, CounterV2Config& counter) {
  if (OnOffOf(leaf, kFamily4) == 1 && OnOffOf(leaf, kFamily6) == 1) return Refuse(kOneFamily);
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

bool HasAddress(const CounterV2Config& counter) {
  const auto set = [](uint8_t byte) { return byte != 0; };
  return std::ranges::any_of(counter.address, set) || std::ranges::any_of(counter.mask, set);
}

bool FitsIpv4(const CounterV2Config& counter) {
  const auto zero = [](uint8_t byte) { return byte == 0; };
  return std::all_of(counter.address + 4, std::end(counter.address), zero) &&
         std::all_of(counter.mask + 4, std::end(counter.mask), zero);
}

}  // namespace

const char* CompleteCounter(CounterV2Config& counter) {
  if (counter.mode == kCounterWhole.mode) counter.mode = kCountModes[0].mode;
  return counter.ipv4 == CORVANE_COUNT_IF_TRUE && counter.ipv6 == CORVANE_COUNT_IF_TRUE ? kOneFamily
                                                                                        : nullptr;
}

std::optional<Value> Show(const CountMode& row, const CounterV2Config& counter) {
  return counter.mode == row.mode ? std::optional<Value>(true) : std::nullopt;
}

std::string Store(const CountMode& row, const Value& value, const DeviceKind&,
                  CounterV2Config& counter) {
  const bool* on = std::get_if<bool>(&value);
  if (on == nullptr || !*on) return "true";
  if (counter.mode != kCounterWhole.mode) return "packets or bytes, not both";
  counter.mode = row.mode;
  return "";
}

std::optional<Value> Show(const SizeMode& row, const CounterV2Config& counter) {
  return counter.size_mode == row.mode ? std::optional<Value>(int64_t{counter.size}) : std::nullopt;
}

std::string Store(const SizeMode& row, const Value& value, const DeviceKind&,
                  CounterV2Config& counter) {
  const auto size = NumberIn(value, 0, INT32_MAX);
  if (!size) return "a number of bytes";
  if (counter.size_mode != CORVANE_IGNORE) return "one size, not several";
  counter.size_mode = row.mode;
  counter.size = static_cast<int32_t>(*size);
  return "";
}

std::optional<Value> Show(const CounterAddress& row, const CounterV2Config& counter) {
  if (!HasAddress(counter) || counter.*row.condition == CORVANE_IGNORE) return std::nullopt;
  const bool is_ipv4 = counter.ipv4 != CORVANE_IGNORE && FitsIpv4(counter);
  if (is_ipv4 != (row.version == kIpv4)) return std::nullopt;
  return SameCounterIp(counter, row.version);
}

std::string Store(const CounterAddress& row, const Value& value, const DeviceKind&,
                  CounterV2Config& counter) {
  const std::string family = row.version == kIpv4 ? "ipv4" : "ipv6";
  if (counter.*row.condition == CORVANE_IGNORE) return family + " = true or false beside it";
  if (HasAddress(counter)) return "one address, not both";
  const auto* text = std::get_if<std::string>(&value);
  const bool is_ipv4 = text != nullptr && text->find('.') != std::string::npos;
  if (text == nullptr || !IsIpText(*text) || is_ipv4 != (row.version == kIpv4) ||
      !SetCounterIpWildcard(*text, counter, row.version)) {
    return row.version == kIpv4 ? "an IPv4 address such as 10.1.*.*" : "an IPv6 address in full";
  }
  return "";
}

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
