// The records of a device as they stand now.
#pragma once

#include <array>
#include <cstring>

#include "model/call.h"

namespace simulator {

using Counters = std::array<CounterV2Config, CORVANE_COUNTERS_V2>;  // of "counters_v2"

// The current record of the device: from its state, else from the configuration file, else as it
// left the factory. It always has the size of its layout; when the state has it in another size,
// the call fails in the end.
Bytes CurrentRecord(Call& call, const char* name);

// The same as a record of its type.
template <class Record>
Record Current(Call& call, const char* name) {
  Record record;
  memcpy(&record, CurrentRecord(call, name).data(), sizeof record);
  return record;
}

// True when the configuration file gives the record as a whole: then nothing in it is live.
bool IsGivenRaw(const Call& call, const char* name);

// Puts what the configuration file gives of a record that moves on its own over what it would be.
void PutGiven(const Call& call, const char* name, void* record);

// The versions that the last update left, else those of the configuration file.
VersionRecord CurrentVersions(Call& call);

}  // namespace simulator
