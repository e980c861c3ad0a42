// Where the frames at a port come from.
#pragma once

#include <cstdint>
#include <string>

namespace simulator {

enum class SourceKind : uint8_t {
  kUnset,      // generator, unless the other port's source is set: then no frames
  kGenerator,  // the built-in mix's frames for this port
  kPcap,       // a pcap or pcapng file
  kInterface   // a network interface of the host
};

enum class Pace : uint8_t {
  kOriginal,  // at the intervals of the file
  kRate,      // at a rate in frames per second
  kFast       // as fast as possible, with the times of the file
};

struct PortSource {
  SourceKind kind = SourceKind::kUnset;
  int64_t rate = -1;  // frames per second at this port; -1: the device's rate decides
  int64_t seed = 0;   // of the payloads and, unless it is 0, of the order of the frames
  std::string file;
  bool repeat = false;
  Pace pace = Pace::kOriginal;
  std::string interface;
};

}  // namespace simulator
