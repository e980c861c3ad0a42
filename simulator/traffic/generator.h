// The built-in mix as a port's traffic.
#pragma once

#include <vector>

#include "configuration/port_source.h"
#include "traffic/port_stream.h"
#include "traffic/rounds.h"

namespace simulator {

class Generator : public PortStream {
 public:
  // The frames of the mix for the port. Without a rate of its own the port gets them at their times
  // in the whole mix, which has mix_rate frames per second. max_waiting: how many bytes of frames
  // may be due and not yet fetched; when there are more, the oldest are lost.
  void Open(const PortSource& source, uint8_t port, int64_t mix_rate, uint64_t max_waiting,
            int64_t start_ns);

  Supply Next(int64_t now_ns, int64_t end_ns, RawFrame& frame) override;
  int64_t due_ns() const override { return due_ns_; }
  void Shift(int64_t by_ns) override { start_ns_ += by_ns, due_ns_ += by_ns; }
  LostFrames lost() override { return lost_; }
  uint64_t waiting(int64_t now_ns) const override;

 private:
  struct Packet {
    std::vector<uint8_t> bytes;
    RoundFields fields;
    uint64_t position;  // in the whole mix
    bool crc_ok;
    bool hw_dropped;
  };

  uint64_t count() const { return round_ * packets_.size() + next_; }
  int64_t DueTime() const;
  void Advance();
  void Shuffle();
  void LoseOldest(int64_t now_ns);

  std::vector<Packet> packets_;
  std::vector<uint32_t> order_;
  std::vector<uint32_t> movable_;  // places in order_ that are shuffled
  uint64_t round_size_ = 0;        // positions in a round
  uint64_t round_ = 0;
  size_t next_ = 0;  // in order_
  uint64_t bytes_a_round_ = 0;
  uint64_t max_waiting_ = 0;
  PortSource source_;
  uint8_t port_ = 0;
  int64_t rate_ = 0;
  uint64_t random_ = 0;
  int64_t start_ns_ = 0;
  int64_t due_ns_ = 0;
  LostFrames lost_ = {};
};

}  // namespace simulator
