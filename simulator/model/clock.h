// The clock of a simulated device: it runs like the host's (CLOCK_REALTIME) and is ahead of it by
// an offset, 0 until the clock is set. All times are nanoseconds (HostMs: milliseconds) since the
// Unix epoch, UTC.
#pragma once

#include <cstdint>
#include <optional>

#include "model/call.h"
#include "state/host_clock.h"

namespace simulator {

int64_t HostMs();

// The device's clock minus the host's.
int64_t ClockOffsetNs(Call& call);

// The device's clock, never before the epoch.
int64_t DeviceNs(Call& call);

// The source from which the clock was set last; nothing when it was not set since the start.
std::optional<uint32_t> ClockSource(Call& call);

// Sets the clock by its offset and stores the source (coded like timestamp_source).
void SetClock(Call& call, uint32_t source, int64_t offset_ns);

}  // namespace simulator
