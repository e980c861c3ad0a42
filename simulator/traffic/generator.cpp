#include "traffic/generator.h"

#include <algorithm>

#include "state/host_clock.h"
#include "traffic/frame_builder.h"
#include "traffic/mix.h"

namespace simulator {
namespace {

constexpr int64_t kBurstGapNs = 1000;

// xorshift64 (Marsaglia, "Xorshift RNGs", 2003); never 0.
uint64_t NextRandom(uint64_t& state) {
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return state;
}

// Every so many frames one is meant; none when that is 0.
bool IsMeant(uint64_t index, int64_t one_in) {
  return one_in > 0 && (index + 1) % static_cast<uint64_t>(one_in) == 0;
}

}  // namespace

void Generator::Open(const PortSource& source, uint8_t port, int64_t mix_rate, uint64_t max_waiting,
                     int64_t start_ns) {
  source_ = source;
  port_ = port;
  const bool own_rate = source.rate >= 0;
  rate_ = own_rate ? source.rate : mix_rate;
  random_ = static_cast<uint64_t>(source.seed) * 2 + 1;
  max_waiting_ = max_waiting;
  start_ns_ = start_ns;
  const Cycle cycle = TrafficCycle();
  for (size_t i = 0; i < cycle.size(); ++i) {
    if (cycle[i].port != port) continue;
    const auto seed = static_cast<uint32_t>(source.seed + static_cast<int64_t>(i));
    if (cycle[i].transport != kTcp) movable_.push_back(static_cast<uint32_t>(order_.size()));
    order_.push_back(static_cast<uint32_t>(order_.size()));
    std::vector<uint8_t> bytes = BuildFrame(cycle[i], seed);
    const RoundFields fields = FieldsOf(cycle, cycle[i], bytes);
    packets_.push_back({std::move(bytes), fields, own_rate ? packets_.size() : i,
                        cycle[i].fate != Fate::kBadCrc, cycle[i].fate == Fate::kHwDropped});
    bytes_a_round_ += cycle[i].size;
  }
  round_size_ = own_rate ? packets_.size() : cycle.size();
  Shuffle();
  if (rate_ > 0) due_ns_ = DueTime();
}

// The segments of TCP stay in their order.
void Generator::Shuffle() {
  if (source_.seed == 0) return;
  for (size_t i = movable_.size() - 1; i > 0; --i) {
    std::swap(order_[movable_[i]], order_[movable_[NextRandom(random_) % (i + 1)]]);
  }
}

// A time belongs to a position of the round, whichever frame is there. The frames of a burst follow
// the first one.
int64_t Generator::DueTime() const {
  const uint64_t index = round_ * round_size_ + packets_[next_].position;
  const uint64_t after = index % static_cast<uint64_t>(source_.burst);
  const int64_t gap_ns = std::min(kBurstGapNs, kSecond / rate_);
  return TimeOfFrame(start_ns_, index - after, rate_) + static_cast<int64_t>(after) * gap_ns;
}

void Generator::Advance() {
  if (++next_ == packets_.size()) {
    next_ = 0;
    ++round_;
    Shuffle();
  }
  due_ns_ = DueTime();
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

Supply Generator::Next(int64_t now_ns, int64_t end_ns, RawFrame& frame) {
  const auto most = static_cast<uint64_t>(source_.frames);
  if (rate_ == 0) return end_ns <= now_ns ? Supply::kEnded : Supply::kLater;
  if (due_ns_ > end_ns || (most > 0 && count() >= most)) return Supply::kEnded;
  if (due_ns_ > now_ns) return Supply::kLater;
  LoseOldest(now_ns);
  if (due_ns_ > now_ns) return Supply::kLater;
  Packet& packet = packets_[order_[next_]];
  SetRound(packet.fields, round_, packet.bytes);
  const auto size = static_cast<uint32_t>(packet.bytes.size());
  const bool crc_ok = packet.crc_ok && !IsMeant(count(), source_.crc_errors);
  const bool hw_dropped = packet.hw_dropped || IsMeant(count(), source_.drops);
  frame = {packet.bytes.data(), size, size, port_, crc_ok, hw_dropped, due_ns_};
  Advance();
  return Supply::kFrame;
}

}  // namespace simulator
