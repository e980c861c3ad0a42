#include "dump/capture_run.h"

#include <algorithm>
#include <cstdlib>

#include "state/host_clock.h"

namespace simulator {
namespace {

constexpr int64_t kReportNs = 50 * kNsPerMs;
constexpr int64_t kClockStepNs = 1000 * kNsPerMs;
constexpr int kMostFrames = 1024;  // between two looks at the clock
constexpr int kMostWaitMs = 50;

int64_t ClockAheadNs() {
  return HostNs() - SteadyNs();
}

}  // namespace

bool CaptureRun::Open(const CaptureOrder& order, std::string& reason) {
  settings_ = order.settings;
  max_cache_ = order.target.max_cache;
  path_.emplace(settings_.path);
  const int64_t now_ns = HostNs();
  clock_ahead_ns_ = ClockAheadNs();
  // What waits in the writer and what waits to be fetched are together no more than that.
  CaptureTarget target = order.target;
  target.max_cache = std::min<uint64_t>(max_cache_ / 2, CaptureWriter::kMostCache);
  SourceSettings source = order.source;
  source.max_waiting = max_cache_ - target.max_cache;
  source.start_ns = now_ns;
  source_.SetClockOffset(settings_.path.stamping.offset_ns);
  target.start_ns = now_ns + settings_.clock_offset_ns;
  target.crc_kept = settings_.path.features.keepcrc32 == 1;
  target.stamped_by_host = settings_.path.stamping.by_host != 0;
  return source_.Open(source, reason) && writer_.Open(target, reason);
}

// Whether CRCs are kept and where time stamps are from cannot change within a capture: every file
// says so of its interfaces.
void CaptureRun::Follow(const CaptureSettings& settings) {
  const uint32_t keep_crc32 = settings_.path.features.keepcrc32;
  const bool full_frames = settings_.path.full_frames;
  const int64_t by_host = settings_.path.stamping.by_host;
  settings_ = settings;
  settings_.path.features.keepcrc32 = keep_crc32;
  settings_.path.full_frames = full_frames;
  settings_.path.stamping.by_host = by_host;
  const PathCounts counts = path_->counts();
  path_.emplace(settings_.path, counts);
  source_.SetClockOffset(settings_.path.stamping.offset_ns);
}

bool CaptureRun::Keep(const RawFrame& frame) {
  bool ok = true;
  for (int times = settings_.path.loops ? 2 : 1; ok && times > 0; --times) {
    KeptFrame kept;
    if (!path_->Arrives(frame)) continue;
    if (path_->Process(frame, kept)) {
      ok = writer_.Write(kept);
    } else {
      writer_.PassOver(frame.port);
    }
  }
  return ok;
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
  report.counts = path_->counts();
  report.status.enabled = state == CaptureState::kRunning ? 1 : 0;
  report.status.error = state == CaptureState::kFailed ? 1 : 0;
  report.status.bytes_written = writer_.bytes_written();
  report.status.files_written = writer_.files_written();
  report.status.bytes_dropped = CountMissed() + writer_.bytes_dropped();
  report.status.max_cache = max_cache_;
  if (state == CaptureState::kRunning) {
    // The sources have not yet dropped what came since they were last asked.
    report.status.cache_used = std::min(writer_.cache_used() + source_.waiting(now_ns), max_cache_);
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
  return HostNs();
}

void CaptureRun::Run(CapturePage& page, const volatile bool& stop) {
  SharedCapture& shared = page.shared();
  uint32_t followed = 0;  // they may have changed while the sources were opened
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
    // A file that keeps its reader waiting ends when the signal to stop interrupts it.
    if (supply == Supply::kFailed && stop) supply = Supply::kEnded;
    written = writer_.Tick(now_ns + settings_.clock_offset_ns);
    if (supply == Supply::kLater) source_.Wait(now_ns, kMostWaitMs);
  }
  Finish(page, written && supply != Supply::kFailed);
}

// The last file is ended in any case.
void CaptureRun::Finish(CapturePage& page, bool ok) {
  CountMissed();
  ok = writer_.Close() && ok;
  CaptureReport report = Report(ok ? CaptureState::kEnded : CaptureState::kFailed, HostNs());
  const std::string& reason = writer_.reason().empty() ? source_.reason() : writer_.reason();
  reason.copy(report.reason, sizeof report.reason - 1);
  page.shared().report.Store(report);
}

}  // namespace simulator
