#include "traffic/traffic_source.h"

#include <poll.h>

#include <algorithm>
#include <ctime>

#include "state/host_clock.h"

namespace simulator {
namespace {

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
  const auto make = [&]<class Stream>(std::unique_ptr<Stream> made) -> Stream& {
    Stream& stream = *made;
    ports_[port].stream = std::move(made);
    return stream;
  };
  switch (KindOf(settings, port)) {
    case SourceKind::kUnset:
      return true;
    case SourceKind::kGenerator:
      make(std::make_unique<Generator>())
          .Open(source, port, settings.mix_rate, max_waiting, settings.start_ns);
      return true;
    case SourceKind::kPcap:
      return make(std::make_unique<FileReplay>())
          .Open(source, port, settings.mix_rate, settings.start_ns, reason);
    case SourceKind::kInterface:
      return make(std::make_unique<LiveInterface>()).Open(source, port, max_waiting, reason);
  }
  return false;
}

bool TrafficSource::Open(const SourceSettings& settings, std::string& reason) {
  for (const uint8_t port : {uint8_t{0}, uint8_t{1}}) {
    ports_[port].used = KindOf(settings, port) != SourceKind::kUnset;
  }
  // A quarter of the time in which 10 Gbit/s fill half of what may wait.
  pause_ns_ =
      static_cast<int64_t>(std::clamp<uint64_t>(settings.max_waiting / 10, 250'000, 10'000'000));
  const uint64_t max_waiting = settings.max_waiting / (ports_[0].used && ports_[1].used ? 2 : 1);
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
  port.supply = port.stream->Next(now_ns, end_ns_, port.frame);
  if (port.supply == Supply::kFailed) reason_ = port.stream->reason();
  return port.supply != Supply::kFailed;
}

void TrafficSource::ShiftClock(int64_t by_ns) {
  for (Port& port : ports_) {
    port.stream->Shift(by_ns);
    if (!port.stream->keeps_times()) port.frame.time_ns += by_ns;
  }
  if (end_ns_ != kNeverNs) end_ns_ += by_ns;
}

// True when no earlier frame can come from the other port. A frame from the future is one from
// before the clock was set back.
bool TrafficSource::IsSettled(const Port& port, const Port& other, int64_t now_ns) const {
  if (other.supply == Supply::kFrame) return port.frame.time_ns <= other.frame.time_ns;
  if (other.supply == Supply::kEnded) return true;
  const int64_t delay_ns = other.stream->delay_ns();
  return delay_ns == 0 || port.frame.time_ns <= now_ns - delay_ns || port.frame.time_ns > now_ns;
}

Supply TrafficSource::Next(int64_t now_ns, RawFrame& frame) {
  if (!Look(ports_[0], now_ns) || !Look(ports_[1], now_ns)) return Supply::kFailed;
  for (int i = 0; i < 2; ++i) {
    Port& port = ports_[i];
    if (port.supply != Supply::kFrame || !IsSettled(port, ports_[1 - i], now_ns)) continue;
    frame = port.frame;
    port.supply = Supply::kLater;
    if (!port.stream->keeps_times()) frame.time_ns += clock_offset_ns_;
    return Supply::kFrame;
  }
  const bool ended = ports_[0].supply == Supply::kEnded && ports_[1].supply == Supply::kEnded;
  return ended ? Supply::kEnded : Supply::kLater;
}

// The interface when no other source can have frames: its frames need not wait for others.
LiveInterface* TrafficSource::OnlySource() {
  for (int i = 0; i < 2; ++i) {
    auto* live = dynamic_cast<LiveInterface*>(ports_[i].stream.get());
    if (!ports_[1 - i].used && live != nullptr) return live;
  }
  return nullptr;
}

Supply TrafficSource::Drain(int64_t now_ns, int most, const TakeFrame& take) {
  if (LiveInterface* live = OnlySource(); live != nullptr) {
    const Supply supply = live->Drain(now_ns, end_ns_, most, [&](RawFrame& frame) {
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
    files[i] = {port.stream->descriptor(), POLLIN, 0};
    if (port.supply == Supply::kLater) wait_ns = std::min(wait_ns, port.stream->due_ns() - now_ns);
    if (port.supply == Supply::kFrame) wait_ns = std::min(wait_ns, LiveInterface::kDelayNs);
  }
  const timespec pause = {0, pause_ns_};
  nanosleep(&pause, nullptr);
  wait_ns = wait_ns / TimeScale() - pause_ns_;
  if (wait_ns > kNsPerMs) poll(files, 2, static_cast<int>(wait_ns / kNsPerMs));
}

uint64_t TrafficSource::waiting(int64_t now_ns) const {
  uint64_t bytes = 0;
  for (const Port& port : ports_) bytes += port.stream->waiting(now_ns);
  return bytes;
}

}  // namespace simulator
