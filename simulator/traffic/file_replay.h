// A pcap or pcapng file as a port's traffic. One file may feed both ports: they keep step, for all
// packets of the file count for their times, whichever port takes them.
#pragma once

#include <string>

#include "configuration/port_source.h"
#include "traffic/capture_file.h"
#include "traffic/port_stream.h"

namespace simulator {

class FileReplay : public PortStream {
 public:
  // False with the reason when the file cannot be read or does not have Ethernet frames. rate is
  // for Pace::kRate when the source has no rate of its own.
  bool Open(const PortSource& source, uint8_t port, int64_t rate, int64_t start_ns,
            std::string& reason);

  // A file waits: nothing is lost.
  Supply Next(int64_t now_ns, int64_t end_ns, RawFrame& frame) override;
  int64_t due_ns() const override { return due_ns_; }
  void Shift(int64_t by_ns) override;
  bool keeps_times() const override { return source_.pace == Pace::kFast; }
  std::string reason() const override { return file_.reason(); }

 private:
  Supply Rewind();
  bool IsMine() const;
  int64_t DueTime(int64_t file_ns) const;
  void SetTime(int64_t file_ns);
  Supply Read();

  PortSource source_;
  CaptureFile file_;
  uint8_t port_ = 0;
  int64_t rate_ = 0;
  int64_t start_ns_ = 0;
  bool has_frame_ = false;  // frame_ was read and not yet given
  RawFrame frame_ = {};
  uint64_t count_ = 0;         // of the port's frames
  uint64_t count_before_ = 0;  // of them before the file was last opened
  uint64_t round_count_ = 0;   // of all frames since then
  int64_t first_ns_ = 0;       // the first frame's time in the file
  int64_t last_ns_ = 0;        // the latest one
  int64_t shift_ns_ = 0;       // from the file's times to this round's
  int64_t due_ns_ = 0;
};

}  // namespace simulator
