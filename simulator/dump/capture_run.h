// A capture at work: frames from the sources, through the device, into files.
#pragma once

#include <optional>
#include <string>

#include "dump/capture_page.h"
#include "dump/capture_writer.h"
#include "traffic/traffic_source.h"

namespace simulator {

struct CaptureOrder {
  CaptureSettings settings;
  SourceSettings source;  // without its times
  CaptureTarget target;   // max_cache is for the sources too
};

class CaptureRun {
 public:
  // Opens the sources and the first file. False with the reason.
  bool Open(const CaptureOrder& order, std::string& reason);

  // Works until the sources or the files end, something fails, stop becomes true or the page is
  // removed. Keeps its report in the page up to date and follows the page's settings.
  void Run(CapturePage& page, const volatile bool& stop);

  // The report for the page.
  CaptureReport Report(CaptureState state, int64_t now_ns);

 private:
  Supply Pump(int64_t now_ns);
  bool Keep(const RawFrame& frame);
  void Follow(const CaptureSettings& settings);
  int64_t LookAtClock();
  uint64_t CountMissed();
  void Finish(CapturePage& page, bool ok);

  CaptureSettings settings_ = {};
  uint64_t max_cache_ = 0;
  TrafficSource source_;
  CaptureWriter writer_;
  std::optional<FramePath> path_;
  int64_t clock_ahead_ns_ = 0;  // of the monotonic clock
};

}  // namespace simulator
