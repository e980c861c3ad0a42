#include "model/device_records.h"

#include <algorithm>

#include "records/factory_records.h"
#include "records/factory_status.h"

namespace simulator {
namespace {

void PutFields(std::span<const Field> fields, const uint8_t* given, uint8_t* record) {
  for (const Field& field : fields) {
    for (uint32_t i = 0; i < field.count; ++i) {
      const size_t at = field.offset + size_t{i} * field.width;
      const std::span bytes(given + at, field.width);
      const auto is_live = [](uint8_t byte) { return byte == kLiveByte; };
      if (field.kind == FieldKind::kGroup) {
        PutFields(field.fields, given + at, record + at);
      } else if (!std::ranges::all_of(bytes, is_live)) {
        std::ranges::copy(bytes, record + at);
      }
    }
  }
}

}  // namespace

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

void PutGiven(const Call& call, const char* name, void* record) {
  const auto given = call.device.records.find(name);
  if (given == call.device.records.end()) return;
  PutFields(FindLayout(name)->fields, given->second.bytes.data(), static_cast<uint8_t*>(record));
}

VersionRecord CurrentVersions(Call& call) {
  VersionRecord versions = call.device.versions;
  const auto stored = call.state.Configuration(call.device.name, "versions", sizeof versions);
  if (stored) memcpy(&versions, stored->data(), sizeof versions);
  return versions;
}

}  // namespace simulator
