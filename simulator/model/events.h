// What happens around the devices: at times since the first use of the state folder, or now.
#pragma once

#include "model/call.h"

namespace simulator {

// Applies the events whose time has come and that were not applied before, each as at its time. A
// state that cannot be written leaves them to another program.
void ApplyDueEvents(const Configuration& configuration, DeviceState& state, int64_t first_use_ms);

// Changes the records of the device as they stand at that time of the host's clock.
void ApplyEvent(Call& call, const Event& event, int64_t when_ms);

}  // namespace simulator
