#include "relay.h"

#include <fcntl.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace extcap {

namespace {

constexpr int kPipeSize = 1 << 20;              // the most without further rights
constexpr size_t kPieceSize = size_t{1} << 19;  // and the longest block; a cache has room for it

struct BlockHead {
  uint32_t type;
  uint32_t length;  // of the whole block, a multiple of four
};
constexpr uint32_t kShortestBlock = 12;

}  // namespace

Relay::~Relay() {
  if (watch_ >= 0) close(watch_);
  if (file_ >= 0) close(file_);
}

bool Relay::Open(const std::string& path, int folder, int pipe) {
  folder_ = folder;
  pipe_ = pipe;
  buffer_.resize(kPieceSize);
  fcntl(pipe, F_SETPIPE_SZ, kPipeSize);  // else it stays smaller
  watch_ = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  return watch_ >= 0 &&
         inotify_add_watch(watch_, path.c_str(), IN_CREATE | IN_MOVED_TO | IN_MODIFY) >= 0;
}

// Takes note of new files. Of those that wait too long the oldest that is not yet begun goes: also
// while the pipe takes nothing.
void Relay::LookAround() {
  alignas(inotify_event) char events[4096];
  for (ssize_t size; (size = read(watch_, events, sizeof events)) > 0;) {
    for (const char* at = events; at < events + size;) {
      const auto* event = reinterpret_cast<const inotify_event*>(at);
      if ((event->mask & (IN_CREATE | IN_MOVED_TO)) != 0) files_.emplace_back(event->name);
      at += sizeof *event + event->len;
    }
  }
  for (; files_.size() > most_files_; ++passed_over_) {
    unlinkat(folder_, files_[1].c_str(), 0);
    files_.erase(files_.begin() + 1);
  }
}

// A block that the file does not complete is lost: there is no way to go on from it.
void Relay::NextFile() {
  if (file_ >= 0) close(file_);
  file_ = -1;
  unlinkat(folder_, files_.front().c_str(), 0);
  files_.pop_front();
  used_ = whole_ = sent_ = 0;
  place_ = 0;
}

Relay::State Relay::Fail(const char* reason) {
  failure_ = files_.front() + ": " + reason;
  return State::kFailed;
}

// Fills the buffer, in which only the beginning of a block is left.
Relay::State Relay::Read() {
  if (files_.empty()) return State::kIdle;
  if (file_ < 0) file_ = openat(folder_, files_.front().c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC);
  const ssize_t size = file_ < 0 ? -1 : read(file_, buffer_.data() + used_, buffer_.size() - used_);
  if (size < 0) {
    return Fail(strerror(errno));
  }
  if (size == 0) {
    // Its successor was there before this look at it: it was complete then.
    if (files_.size() == 1) return State::kIdle;
    NextFile();
    return State::kBusy;
  }
  used_ += static_cast<size_t>(size);
  for (BlockHead head; used_ - whole_ >= sizeof head; whole_ += head.length) {
    memcpy(&head, buffer_.data() + whole_, sizeof head);
    if (head.length < kShortestBlock || head.length % 4 != 0 || head.length > buffer_.size()) {
      return Fail("not a pcapng file of this machine's byte order");
    }
    if (head.length > used_ - whole_) break;
  }
  return State::kBusy;
}

// The pages of the file go into the pipe as they are, which saves a copy: what was written to a
// capture does not change any more. The buffer has served to find the blocks.
Relay::State Relay::Write() {
  off_t at = place_ + static_cast<off_t>(sent_);
  const ssize_t size = splice(file_, &at, pipe_, nullptr, whole_ - sent_, SPLICE_F_NONBLOCK);
  if (size < 0) return errno == EAGAIN ? State::kBlocked : State::kClosed;
  if (size == 0) return Fail("became shorter");
  sent_ += static_cast<size_t>(size);
  if (sent_ < whole_) return State::kBusy;
  memmove(buffer_.data(), buffer_.data() + whole_, used_ - whole_);
  place_ += static_cast<off_t>(whole_);
  used_ -= whole_;
  whole_ = sent_ = 0;
  return State::kBusy;
}

Relay::State Relay::Move() {
  LookAround();
  if (whole_ == 0) {
    const State state = Read();
    if (state != State::kBusy || whole_ == 0) return state;
  }
  return Write();
}

}  // namespace extcap
