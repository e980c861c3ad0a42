// The [[fault]] tables.
#include <algorithm>
#include <utility>

#include "configuration/functions.h"
#include "configuration/tables.h"

namespace simulator {
namespace {

bool ReadFaultFunction(Where node, Fault& fault, ConfigurationError& error) {
  if (!ReadValue(node, fault.function, error)) return false;
  if (!CanFail(fault.function)) {
    return RefuseValue(
        node, "\"" + fault.function + "\" is no function of the library that can fail", error);
  }
  return true;
}

constexpr Key<Fault> kFaultKeys[] = {
    {"function", ReadFaultFunction},
    {"device", ReadMember<&Fault::device>},
    {"call", ReadNumber<1, INT32_MAX, &Fault::call>},
    {"from", ReadNumber<1, INT32_MAX, &Fault::from>},
    {"times", ReadNumber<1, INT32_MAX, &Fault::times>},
    {"persistent", ReadMember<&Fault::persistent>},
    {"status", ReadNumber<INT32_MIN, INT32_MAX, &Fault::status>},
    {"away", ReadMember<&Fault::away>},
    {"delay_ms", ReadNumber<0, 3'600'000, &Fault::delay_ms>},
    {"after_s", ReadSeconds<&Fault::after_ms>},
    {"for_s", ReadSeconds<&Fault::for_ms>},
};

// True, with the error filled, when the fault makes no sense.
bool IsNonsense(Where node, const Fault& fault, ConfigurationError& error) {
  const bool counts = fault.call != 0 || fault.from != 1 || fault.times != INT64_MAX;
  const bool any = fault.function.empty();
  const std::pair<bool, const char*> rows[] = {
      {any && !fault.away, "a fault needs a function"},
      {fault.status == 0 && fault.delay_ms == 0 && !fault.away,
       "a fault needs a status other than 0, a delay_ms or away"},
      {fault.away && (!fault.device || fault.status != 0), "away wants a device and no status"},
      {any && (counts || fault.persistent), "without a function there are no calls to count"},
      {fault.call != 0 && fault.times != INT64_MAX, "either call or times, not both"},
      {fault.persistent && !counts, "persistent wants call, from or times"},
  };
  const auto* found = std::ranges::find(rows, true, &std::pair<bool, const char*>::first);
  return found != std::end(rows) && !RefuseValue(node, found->second, error);
}

}  // namespace

bool AddFault(Where node, Configuration& configuration, ConfigurationError& error) {
  Fault fault;
  if (!ReadTable(node, "fault wants [[fault]] tables", kFaultKeys, fault, error)) return false;
  if (IsNonsense(node, fault, error)) return false;
  if (!FindDevice(node, configuration, fault.device, error)) return false;
  if (fault.away) fault.status = CORVANE_DEVICE_NOT_FOUND;
  configuration.faults.push_back(std::move(fault));
  return true;
}

}  // namespace simulator
