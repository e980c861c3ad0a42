// The built-in mix as a port's traffic.
#pragma once

#include <vector>

#include "configuration/port_source.h"
#include "traffic/port_stream.h"

namespace simulator {

class Generator {
 public:
  // The frames of the mix for the port. Without a rate of its own the port gets them at their times
  // in the whole mix, which has mix_rate frames per second. max_waiting: how many bytes of frames
  // may be due and not yet fetched; when there are more, the oldest are lost.
  void Open(const PortSource& source, uint8_t port, int64_t mix_rate, uint64_t max_waiting,
            int64_t start_ns);

  // The members of a stream (port_stream.h). The bytes of all frames stay valid.
  static constexpr int64_t kDelayNs = 0;
  Supply Next(int64_t now_ns, const StreamClock& clock, RawFrame& frame);
  int64_t due_ns() const { return due_ns_; }
  int descriptor() const { return -1; }
  void Shift(int64_t by_ns) { start_ns_ += by_ns, due_ns_ += by_ns; }
  bool keeps_times() const { return false; }
  LostFrames lost() const { return lost_; }
  uint64_t waiting(int64_t now_ns) const;
  std::string reason() const { return {}; }

 private:
  struct Packet {
    std::vector<uint8_t> bytes;
    uint64_t position;  // in the whole mix
    bool crc_ok;
    bool hw_dropped;
  };

  void Advance();
  void Shuffle();
  void LoseOldest(int64_t now_ns);

  std::vector<Packet> packets_;
  std::vector<uint32_t> order_;
  uint64_t round_size_ = 0;  // positions in a round
  uint64_t round_ = 0;
  size_t next_ = 0;  // in order_
  uint64_t bytes_a_round_ = 0;
  uint64_t max_waiting_ = 0;
  uint8_t port_ = 0;
  int64_t rate_ = 0;
  bool own_rate_ = false;
  bool shuffled_ = false;
  uint64_t random_ = 0;
  int64_t start_ns_ = 0;
  int64_t due_ns_ = 0;
  LostFrames lost_ = {};
};

}  // namespace simulator
