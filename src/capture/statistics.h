// The traffic counters of a device.
#pragma once

#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kContinuous =
    FlagSpec("continuous", "Continuously refresh statistics.");
inline constexpr ParameterSpec kRefreshDelay =
    IntegerSpec("delay", "<delay>", "Delay between two refreshes in ms (defaults to 1000).");

inline constexpr auto kStatisticsParameters = Parameters(kContinuous, kRefreshDelay);

int Statistics(const CommandNode& leaf);

}  // namespace corvane
