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
  int64_t rate = -1;       // frames per second at this port; -1: the device's rate decides
  int64_t seed = 0;        // of the payloads and, unless it is 0, of the order of the frames
  int64_t frames = 0;      // then the generator ends; 0 for no end
  int64_t burst = 1;       // frames of the generator that come at once, at least 1
  int64_t crc_errors = 0;  // of so many frames of the generator one is bad; 0 for none
  int64_t drops = 0;       // of so many the hardware drops one; 0 for none
  std::string file;
  bool repeat = false;
  Pace pace = Pace::kOriginal;
  std::string interface;  // of the host; of a file the one whose packets are taken, if not empty
};

}  // namespace simulator
