// A capture for a viewer, from its start to its end.
#pragma once

#include <cstdint>
#include <string>

namespace extcap {

struct CaptureWish {
  std::string device;          // its MAC address or its index in the device list
  std::string fifo;            // the named pipe that the viewer reads
  uint32_t file_size_mb = 64;  // of each file on the way
  uint32_t cache_mb = 100;
  bool full_frames = false;
  std::string filter;  // there is none
};

inline constexpr const char* kNoFilter =
    "Failed: the device filters (corvane filter set), there is no other capture filter";

// Opens the pipe, as soon as somebody reads it, in any case: who opened it for reading waits for
// that. Then starts a capture and moves its frames into the pipe until a signal asks for the end,
// the reader goes away, or the capture ends. Stops the capture that it started and removes its
// files.
//
// Prints on standard output why it failed. Returns the exit status: 0 when it ended as it should.
int Capture(const CaptureWish& wish);

}  // namespace extcap
