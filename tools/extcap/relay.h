// The files of a running capture, one after the other, as they grow, into a pipe: whole pcapng
// blocks (draft-ietf-opsawg-pcapng) alone. A file is removed when it has been read and the next is
// there.
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <vector>

namespace extcap {

class Relay {
 public:
  enum class State : uint8_t {
    kIdle,     // everything that is in the files is in the pipe
    kBusy,     // there may be more
    kBlocked,  // the pipe is full
    kClosed,   // nobody reads the pipe any more
    kFailed    // the files cannot be read; failure() says why
  };

  // Of the files, no more than most_files, 2 or more, are kept: of those beyond, the first that is
  // not yet read from is passed over.
  explicit Relay(size_t most_files) : most_files_(most_files) {}
  ~Relay();
  Relay(const Relay&) = delete;
  Relay& operator=(const Relay&) = delete;

  // To be called once, before the capture begins. folder: where its files will be, as a path and as
  // a descriptor. pipe: open for writing. Both stay the caller's. False when the folder cannot be
  // watched, with errno.
  bool Open(const std::string& path, int folder, int pipe);

  // Can be read when something happened in the folder.
  int watch() const { return watch_; }

  // Moves a piece, without waiting.
  State Move();

  uint64_t files_passed_over() const { return passed_over_; }
  const std::string& failure() const { return failure_; }

 private:
  void LookAround();
  State Read();
  State Write();
  void NextFile();
  State Fail(const char* reason);

  size_t most_files_;
  int folder_ = -1;
  int pipe_ = -1;
  int watch_ = -1;
  int file_ = -1;                  // the first of files_, once it is open
  std::deque<std::string> files_;  // in the order in which they came
  std::vector<uint8_t> buffer_;
  off_t place_ = 0;   // in the file, of the buffer's beginning
  size_t used_ = 0;   // bytes in the buffer
  size_t whole_ = 0;  // of them, in whole blocks
  size_t sent_ = 0;   // of these, in the pipe
  uint64_t passed_over_ = 0;
  std::string failure_;
};

}  // namespace extcap
