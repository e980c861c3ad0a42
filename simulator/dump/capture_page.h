// The file that a capture in the background shares with every program on the same device state:
// the capture's report, and the configuration that it is to follow. The process that holds the
// file's record lock is the capture; the kernel frees the lock however the process ends.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <cstring>
#include <string>

#include "device/corvane_api.h"
#include "tap/frame_path.h"

namespace simulator {

enum class CaptureState : uint32_t {
  kNone,     // there was none
  kRunning,  // in a page that nobody holds: it was killed
  kEnded,
  kFailed
};

struct CaptureReport {
  CaptureState state;
  DiskDumpStatus status;
  PathCounts counts;
  uint64_t frames_lost;  // no room for them in the cache
  char reason[512];      // of kFailed, for people
};

struct CaptureSettings {
  PathSettings path;
  int64_t clock_offset_ns;  // the device's clock minus the host's
};

// A value with one writer at a time and any number of readers. A writer may die at any point: it
// writes to the place that nobody reads, and the last number says which place counts.
template <class Value>
class SharedValue {
 public:
  void Store(const Value& value) {
    const uint32_t next = sequence_.load(std::memory_order_relaxed) + 1;
    std::atomic_thread_fence(std::memory_order_release);
    memcpy(&values_[next % 2], &value, sizeof value);
    sequence_.store(next, std::memory_order_release);
  }

  // What was stored last.
  Value Load() const {
    Value value;
    for (int i = 0; i < 1000; ++i) {
      const uint32_t before = sequence_.load(std::memory_order_acquire);
      memcpy(&value, &values_[before % 2], sizeof value);
      std::atomic_thread_fence(std::memory_order_acquire);
      if (sequence_.load(std::memory_order_relaxed) == before) break;
    }
    return value;
  }

  // Changes with each store.
  uint32_t version() const { return sequence_.load(std::memory_order_acquire); }

 private:
  std::atomic<uint32_t> sequence_;
  Value values_[2];
};

struct SharedCapture {
  SharedValue<CaptureReport> report;
  SharedValue<CaptureSettings> settings;
  std::atomic<uint32_t> told;  // not 0: people know why it failed
};

// How the reason ends when another process holds the page.
inline constexpr const char* kAnotherRuns = "another capture runs";

class CapturePage {
 public:
  CapturePage() = default;
  ~CapturePage();
  CapturePage(const CapturePage&) = delete;
  CapturePage& operator=(const CapturePage&) = delete;

  // For the capture itself: makes the file or takes the one that is there, and locks it until the
  // process ends. False with the reason. To be called once a process: opening and closing the file
  // again would free the lock.
  bool Hold(const std::string& path, std::string& reason);

  // For everyone else; access is O_RDONLY or O_RDWR. False when there is no page, which a file that
  // must not be used is not; with errno EACCES when this user may not open it so.
  bool Open(const std::string& path, int access);
  // The process that holds the page; 0 for none, -1 when there is one that cannot be named.
  pid_t Holder() const;

  // True until the file is removed.
  bool is_there() const;
  SharedCapture& shared() { return *shared_; }

 private:
  bool Map(int protection);

  int file_ = -1;
  SharedCapture* shared_ = nullptr;
};

}  // namespace simulator
