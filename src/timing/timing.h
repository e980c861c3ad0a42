// What the timing commands share.
#pragma once

inline constexpr const char* kTimingUnsupported =
    "Your device does not support timing information and configuration";
