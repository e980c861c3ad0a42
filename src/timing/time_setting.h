// Setting the timestamp clocks of one device or of all.
#pragma once

#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kSntpServer =
    TextSpec("sntpserver", "<hostname>", "SNTP server host name or ip\n");

inline constexpr ParameterSpec kTimestamp =
    IntegerSpec("timestamp", "<seconds>",
                "Manually set a timestamp. This field is specified in number of seconds since unix "
                "epoch. (defaults to 0)\n");
inline constexpr ParameterSpec kTimestampNs =
    IntegerSpec("timestamp_ns", "<nanoseconds>",
                "Manually set a timestamp. This field is specified in number of nanosecond of "
                "'timestamp' second. (defaults to 0)\n");

inline constexpr auto kTimingSntpParameters = Parameters(kSntpServer);
inline constexpr auto kTimingManualParameters = Parameters(kTimestamp, kTimestampNs);

int TimingSetSntp(const CommandNode& leaf);
int TimingSetGps(const CommandNode& leaf);
int TimingSetManual(const CommandNode& leaf);
int TimingSetSystem(const CommandNode& leaf);

}  // namespace corvane
