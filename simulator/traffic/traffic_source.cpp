#include "traffic/traffic_source.h"

#include <poll.h>

#include <algorithm>
#include <ctime>

namespace simulator {
namespace {

constexpr int64_t kNsPerMs = 1'000'000;

// Once the source of one port is set, the other port has only what is set for it.
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
  std::visit(
      [&](auto& stream) {
        port.supply = stream.Next(now_ns, clock_, port.frame);
        if (port.supply == Supply::kFailed) reason_ = stream.reason();
      },
      port.stream);
  return port.supply != Supply::kFailed;
}

void TrafficSource::ShiftClock(int64_t by_ns) {
  for (Port& port : ports_) {
    std::visit(
        [&](auto& stream) {
          stream.Shift(by_ns);
          if (!stream.keeps_times()) port.frame.time_ns += by_ns;
        },
        port.stream);
  }
  if (clock_.end_ns != kNeverNs) clock_.end_ns += by_ns;
}

// True when no earlier frame can come from the other port. A frame from the future is one from
// before the clock was set back.
bool TrafficSource::IsSettled(const Port& port, const Port& other, int64_t now_ns) const {
  if (other.supply == Supply::kFrame) return port.frame.time_ns <= other.frame.time_ns;
  if (other.supply == Supply::kEnded) return true;
  const auto delay_ns =
      std::visit([](const auto& stream) { return stream.kDelayNs; }, other.stream);
  return delay_ns == 0 || port.frame.time_ns <= now_ns - delay_ns || port.frame.time_ns > now_ns;
}

Supply TrafficSource::Next(int64_t now_ns, RawFrame& frame) {
  if (!Look(ports_[0], now_ns) || !Look(ports_[1], now_ns)) return Supply::kFailed;
  for (int i = 0; i < 2; ++i) {
    Port& port = ports_[i];
    if (port.supply != Supply::kFrame || !IsSettled(port, ports_[1 - i], now_ns)) continue;
    frame = port.frame;
    port.supply = Supply::kLater;
    const bool own_times =
        std::visit([](const auto& stream) { return stream.keeps_times(); }, port.stream);
    if (!own_times) frame.time_ns += clock_offset_ns_;
    return Supply::kFrame;
  }
  const bool ended = ports_[0].supply == Supply::kEnded && ports_[1].supply == Supply::kEnded;
  return ended ? Supply::kEnded : Supply::kLater;
}

// The interface when no other source can have frames: its frames need not wait for others.
LiveInterface* TrafficSource::OnlySource() {
  for (int i = 0; i < 2; ++i) {
    const bool alone = std::holds_alternative<NoFrames>(ports_[1 - i].stream);
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

// A short sleep first: taking in one go what arrives meanwhile is much cheaper.
void TrafficSource::Wait(int64_t now_ns, int most_ms) const {
  int64_t wait_ns = most_ms * kNsPerMs;
  pollfd files[2] = {};  // poll passes over negative descriptors
  for (int i = 0; i < 2; ++i) {
    const Port& port = ports_[i];
    int64_t due_ns = 0;
    std::visit(
        [&](const auto& stream) {
          due_ns = stream.due_ns();
          files[i] = {stream.descriptor(), POLLIN, 0};
        },
        port.stream);
    if (port.supply == Supply::kLater) wait_ns = std::min(wait_ns, due_ns - now_ns);
    if (port.supply == Supply::kFrame) wait_ns = std::min(wait_ns, LiveInterface::kDelayNs);
  }
  const timespec pause = {0, pause_ns_};
  nanosleep(&pause, nullptr);
  wait_ns -= pause_ns_;
  if (wait_ns > kNsPerMs) poll(files, 2, static_cast<int>(wait_ns / kNsPerMs));
}

LostFrames TrafficSource::lost(uint8_t port) {
  return std::visit([](auto& stream) { return stream.lost(); }, ports_[port].stream);
}

uint64_t TrafficSource::waiting(int64_t now_ns) const {
  uint64_t bytes = 0;
  for (const Port& port : ports_) {
    bytes += std::visit([&](const auto& stream) { return stream.waiting(now_ns); }, port.stream);
  }
  return bytes;
}

}  // namespace simulator
