// What a direct capture reports of itself. The numbers follow from the traffic and the time that
// the capture runs; no file is written.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"
#include "traffic.h"

// The numbers of the two configuration records.
struct DumpSettings {
  uint64_t max_file_size;  // bytes, 0 for no limit
  uint64_t max_cache;      // bytes
  uint32_t file_count;     // 0 for no limit
  uint32_t max_duration;   // seconds a file, 0 for no limit
  uint32_t loop;
  uint32_t full_frames;
};

// When a capture runs, in milliseconds since the device's start.
struct DumpSpan {
  int64_t start_ms;
  int64_t now_ms;
};

// The status of a running capture of traffic at that rate.
//
// It takes every frame in full that the hardware does not drop. A new file begins after each
// max_file_size bytes and after each max_duration seconds; where both are given, whichever makes
// more files counts. files_written includes the file that is being written. Unless the files are
// written round-robin, the capture stands still, although enabled, when file_count files are full.
// The cache holds the frames of the last 20 ms and is never more than half full.
DiskDumpStatus RunningDump(Cycle cycle, int64_t rate, const DumpSettings& settings, DumpSpan span);
