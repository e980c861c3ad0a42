#include "dump/capture_writer.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <limits>

#include "dump/pcapng.h"
#include "state/host_clock.h"

namespace simulator {
namespace {

constexpr const char* kApplication = "Corvane simulator";
constexpr std::string_view kNoTimeStamps =
    "The device gave no time stamps: the times are those of the computer, in microseconds.";
constexpr size_t kTailSize = CORVANE_PORTS * kStatisticsSize;
constexpr int64_t kFlushNs = kSecond / 5;  // somebody may be looking at the frames as they come
// There is always room for one packet and for what ends a file.
constexpr size_t kCacheSize =
    std::max(CaptureWriter::kMostCache, PacketBlockSize(kLongestPacket, true)) + kTailSize;

std::vector<uint8_t> HeadOf(const CaptureTarget& target) {
  std::vector<uint8_t> head;
  AppendSectionHeader(head, target.device_name, kApplication);
  uint32_t snap_length = std::min(target.snap_length, kLongestPacket);
  if (snap_length == 0) snap_length = kLongestPacket;
  for (const char* name : kPortNames) {
    AppendInterface(head, {name, snap_length, target.crc_kept,
                           target.stamped_by_host ? kNoTimeStamps : std::string_view()});
  }
  return head;
}

// True while the file has a name in a folder: nobody could read it without one.
bool IsThere(int file) {
  struct stat facts;
  return fstat(file, &facts) == 0 && facts.st_nlink > 0;
}

}  // namespace

CaptureWriter::~CaptureWriter() {
  Close();
}

bool CaptureWriter::Open(const CaptureTarget& target, std::string& reason) {
  target_ = target;
  head_ = HeadOf(target);
  cache_ = std::make_unique_for_overwrite<uint8_t[]>(kCacheSize);
  cache_limit_ = static_cast<size_t>(std::min<uint64_t>(target.max_cache, kMostCache));
  size_limit_ = std::numeric_limits<uint64_t>::max();
  if (target.max_file_size > 0) {
    size_limit_ = std::max<uint64_t>(target.max_file_size, kTailSize) - kTailSize;
  }
  now_ns_ = flushed_ns_ = target.start_ns != 0 ? target.start_ns : HostNs();
  const bool open = files_.Open(target, reason_) && BeginFile();
  reason = reason_;
  return open;
}

bool CaptureWriter::Write(const KeptFrame& frame) {
  if (state_ == State::kEnded) return true;
  ++ports_[frame.port].seen;
  const uint32_t captured = std::min(frame.length, kLongestPacket);
  const size_t size = PacketBlockSize(captured, frame.crc_error);
  const bool fits = used_ + size <= cache_limit_ && file_size_ + used_ + size <= size_limit_;
  if (state_ != State::kRunning || (!fits && head_.size() + size > size_limit_)) return Drop(frame);
  if (!fits && !MakeRoom(size)) return Drop(frame);
  if (state_ == State::kEnded) return true;
  PutPacket(&cache_[used_], {.interface = frame.port,
                             .time_ns = frame.time_ns,
                             .bytes = frame.bytes,
                             .captured = captured,
                             .original = frame.wire_length,
                             .crc_error = frame.crc_error});
  used_ += size;
  return true;
}

bool CaptureWriter::Flush() {
  if (state_ != State::kRunning) return state_ != State::kFailed;
  if (!IsThere(file_)) return FailWriting(0, ENOENT);
  size_t done = 0;
  while (done < used_) {
    const ssize_t written = write(file_, &cache_[done], used_ - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return FailWriting(done, written < 0 ? errno : ENOSPC);
    done += static_cast<size_t>(written);
  }
  file_size_ += used_;
  bytes_written_ += used_;
  used_ = 0;
  return true;
}

bool CaptureWriter::Close() {
  if (state_ == State::kRunning && EndFile()) state_ = State::kClosed;
  return state_ != State::kFailed;
}

bool CaptureWriter::Tick(int64_t now_ns) {
  now_ns_ = now_ns;
  if (state_ != State::kRunning) return state_ != State::kFailed;
  // A clock that was set back must not delay the next file or flush.
  file_start_ns_ = std::min(file_start_ns_, now_ns);
  flushed_ns_ = std::min(flushed_ns_, now_ns);
  const int64_t duration_ns = target_.max_duration * kSecond;
  if (duration_ns > 0 && now_ns - file_start_ns_ >= duration_ns) return NextFile();
  if (now_ns - flushed_ns_ < kFlushNs) return true;
  flushed_ns_ = now_ns;
  return Flush();
}

bool CaptureWriter::BeginFile() {
  file_ = files_.Begin(now_ns_, reason_);
  if (file_ < 0) return Fail(reason_);
  state_ = State::kRunning;
  file_start_ns_ = now_ns_;
  file_size_ = 0;
  Append(head_);
  return Flush();
}

bool CaptureWriter::EndFile() {
  std::vector<uint8_t> tail;
  for (uint8_t port = 0; port < CORVANE_PORTS; ++port) {
    const uint64_t arrived = ports_[port].seen + ports_[port].missed;
    AppendStatistics(tail, {port, now_ns_, arrived, frames_lost(port)});
  }
  Append(tail);
  if (!Flush()) return false;
  const int closed = close(file_);  // some file systems report a full disk only now
  file_ = -1;
  return closed == 0 || errno == EINTR || Fail(files_.current() + ": " + strerror(errno));
}

bool CaptureWriter::NextFile() {
  if (!EndFile()) return false;
  if (files_.HasNext()) return BeginFile();
  state_ = State::kEnded;
  return true;
}

// Makes room for a block of that size in the cache and in the file, unless the capture ends.
bool CaptureWriter::MakeRoom(size_t size) {
  if (file_size_ + used_ + size > size_limit_ && !NextFile()) return false;
  return used_ + size <= cache_limit_ || Flush();
}

bool CaptureWriter::Drop(const KeptFrame& frame) {
  bytes_dropped_ += frame.length;
  ++ports_[frame.port].dropped;
  return state_ != State::kFailed;
}

bool CaptureWriter::Fail(std::string reason) {
  reason_ = std::move(reason);
  state_ = State::kFailed;
  if (file_ >= 0) close(file_);
  file_ = -1;
  return false;
}

// done: bytes of the cache that are in the file already. The file is cut off after the last whole
// block of them.
bool CaptureWriter::FailWriting(size_t done, int error) {
  const size_t whole = WholeBlocks(cache_.get(), done);
  bytes_dropped_ += CapturedBytes(&cache_[whole], used_ - whole);
  const std::string reason = files_.current() + ": " + strerror(error);
  if (done > whole && ftruncate(file_, static_cast<off_t>(file_size_ + whole)) == 0) done = whole;
  file_size_ += done;
  bytes_written_ += done;
  used_ = 0;
  if (file_size_ < head_.size()) {
    bytes_written_ -= file_size_;
    files_.Discard();  // nothing can be read from it
  }
  return Fail(reason);
}

void CaptureWriter::Append(const std::vector<uint8_t>& blocks) {
  memcpy(&cache_[used_], blocks.data(), blocks.size());
  used_ += blocks.size();
}

}  // namespace simulator
