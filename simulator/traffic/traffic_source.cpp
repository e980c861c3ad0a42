#include "traffic/traffic_source.h"

#include <poll.h>

#include <algorithm>
#include <ctime>

namespace simulator {
namespace {

constexpr int64_t kNsPerMs = 1'000'000;

template <class... Cases>
struct Overload : Cases... {
  using Cases::operator()...;
};
template <class... Cases>
Overload(Cases...) -> Overload<Cases...>;

// As soon as one port's source is set, the other has none of itself.
SourceKind KindOf(const SourceSettings& settings, uint8_t port) {
  const SourceKind kind = settings.ports[port].kind;
  if (kind != SourceKind::kUnset) return kind;
  const bool alone = settings.ports[1 - port].kind == SourceKind::kUnset;
  return alone ? SourceKind::kGenerator : SourceKind::kUnset;
}

}  // namespace

bool TrafficSource::OpenPort(const SourceSettings& settings, uint8_t port, uint64_t max_waiting,
                             std::string& reason) {
  const PortSource& source = settings.ports[port];
  Stream& stream = ports_[port].stream;
  switch (KindOf(settings, port)) {
    case SourceKind::kUnset:
      return true;
    case SourceKind::kGenerator:
      stream.emplace<Generator>().Open(source, port, settings.mix_rate, max_waiting,
                                       settings.start_ns);
      return true;
    case SourceKind::kPcap:
      return stream.emplace<FileReplay>().Open(source, port, settings.mix_rate, settings.start_ns,
                                               reason);
    case SourceKind::kInterface:
      return stream.emplace<LiveInterface>().Open(source, port, max_waiting, reason);
  }
  return false;
}

bool TrafficSource::Open(const SourceSettings& settings, std::string& reason) {
  clock_.start_ns = settings.start_ns;
  const auto used = [&](uint8_t port) { return KindOf(settings, port) != SourceKind::kUnset; };
  // A quarter of the time in which 10 Gbit/s fill half of what may wait.
  pause_ns_ =
      static_cast<int64_t>(std::clamp<uint64_t>(settings.max_waiting / 10, 250'000, 10'000'000));
  const uint64_t max_waiting = settings.max_waiting / (used(0) && used(1) ? 2 : 1);
  for (const uint8_t port : {uint8_t{0}, uint8_t{1}}) {
    if (OpenPort(settings, port, max_waiting, reason)) continue;
    reason.insert(0, port == 0 ? "port A: " : "port B: ");
    return false;
  }
  return true;
}

// Takes the port's next frame unless one is there. False when the source has failed.
bool TrafficSource::Look(Port& port, int64_t now_ns) {
  if (port.supply != Supply::kLater) return true;
  port.supply =
      std::visit(Overload{[](std::monostate&) { return Supply::kEnded; },
                          [&](auto& stream) { return stream.Next(now_ns, clock_, port.frame); }},
                 port.stream);
  if (port.supply != Supply::kFailed) return true;
  reason_ = std::visit(Overload{[](const FileReplay& stream) { return stream.reason(); },
                                [](const LiveInterface& stream) { return stream.reason(); },
                                [](const auto&) { return std::string(); }},
                       port.stream);
  return false;
}

void TrafficSource::ShiftClock(int64_t by_ns) {
  for (Port& port : ports_) {
    std::visit(Overload{[](std::monostate&) {}, [](LiveInterface&) {},  // the kernel has the clock
                        [&](auto& stream) { stream.Shift(by_ns); }},
               port.stream);
    const auto* replay = std::get_if<FileReplay>(&port.stream);
    if (replay == nullptr || !replay->keeps_times()) port.frame.time_ns += by_ns;
  }
  if (clock_.end_ns != StreamClock{}.end_ns) clock_.end_ns += by_ns;
}

// True when no earlier frame can come from the other port. What is not live is never late. A frame
// from the future is one from before the clock was set back.
bool TrafficSource::IsSettled(const Port& port, const Port& other, int64_t now_ns) const {
  if (other.supply == Supply::kFrame) return port.frame.time_ns <= other.frame.time_ns;
  if (other.supply == Supply::kEnded) return true;
  const bool live = std::holds_alternative<LiveInterface>(other.stream);
  return !live || port.frame.time_ns <= now_ns - LiveInterface::kDelayNs ||
         port.frame.time_ns > now_ns;
}

Supply TrafficSource::Next(int64_t now_ns, RawFrame& frame) {
  if (!Look(ports_[0], now_ns) || !Look(ports_[1], now_ns)) return Supply::kFailed;
  for (int i = 0; i < 2; ++i) {
    Port& port = ports_[i];
    if (port.supply != Supply::kFrame || !IsSettled(port, ports_[1 - i], now_ns)) continue;
    frame = port.frame;
    port.supply = Supply::kLater;
    const auto* replay = std::get_if<FileReplay>(&port.stream);
    if (replay == nullptr || !replay->keeps_times()) frame.time_ns += clock_offset_ns_;
    return Supply::kFrame;
  }
  const bool ended = ports_[0].supply == Supply::kEnded && ports_[1].supply == Supply::kEnded;
  return ended ? Supply::kEnded : Supply::kLater;
}

// The interface whose frames are all that there can be: they need not wait for others.
LiveInterface* TrafficSource::OnlySource() {
  for (int i = 0; i < 2; ++i) {
    const bool alone = std::holds_alternative<std::monostate>(ports_[1 - i].stream);
    auto* live = std::get_if<LiveInterface>(&ports_[i].stream);
    if (alone && live != nullptr) return live;
  }
  return nullptr;
}

Supply TrafficSource::Drain(int64_t now_ns, int most, const TakeFrame& take) {
  if (LiveInterface* live = OnlySource(); live != nullptr) {
    const Supply supply = live->Drain(now_ns, clock_, most, [&](RawFrame& frame) {
      frame.time_ns += clock_offset_ns_;
      return take(frame);
    });
    if (supply == Supply::kFailed) reason_ = live->reason();
    return supply;
  }
  RawFrame frame;
  for (int i = 0; i < most; ++i) {
    const Supply supply = Next(now_ns, frame);
    if (supply != Supply::kFrame) return supply;
    if (!take(frame)) return Supply::kEnded;
  }
  return Supply::kFrame;
}

// A short sleep first: what comes meanwhile is then taken in one go, which is much cheaper.
void TrafficSource::Wait(int64_t now_ns, int most_ms) const {
  int64_t wait_ns = most_ms * kNsPerMs;
  pollfd live[2];
  nfds_t count = 0;
  for (const Port& port : ports_) {
    const int64_t due_ns =
        std::visit(Overload{[&](const Generator& stream) { return stream.due_ns(); },
                            [&](const FileReplay& stream) { return stream.due_ns(); },
                            [&](const LiveInterface& stream) {
                              live[count++] = {stream.descriptor(), POLLIN, 0};
                              return now_ns + wait_ns;
                            },
                            [&](const std::monostate&) { return now_ns + wait_ns; }},
                   port.stream);
    if (port.supply == Supply::kLater) wait_ns = std::min(wait_ns, due_ns - now_ns);
    if (port.supply == Supply::kFrame) wait_ns = std::min(wait_ns, LiveInterface::kDelayNs);
  }
  const timespec pause = {0, pause_ns_};
  nanosleep(&pause, nullptr);
  wait_ns -= pause_ns_;
  if (wait_ns > kNsPerMs) poll(live, count, static_cast<int>(wait_ns / kNsPerMs));
}

LostFrames TrafficSource::lost(uint8_t port) {
  return std::visit(Overload{[](const Generator& stream) { return stream.lost(); },
                             [](LiveInterface& stream) { return stream.lost(); },
                             [](const auto&) { return LostFrames{}; }},
                    ports_[port].stream);
}

uint64_t TrafficSource::waiting(int64_t now_ns) const {
  uint64_t bytes = 0;
  for (const Port& port : ports_) {
    const auto* generator = std::get_if<Generator>(&port.stream);
    if (generator != nullptr) bytes += generator->waiting(now_ns);
  }
  return bytes;
}

}  // namespace simulator
