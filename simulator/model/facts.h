// Facts about a running device, which a restart forgets: records of plain bytes in the device
// state.
#pragma once

#include <cstring>

#include "model/call.h"

namespace simulator {

template <class Record>
void SetFact(Call& call, const char* name, const Record& record) {
  call.state.SetFact(call.device.name, name, BytesOf(record));
}

// False, with the record unchanged, when there is no such fact. The device is empty for a fact of
// the folder as a whole.
template <class Record>
bool ReadFact(DeviceState& state, std::string_view device, const char* name, Record& record) {
  const auto bytes = state.Fact(device, name, sizeof record);
  if (bytes) memcpy(&record, bytes->data(), sizeof record);
  return bytes.has_value();
}
template <class Record>
bool ReadFact(Call& call, const char* name, Record& record) {
  return ReadFact(call.state, call.device.name, name, record);
}

// When the device was started, in milliseconds since the epoch; later than now while it restarts,
// or when the host's clock was set back. Never negative; 0 for a device that was never used.
int64_t StartedMs(Call& call);
void MarkStarted(Call& call, int64_t when_ms);

// True while the device restarts.
bool IsAway(Call& call);

// True for a device that was never used, and for one that started later than now and is not away:
// the host's clock was set back, and the device would stand still until then.
bool WantsStart(Call& call);

}  // namespace simulator
