// Reading a pcap or pcapng file, plain or compressed by gzip, packet by packet. The file is not
// trusted: what it claims is checked against what is there, and memory is bounded.
//
// Sources: pcap: draft-ietf-opsawg-pcap. pcapng: draft-ietf-opsawg-pcapng. gzip: RFC 1952.
#pragma once

#include <zlib.h>

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "traffic/port_stream.h"

namespace simulator {

// Times in files lie between the epoch and this one, in 2116, or become these. The sum of two does
// not overflow.
inline constexpr int64_t kLatestNs = std::numeric_limits<int64_t>::max() / 2;

class CaptureFile {
 public:
  // Opens the file, again at its beginning, and reads up to its first interface. False with the
  // reason when it cannot be read, is no capture file or has other frames than those of Ethernet.
  bool Open(const std::string& path);

  // The next packet, in the file's order: kFrame, kEnded, or kFailed with the reason. frame has the
  // file's time and no check sequence, and its port is 0. It has a CRC error when the file says so,
  // or when a check sequence that is there is wrong. Its bytes stay until the next call.
  Supply Next(RawFrame& frame);

  std::string_view interface() const { return interface_; }  // the last packet's; may be empty
  const std::string& reason() const { return reason_; }      // names the file

  // Makes this the reason. Returns kFailed.
  Supply Fail(const std::string& reason);

 private:
  using Bytes = std::span<const uint8_t>;
  struct Interface {
    std::string name;
    uint64_t ticks;  // a second
    uint64_t snap_length = UINT64_MAX;
    int64_t offset_s = 0;     // of all times
    uint32_t fcs_length = 0;  // bytes of the check sequence, the last ones of a packet
  };
  struct Record {  // a packet as its file has it
    const Interface& from;
    const uint8_t* bytes;
    uint32_t captured;
    uint32_t original;
    uint32_t flags;  // epb_flags
  };

  template <class Value>
  Value Get(const uint8_t* at) const;
  uint32_t Get32(const uint8_t* at) const { return Get<uint32_t>(at); }
  bool Has(size_t size);
  Supply AtEnd();
  Supply Begin();
  Supply NextPcap(RawFrame& frame);
  Supply NextBlock(RawFrame& frame);
  Bytes Option(Bytes options, uint16_t wanted) const;
  Supply AddInterface(Bytes block);
  Supply TakePacket(uint32_t type, Bytes block, RawFrame& frame);
  Supply Give(const Record& record, RawFrame& frame);

  std::string path_;
  std::unique_ptr<gzFile_s, decltype(&gzclose)> file_ = {nullptr, gzclose};
  std::vector<uint8_t> buffer_;
  size_t at_ = 0;   // in the buffer, of what was not yet used
  size_t end_ = 0;  // of what is there
  bool is_pcapng_ = false;
  bool swapped_ = false;               // the file's byte order is not the host's
  std::vector<Interface> interfaces_;  // of the section
  std::string_view interface_;
  int64_t time_ns_ = 0;  // of the last packet
  std::string reason_;
};

}  // namespace simulator
