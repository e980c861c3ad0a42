// The traffic counters of a device.
#pragma once

#include "device/corvane_api.h"
#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kContinuous =
    FlagSpec("continuous", "Continuously refresh statistics.");
inline constexpr ParameterSpec kRefreshDelay =
    IntegerSpec("delay", "<delay>", "Delay between two refreshes in ms (defaults to 1000).");

inline constexpr auto kStatisticsParameters = Parameters(kContinuous, kRefreshDelay);

// What the first layout counts for each port.
struct PortCounterRow {
  const char* label;
  uint64_t PortStatistics::*counter;
};

inline constexpr PortCounterRow kPortCounters[] = {
    {"Less than 64bytes", &PortStatistics::less_than_64},
    {"Between 64 and 1518 bytes", &PortStatistics::from_64_to_1518},
    {"More than 1518 bytes", &PortStatistics::more_than_1518},
    {"Collisions", &PortStatistics::collisions},
    {"CRC Errors", &PortStatistics::crc_errors},
    {"Jabbers", &PortStatistics::jabbers},
    {"Total Bytes", &PortStatistics::total_bytes},
    {"Total valid packets", &PortStatistics::valid_packets},
    {"Total invalid packets", &PortStatistics::invalid_packets},
    {"HW dropped", &PortStatistics::hw_dropped},
};

int Statistics(const CommandNode& leaf);

}  // namespace corvane
