#include "traffic/generator.h"

#include <algorithm>

#include "traffic/frame_builder.h"
#include "traffic/mix.h"

namespace simulator {
namespace {

constexpr int64_t kSecond = 1'000'000'000;
constexpr uint64_t kFcsSize = 4;

// xorshift64 (Marsaglia, "Xorshift RNGs", 2003); never 0.
uint64_t NextRandom(uint64_t& state) {
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return state;
}

}  // namespace

void Generator::Open(const PortSource& source, uint8_t port, int64_t mix_rate, uint64_t max_waiting,
                     int64_t start_ns) {
  port_ = port;
  own_rate_ = source.rate >= 0;
  rate_ = own_rate_ ? source.rate : mix_rate;
  shuffled_ = source.seed != 0;
  random_ = static_cast<uint64_t>(source.seed) * 2 + 1;
  max_waiting_ = max_waiting;
  start_ns_ = start_ns;
  const Cycle cycle = TrafficCycle();
  for (size_t i = 0; i < cycle.size(); ++i) {
    if (cycle[i].port != port) continue;
    const auto seed = static_cast<uint32_t>(source.seed + static_cast<int64_t>(i));
    packets_.push_back({BuildFrame(cycle[i], seed), own_rate_ ? packets_.size() : i,
                        cycle[i].fate != Fate::kBadCrc, cycle[i].fate == Fate::kHwDropped});
    order_.push_back(static_cast<uint32_t>(order_.size()));
    bytes_a_round_ += cycle[i].size;
  }
  round_size_ = own_rate_ ? packets_.size() : cycle.size();
  if (shuffled_) Shuffle();
  if (rate_ > 0) due_ns_ = TimeOfFrame(start_ns_, packets_[0].position, rate_);
}

void Generator::Shuffle() {
  for (size_t i = order_.size() - 1; i > 0; --i) {
    std::swap(order_[i], order_[NextRandom(random_) % (i + 1)]);
  }
}

// A time belongs to a position of the round, whichever frame is there.
void Generator::Advance() {
  if (++next_ == packets_.size()) {
    next_ = 0;
    ++round_;
    if (shuffled_) Shuffle();
  }
  due_ns_ = TimeOfFrame(start_ns_, round_ * round_size_ + packets_[next_].position, rate_);
}

uint64_t Generator::waiting(int64_t now_ns) const {
  if (rate_ == 0 || due_ns_ > now_ns) return 0;
  const double frames =
      static_cast<double>(now_ns - due_ns_) / kSecond * static_cast<double>(rate_);
  return static_cast<uint64_t>(frames * static_cast<double>(bytes_a_round_) /
                               static_cast<double>(round_size_));
}

void Generator::LoseOldest(int64_t now_ns) {
  while (waiting(now_ns) > max_waiting_) {
    ++lost_.frames;
    lost_.bytes += packets_[order_[next_]].bytes.size() + kFcsSize;
    Advance();
  }
}

Supply Generator::Next(int64_t now_ns, const StreamClock& clock, RawFrame& frame) {
  if (rate_ == 0) return clock.end_ns <= now_ns ? Supply::kEnded : Supply::kLater;
  if (due_ns_ > clock.end_ns) return Supply::kEnded;
  if (due_ns_ > now_ns) return Supply::kLater;
  LoseOldest(now_ns);
  if (due_ns_ > now_ns) return Supply::kLater;
  const Packet& packet = packets_[order_[next_]];
  const auto size = static_cast<uint32_t>(packet.bytes.size());
  frame = {packet.bytes.data(), size, size, port_, packet.crc_ok, packet.hw_dropped, due_ns_};
  Advance();
  return Supply::kFrame;
}

}  // namespace simulator
