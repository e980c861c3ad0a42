// Capture to files of the host, which the device library writes.
#pragma once

#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kCaptureLoop = FlagSpec("loop", "Enable round-robin style capture.");
inline constexpr ParameterSpec kCaptureCount =
    IntegerSpec("count", "<count>",
                "Numbers of output files. 0 means an infinite number of files. (defaults to 1)");
inline constexpr ParameterSpec kCaptureSize = IntegerSpec(
    "size", "<size>", "Size of each outpur file in MB. 0 means no size limit. (defaults to 0)");
inline constexpr ParameterSpec kCaptureName =
    FileSpec("o", "name", "<out_file>",
             "Base name of the output files. Timestamp will be automatically added to this name.");
inline constexpr ParameterSpec kCaptureDir =
    FileSpec(nullptr, "dir", "<out_dir>", "Output directory");
inline constexpr ParameterSpec kCapturePattern =
    TextSpec("pattern", "<filename_pattern>", "Output file name pattern");
inline constexpr ParameterSpec kCaptureMaxCache =
    IntegerSpec("maxcache", "<size>", "Maximum cache size in MB. (defaults to 100)");
inline constexpr ParameterSpec kCaptureMaxDuration =
    IntegerSpec("maxduration", "fileduration", "<duration>",
                "Maximum per file capture duration in seconds. 0 means no limit. (defaults to 0)");
inline constexpr ParameterSpec kCaptureFullFrames = FlagSpec("fullframes", "Capture full frames.");

inline constexpr auto kDirectCaptureParameters =
    Parameters(kCaptureLoop, kCaptureCount, kCaptureSize, kCaptureName, kCaptureDir,
               kCapturePattern, kCaptureMaxCache, kCaptureMaxDuration, kCaptureFullFrames);

int DirectCaptureStatus(const CommandNode& leaf);
int DirectCaptureStart(const CommandNode& leaf);
int DirectCaptureStop(const CommandNode& leaf);

}  // namespace corvane
