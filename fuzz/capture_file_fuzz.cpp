// A capture file of any bytes, replayed at every pace: refused with a reason, or frames whose bytes
// are all there and which the frame parser takes.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <numeric>

#include "require.h"
#include "traffic/file_replay.h"

using namespace simulator;

namespace {

constexpr int kMostFrames = 100;
constexpr int64_t kEnd = INT64_MAX - 1;  // all that can be due is due

void CheckFrame(const RawFrame& frame) {
  const uint32_t there = frame.length + static_cast<uint32_t>(std::max<int>(frame.fcs_length, 0));
  Require(std::accumulate(frame.bytes, frame.bytes + there, 0U) <= 255 * there);
  Require(frame.fcs_length <= 4 && frame.time_ns >= 0);
  Require(ParseFrame(frame).vlan_count <= kMaxVlanTags);
  Require(frame.length <= frame.wire_length);
}

void Replay(const PortSource& source) {
  FileReplay replay;
  std::string reason;
  if (!replay.Open(source, 1, 1000, 0, reason)) return Require(!reason.empty());
  for (int i = 0; i < kMostFrames; ++i) {
    RawFrame frame = {};
    const Supply supply = replay.Next(kEnd, kNeverNs, frame);
    if (supply == Supply::kFailed) return Require(!replay.reason().empty());
    if (supply != Supply::kFrame) return;
    CheckFrame(frame);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const int memory = memfd_create("capture", 0);
  Require(ftruncate(memory, 0) == 0);
  Require(pwrite(memory, data, size, 0) == static_cast<ssize_t>(size));
  const std::string path = "/proc/self/fd/" + std::to_string(memory);
  for (const Pace pace : {Pace::kOriginal, Pace::kRate, Pace::kFast}) {
    for (const bool repeat : {false, true}) Replay({.file = path, .repeat = repeat, .pace = pace});
  }
  return 0;
}
