// The [[fault]] tables.
#include "configuration/functions.h"
#include "configuration/tables.h"

namespace simulator {
namespace {

bool ReadFaultFunction(Where node, Fault& fault, ConfigurationError& error) {
  if (!ReadText(node, fault.function, error)) return false;
  if (!CanFail(fault.function)) {
    return RefuseValue(
        node, "\"" + fault.function + "\" is no function of the library that can fail", error);
  }
  return true;
}

bool ReadFaultDevice(Where node, Fault& fault, ConfigurationError& error) {
  DeviceConfiguration device;
  if (!ReadMac(node, device, error)) return false;
  fault.device = device.name;
  return true;
}

bool ReadFaultCall(Where node, Fault& fault, ConfigurationError& error) {
  return ReadInteger(node, 1, INT32_MAX, fault.call, error);
}

bool ReadFaultFrom(Where node, Fault& fault, ConfigurationError& error) {
  return ReadInteger(node, 1, INT32_MAX, fault.from, error);
}

bool ReadFaultStatus(Where node, Fault& fault, ConfigurationError& error) {
  return ReadInt32(node, fault.status, error);
}

constexpr Key<Fault> kFaultKeys[] = {
    {"function", ReadFaultFunction}, {"device", ReadFaultDevice}, {"call", ReadFaultCall},
    {"from", ReadFaultFrom},         {"status", ReadFaultStatus},
};

}  // namespace

bool AddFault(Where node, Configuration& configuration, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "fault wants [[fault]] tables", error);
  Fault fault;
  if (!ReadKeys(*table, kFaultKeys, fault, error)) return false;
  if (fault.function.empty()) return RefuseValue(node, "a fault needs a function", error);
  if (fault.status == 0) return RefuseValue(node, "a fault needs a status other than 0", error);
  configuration.faults.push_back(std::move(fault));
  return true;
}

}  // namespace simulator
