// Blocks of a pcapng file (draft-ietf-opsawg-pcapng), in the host's byte order, which the section
// header shows. Every block is a multiple of four bytes long and holds its length at offset 4.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace simulator {

// The longest captured length of a packet that readers accept.
inline constexpr uint32_t kLongestPacket = 262144;

// The beginning of a file. Empty texts are left out.
void AppendSectionHeader(std::vector<uint8_t>& out, std::string_view hardware,
                         std::string_view application);

// An Ethernet interface with times in nanoseconds; interfaces count from 0 in the order in which
// they are written.
struct InterfaceDescription {
  std::string_view name;
  uint32_t snap_length;      // 1 to kLongestPacket
  bool crc_kept;             // packets end with their four CRC bytes
  std::string_view comment;  // for readers; empty for none
};
void AppendInterface(std::vector<uint8_t>& out, const InterfaceDescription& description);

struct InterfaceStatistics {
  uint32_t interface;
  int64_t time_ns;    // since the epoch, of the counts
  uint64_t received;  // packets since the capture began
  uint64_t dropped;
};
inline constexpr size_t kStatisticsSize = 52;  // of the block
void AppendStatistics(std::vector<uint8_t>& out, const InterfaceStatistics& statistics);

struct Packet {
  uint32_t interface;
  int64_t time_ns;  // since the epoch
  const uint8_t* bytes;
  uint32_t captured;  // bytes there, at most kLongestPacket
  uint32_t original;  // length on the wire
  bool crc_error;
};
// Room for the block of a packet. One with a CRC error has its flags after it.
constexpr size_t PacketBlockSize(uint32_t captured, bool crc_error = false) {
  return 32 + ((size_t{captured} + 3) & ~size_t{3}) + (crc_error ? 12 : 0);
}
// Writes the block, of PacketBlockSize(packet.captured, packet.crc_error) bytes, to out.
void PutPacket(uint8_t* out, const Packet& packet);

// How many of the size bytes at blocks are whole blocks. blocks begins with a block and continues
// with whole ones until size at least.
size_t WholeBlocks(const uint8_t* blocks, size_t size);

// The captured bytes of all packets in size bytes of whole blocks.
uint64_t CapturedBytes(const uint8_t* blocks, size_t size);

}  // namespace simulator
