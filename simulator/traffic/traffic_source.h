// The frames at both ports of a device, merged by their times.
#pragma once

#include <memory>
#include <string>

#include "traffic/file_replay.h"
#include "traffic/generator.h"
#include "traffic/live_interface.h"

namespace simulator {

// All times are on the host's clock, except those of the frames given.
struct SourceSettings {
  PortSource ports[2];
  int64_t mix_rate;      // frames per second of the generator, both ports together
  uint64_t max_waiting;  // bytes of frames that may wait at both ports together
  int64_t start_ns;
};

class TrafficSource {
 public:
  // False with the reason, naming the port, when a source cannot be opened. To be called once.
  bool Open(const SourceSettings& settings, std::string& reason);

  // Gives at most that many of the next frames of both ports; the bytes of each stay until take
  // returns. When one port is a live interface, a frame of the other may wait until no earlier
  // frame can come. Returns kFrame when more may be there, and kEnded after take has returned
  // false.
  Supply Drain(int64_t now_ns, int most, const TakeFrame& take);
  const std::string& reason() const { return reason_; }  // of Supply::kFailed

  // The device's clock minus the host's. Frames have the times of the device's clock, except those
  // of a file that is replayed fast, which have the file's.
  void SetClockOffset(int64_t offset_ns) { clock_offset_ns_ = offset_ns; }

  // The host's clock was set forward, or back when by_ns is negative: the pace stays the same, and
  // frames to come have the new times.
  void ShiftClock(int64_t by_ns);

  // No later frames are wanted: Drain ends when all frames up to that time were given.
  void EndAt(int64_t end_ns) { end_ns_ = end_ns; }

  // Sleeps until a frame may be there, a signal comes or most_ms have passed.
  // To be called after Supply::kLater.
  void Wait(int64_t now_ns, int most_ms) const;

  LostFrames lost(uint8_t port) { return ports_[port].stream->lost(); }
  uint64_t waiting(int64_t now_ns) const;  // bytes that are known to wait

 private:
  struct Port {
    std::unique_ptr<PortStream> stream = std::make_unique<PortStream>();
    bool used = false;
    Supply supply = Supply::kLater;
    RawFrame frame = {};  // of Supply::kFrame
  };

  bool OpenPort(const SourceSettings& settings, uint8_t port, uint64_t max_waiting,
                std::string& reason);
  LiveInterface* OnlySource();
  Supply Next(int64_t now_ns, RawFrame& frame);
  bool Look(Port& port, int64_t now_ns);
  bool IsSettled(const Port& port, const Port& other, int64_t now_ns) const;

  Port ports_[2];
  int64_t end_ns_ = kNeverNs;
  int64_t pause_ns_ = 0;  // too short for a ring to fill up
  int64_t clock_offset_ns_ = 0;
  std::string reason_;
};

}  // namespace simulator
