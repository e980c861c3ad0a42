#include "traffic/file_replay.h"

#include <algorithm>

namespace simulator {

bool FileReplay::Open(const PortSource& source, uint8_t port, int64_t rate, int64_t start_ns,
                      std::string& reason) {
  source_ = source;
  port_ = port;
  rate_ = source.rate >= 0 ? source.rate : rate;
  start_ns_ = due_ns_ = start_ns;
  const bool open = file_.Open(source.file);
  if (!open) reason = file_.reason();
  return open;
}

// Begins again, one mean interval of the frames later, and reads.
Supply FileReplay::Rewind() {
  const int64_t span = last_ns_ - first_ns_;
  const int64_t gap =
      round_count_ > 1 && span > 0 ? span / static_cast<int64_t>(round_count_ - 1) : 1'000'000;
  shift_ns_ = std::min(std::min(shift_ns_ + span, kLatestNs) + gap, kLatestNs);
  count_before_ = count_;
  round_count_ = 0;
  return file_.Open(source_.file) ? file_.Next(frame_) : Supply::kFailed;
}

// A file that names ports has the frames of each for that port.
bool FileReplay::IsMine() const {
  const std::string_view name = file_.interface();
  return source_.interface.empty() ? name != kPortNames[1 - port_] : name == source_.interface;
}

int64_t FileReplay::DueTime(int64_t file_ns) const {
  if (source_.pace == Pace::kRate) return TimeOfFrame(start_ns_, count_, rate_);
  if (source_.pace == Pace::kFast) return file_ns + shift_ns_;
  return std::min(start_ns_ + file_ns - first_ns_, kLatestNs) + shift_ns_;
}

// Frames may not be in the order of their times.
void FileReplay::SetTime(int64_t file_ns) {
  if (count_ == 0 && round_count_ == 0) first_ns_ = last_ns_ = file_ns;
  last_ns_ = std::max(last_ns_, file_ns);
  const int64_t due_ns = DueTime(file_ns);
  due_ns_ = keeps_times() ? due_ns : std::max(due_ns_, due_ns);
  ++round_count_;
}

void FileReplay::Shift(int64_t by_ns) {
  if (keeps_times()) return;
  start_ns_ += by_ns;
  due_ns_ += by_ns;
  frame_.time_ns += by_ns;
}

Supply FileReplay::Read() {
  Supply supply = Supply::kFrame;
  do {
    supply = file_.Next(frame_);
    if (supply == Supply::kEnded && source_.repeat && count_ > count_before_) supply = Rewind();
    if (supply == Supply::kFrame) SetTime(frame_.time_ns);
  } while (supply == Supply::kFrame && !IsMine());
  if (supply == Supply::kEnded && count_ == 0 && !source_.interface.empty()) {
    return file_.Fail("it has no packets of an interface \"" + source_.interface + '"');
  }
  if (supply != Supply::kFrame) return supply;
  frame_.port = port_;
  frame_.time_ns = due_ns_;
  ++count_;
  has_frame_ = true;
  return Supply::kFrame;
}

Supply FileReplay::Next(int64_t now_ns, int64_t end_ns, RawFrame& frame) {
  const bool fast = source_.pace == Pace::kFast;
  if (source_.pace == Pace::kRate && rate_ == 0) {
    return end_ns <= now_ns ? Supply::kEnded : Supply::kLater;
  }
  if (!has_frame_) {
    const Supply supply = Read();
    if (supply != Supply::kFrame) return supply;
  }
  if (fast ? end_ns <= now_ns : due_ns_ > end_ns) return Supply::kEnded;
  if (!fast && due_ns_ > now_ns) return Supply::kLater;
  frame = frame_;
  has_frame_ = false;
  return Supply::kFrame;
}

}  // namespace simulator
