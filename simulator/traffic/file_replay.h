// A pcap or pcapng file as a port's traffic. The file's frames are taken as without frame check
// sequence and as received well.
#pragma once

#include <pcap/pcap.h>

#include <memory>
#include <string>

#include "configuration/port_source.h"
#include "traffic/port_stream.h"

namespace simulator {

struct PcapDeleter {
  void operator()(pcap_t* pcap) const { pcap_close(pcap); }
};
using Pcap = std::unique_ptr<pcap_t, PcapDeleter>;

class FileReplay {
 public:
  // False with the reason when the file cannot be read or is not one of Ethernet frames. rate: for
  // Pace::kRate, when the source has none of its own.
  bool Open(const PortSource& source, uint8_t port, int64_t rate, int64_t start_ns,
            std::string& reason);

  // The next frame, when it is due; its bytes stay until the next call. due_ns is its time in any
  // case.
  Supply Next(int64_t now_ns, const StreamClock& clock, RawFrame& frame);
  int64_t due_ns() const { return due_ns_; }
  // The clock was set: all times to come are later by so much, unless they are those of the file.
  void Shift(int64_t by_ns);
  // The frames have the times of the file, not those of their arrival.
  bool keeps_times() const { return source_.pace == Pace::kFast; }
  const std::string& reason() const { return reason_; }  // of Supply::kFailed

 private:
  bool OpenFile(std::string& reason);
  bool Rewind();
  Supply Read();
  int64_t DueTime(int64_t file_ns);

  PortSource source_;
  Pcap pcap_;
  uint8_t port_ = 0;
  int64_t rate_ = 0;
  int64_t start_ns_ = 0;
  bool has_frame_ = false;  // frame_ was read and not yet given
  RawFrame frame_ = {};
  uint64_t count_ = 0;        // frames read
  uint64_t round_count_ = 0;  // of them since the file was last opened
  int64_t first_ns_ = 0;      // in the file
  int64_t last_ns_ = 0;       // in the file
  int64_t shift_ns_ = 0;      // from the file's times to this round's
  int64_t due_ns_ = 0;
  std::string reason_;
};

}  // namespace simulator
