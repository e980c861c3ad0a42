// A pcap or pcapng file as a port's traffic. The frames in the file are taken to have no frame
// check sequence and to have arrived without errors.
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
  // False with the reason when the file cannot be read or does not have Ethernet frames. rate is
  // for Pace::kRate when the source has no rate of its own.
  bool Open(const PortSource& source, uint8_t port, int64_t rate, int64_t start_ns,
            std::string& reason);

  // The members of a stream (port_stream.h). Nothing is lost: a file waits.
  static constexpr int64_t kDelayNs = 0;
  Supply Next(int64_t now_ns, const StreamClock& clock, RawFrame& frame);
  int64_t due_ns() const { return due_ns_; }
  int descriptor() const { return -1; }
  void Shift(int64_t by_ns);
  bool keeps_times() const { return source_.pace == Pace::kFast; }
  LostFrames lost() const { return {}; }
  uint64_t waiting(int64_t /*now_ns*/) const { return 0; }
  const std::string& reason() const { return reason_; }

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
