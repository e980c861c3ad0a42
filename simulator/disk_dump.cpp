#include "disk_dump.h"

#include <algorithm>

namespace {

constexpr int64_t kCacheMs = 20;

// The bytes of the frames that the device passes on in a time since its start.
uint64_t CapturedBytes(Cycle cycle, int64_t rate, DumpSpan span) {
  const auto bytes = [=](int64_t at_ms) {
    return CountFrames(cycle, FramesAfter(at_ms, rate),
                       [](const Frame& frame) { return frame.fate != Fate::kHwDropped; })
        .bytes;
  };
  return bytes(span.now_ms) - bytes(span.start_ms);
}

// What has been written, split into files of at most so much each.
struct Files {
  uint64_t written;
  uint64_t count;
};

// most: how many files there may be; 0 for any number. A limit of 0 makes one file of all.
Files Split(uint64_t written, uint64_t limit, uint64_t most) {
  if (limit == 0) return {written, 1};
  const uint64_t full = written / limit;
  if (most != 0 && full >= most) return {most * limit, most};
  return {written, full + 1};
}

}  // namespace

DiskDumpStatus RunningDump(Cycle cycle, int64_t rate, const DumpSettings& settings, DumpSpan span) {
  span.now_ms = std::max(span.now_ms, span.start_ms);
  const uint64_t most = settings.loop != 0 ? 0 : settings.file_count;
  const auto elapsed_ms = static_cast<uint64_t>(span.now_ms - span.start_ms);
  const Files by_time = Split(elapsed_ms, uint64_t{1000} * settings.max_duration, most);
  const int64_t end_ms = span.start_ms + static_cast<int64_t>(by_time.written);
  const Files by_size =
      Split(CapturedBytes(cycle, rate, {span.start_ms, end_ms}), settings.max_file_size, most);
  const DumpSpan last = {std::max(span.start_ms, span.now_ms - kCacheMs), span.now_ms};

  DiskDumpStatus status = {};
  status.enabled = 1;
  status.cache_used = std::min(CapturedBytes(cycle, rate, last), settings.max_cache / 2);
  status.bytes_written = by_size.written;
  status.max_cache = settings.max_cache;
  status.files_written = std::max(by_time.count, by_size.count);
  return status;
}
