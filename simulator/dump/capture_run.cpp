#include "dump/capture_run.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>

namespace simulator {
namespace {

constexpr int64_t kNsPerMs = 1'000'000;
constexpr int64_t kReportNs = 50 * kNsPerMs;
constexpr int64_t kClockStepNs = 1000 * kNsPerMs;
constexpr int kMostFrames = 1024;  // between two looks at the clock
constexpr int kMostWaitMs = 50;

template <class Clock>
int64_t NowNs() {
  const auto now = Clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::nanoseconds>(now).count();
}

int64_t HostClockNs() {
  return NowNs<std::chrono::system_clock>();
}

int64_t ClockAheadNs() {
  return HostClockNs() - NowNs<std::chrono::steady_clock>();
}

// Adds up the counts, all of which are uint64_t.
PathCounts Add(const PathCounts& one, const PathCounts& other) {
  constexpr size_t kCount = sizeof(PathCounts) / sizeof(uint64_t);
  uint64_t sums[2][kCount];
  memcpy(sums[0], &one, sizeof one);
  memcpy(sums[1], &other, sizeof other);
  for (size_t i = 0; i < kCount; ++i) sums[0][i] += sums[1][i];
  PathCounts sum;
  memcpy(&sum, sums[0], sizeof sum);
  return sum;
}

}  // namespace

bool CaptureRun::Open(const CaptureOrder& order, std::string& reason) {
  settings_ = order.settings;
  max_cache_ = order.target.max_cache;
  path_.emplace(settings_.path);
  const int64_t now_ns = HostClockNs();
  clock_ahead_ns_ = ClockAheadNs();
  SourceSettings source = order.source;
  source.max_waiting = max_cache_;
  source.start_ns = now_ns;
  source_.SetClockOffset(settings_.clock_offset_ns);
  CaptureTarget target = order.target;
  target.start_ns = now_ns + settings_.clock_offset_ns;
  target.crc_kept = settings_.path.features.keepcrc32 == 1;
  return source_.Open(source, reason) && writer_.Open(target, reason);
}

// Whether CRCs are kept cannot change within a capture: every file says so of its interfaces.
void CaptureRun::Follow(const CaptureSettings& settings) {
  const uint32_t keep_crc32 = settings_.path.features.keepcrc32;
  const bool full_frames = settings_.path.full_frames;
  settings_ = settings;
  settings_.path.features.keepcrc32 = keep_crc32;
  settings_.path.full_frames = full_frames;
  earlier_ = Add(earlier_, path_->counts());
  path_.emplace(settings_.path);
  source_.SetClockOffset(settings_.clock_offset_ns);
}

bool CaptureRun::Keep(const RawFrame& frame) {
  KeptFrame kept;
  if (path_->Process(frame, kept)) return writer_.Write(kept);
  writer_.PassOver(frame.port);
  return true;
}

// Takes frames until there are none for now, or until it is time to look at the clock again.
Supply CaptureRun::Pump(int64_t now_ns) {
  bool ok = true;
  const Supply supply = source_.Drain(now_ns, kMostFrames, [&](const RawFrame& frame) {
    ok = Keep(frame);
    return ok && !writer_.ended();
  });
  return ok ? supply : Supply::kFailed;
}

// Tells the writer how many frames the sources have lost by now; returns their bytes.
uint64_t CaptureRun::CountMissed() {
  uint64_t bytes = 0;
  for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
    const LostFrames lost = source_.lost(port);
    writer_.SetMissed(port, lost.frames);
    bytes += lost.bytes;
  }
  return bytes;
}

CaptureReport CaptureRun::Report(CaptureState state, int64_t now_ns) {
  CaptureReport report = {};
  report.state = state;
  report.counts = Add(earlier_, path_->counts());
  report.status.enabled = state == CaptureState::kRunning ? 1 : 0;
  report.status.error = state == CaptureState::kFailed ? 1 : 0;
  report.status.bytes_written = writer_.bytes_written();
  report.status.files_written = writer_.files_written();
  report.status.bytes_dropped = CountMissed() + writer_.bytes_dropped();
  report.status.max_cache = max_cache_;
  if (state == CaptureState::kRunning) {
    report.status.cache_used = writer_.cache_used() + source_.waiting(now_ns);
  }
  for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
    report.frames_lost += writer_.frames_lost(port);
  }
  return report;
}

// The host's clock. When it was set, or the machine slept, the traffic goes on at the new time: it
// neither waits for the old time nor makes up for the time between.
int64_t CaptureRun::LookAtClock() {
  const int64_t ahead_ns = ClockAheadNs();
  const int64_t step_ns = ahead_ns - clock_ahead_ns_;
  clock_ahead_ns_ = ahead_ns;
  if (std::abs(step_ns) >= kClockStepNs) source_.ShiftClock(step_ns);
  return HostClockNs();
}

void CaptureRun::Run(CapturePage& page, const volatile bool& stop) {
  SharedCapture& shared = page.shared();
  uint32_t followed = shared.settings.version();
  int64_t reported_ns = 0;
  bool stopping = false;
  bool written = true;
  Supply supply = Supply::kFrame;
  while (written && supply != Supply::kEnded && supply != Supply::kFailed && !writer_.ended()) {
    const int64_t now_ns = LookAtClock();
    bool stops = stop;
    if (now_ns - reported_ns >= kReportNs || now_ns < reported_ns) {
      reported_ns = now_ns;
      shared.report.Store(Report(CaptureState::kRunning, now_ns));
      stops = stops || !page.is_there();
    }
    if (stops && !stopping) source_.EndAt(now_ns);
    stopping = stopping || stops;
    if (const uint32_t version = shared.settings.version(); version != followed) {
      followed = version;
      Follow(shared.settings.Load());
    }
    supply = Pump(now_ns);
    written = writer_.Tick(now_ns + settings_.clock_offset_ns);
    if (supply == Supply::kLater) source_.Wait(now_ns, kMostWaitMs);
  }
  Finish(page, written && supply != Supply::kFailed);
}

// The last file is ended in any case.
void CaptureRun::Finish(CapturePage& page, bool ok) {
  CountMissed();
  ok = writer_.Close() && ok;
  const CaptureState state = ok ? CaptureState::kEnded : CaptureState::kFailed;
  page.shared().report.Store(Report(state, HostClockNs()));
}

}  // namespace simulator
