#include "model/device_records.h"

#include "records/factory_records.h"

namespace simulator {

Bytes CurrentRecord(Call& call, const char* name) {
  const size_t size = FindLayout(name)->size;
  if (auto stored = call.state.Configuration(call.device.name, name, size)) return *stored;
  const auto initial = call.device.records.find(name);
  if (initial != call.device.records.end()) return initial->second.bytes;
  return FactoryRecord(name, call.device.capabilities);
}

bool IsGivenRaw(const Call& call, const char* name) {
  const auto given = call.device.records.find(name);
  return given != call.device.records.end() && given->second.raw;
}

VersionRecord CurrentVersions(Call& call) {
  VersionRecord versions = call.device.versions;
  const auto stored = call.state.Configuration(call.device.name, "versions", sizeof versions);
  if (stored) memcpy(&versions, stored->data(), sizeof versions);
  return versions;
}

}  // namespace simulator
