// Writes kept frames into a capture's pcapng files, one after the other, as its target says.
//
// Frames wait in the process and go to the file in large pieces, each ending with a whole block: a
// file can be read up to the last flush however the process ends. A file that is closed ends with
// the statistics of both ports and is never longer than max_file_size, if that has room for the
// blocks around the frames (less than 400 bytes and the device's name).
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "dump/capture_files.h"
#include "tap/frame_path.h"

namespace simulator {

class CaptureWriter {
 public:
  // More than this never waits, whatever the target allows.
  static constexpr size_t kMostCache = size_t{1} << 20;

  CaptureWriter() = default;
  ~CaptureWriter();  // closes
  CaptureWriter(const CaptureWriter&) = delete;
  CaptureWriter& operator=(const CaptureWriter&) = delete;

  // Begins the first file. False with the reason when it cannot. To be called once.
  bool Open(const CaptureTarget& target, std::string& reason);

  // These return false when a file could not be written or begun: then the capture has failed for
  // good. The file ends with a whole block, and frames that did not get there are dropped.

  // A frame that no file has room for is dropped. Begins the next file when this one is full.
  bool Write(const KeptFrame& frame);
  // Writes everything that waits to the file. Fails too when the file or its folder was removed.
  bool Flush();
  // Ends the file and the capture. More calls do nothing.
  bool Close();
  // Tells the writer the time since the epoch, which decides the names of files and when the next
  // begins. To be called a few times a second, with and without traffic. Flushes every 200 ms.
  bool Tick(int64_t now_ns);

  // The last file that the target allows is full. Nothing more is taken, and Write drops nothing.
  bool ended() const { return state_ == State::kEnded; }
  // Why the capture failed; empty when it did not.
  const std::string& reason() const { return reason_; }

  // The writer keeps the account of each port's frames since the capture began; every file ends
  // with it. Frames given to Write are in it by themselves. PassOver: a frame arrived that is not
  // to be kept. SetMissed: how many frames the port lost before anybody saw them.
  void PassOver(uint8_t port) { ++ports_[port].seen; }
  void SetMissed(uint8_t port, uint64_t frames) { ports_[port].missed = frames; }
  // Frames of the port that were lost: missed ones and those dropped here.
  uint64_t frames_lost(uint8_t port) const { return ports_[port].missed + ports_[port].dropped; }

  uint64_t bytes_written() const { return bytes_written_; }  // on disk, in all files
  uint64_t files_written() const { return files_.begun(); }  // with the one being written
  uint64_t bytes_dropped() const { return bytes_dropped_; }  // of frames
  uint64_t cache_used() const { return used_; }              // bytes

 private:
  enum class State : uint8_t { kClosed, kRunning, kEnded, kFailed };
  struct PortAccount {  // frames
    uint64_t seen;
    uint64_t missed;
    uint64_t dropped;  // of those seen
  };

  bool BeginFile();
  bool EndFile();
  bool NextFile();
  bool MakeRoom(size_t size);
  bool Drop(const KeptFrame& frame);
  bool Fail(std::string reason);
  bool FailWriting(size_t done, int error);
  void Append(const std::vector<uint8_t>& blocks);

  CaptureFiles files_;
  CaptureTarget target_;
  uint64_t size_limit_ = 0;    // of a file without its statistics
  size_t cache_limit_ = 0;     // for used_, unless one packet is longer
  std::vector<uint8_t> head_;  // how every file begins
  std::unique_ptr<uint8_t[]> cache_;
  size_t used_ = 0;
  int file_ = -1;
  uint64_t file_size_ = 0;  // on disk
  int64_t now_ns_ = 0;
  int64_t file_start_ns_ = 0;
  int64_t flushed_ns_ = 0;
  uint64_t bytes_written_ = 0;
  uint64_t bytes_dropped_ = 0;
  PortAccount ports_[CORVANE_PORTS] = {};
  State state_ = State::kClosed;
  std::string reason_;
};

}  // namespace simulator
