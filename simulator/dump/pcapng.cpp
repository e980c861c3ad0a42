#include "dump/pcapng.h"

#include <cstring>

namespace simulator {
namespace {

constexpr uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr uint32_t kInterfaceDescription = 1;
constexpr uint32_t kInterfaceStatistics = 5;
constexpr uint32_t kEnhancedPacket = 6;
constexpr uint32_t kByteOrder = 0x1A2B3C4D;
constexpr uint16_t kEthernet = 1;

// Options; the codes are per block type.
constexpr uint16_t kEnd = 0;
constexpr uint16_t kComment = 1;
constexpr uint16_t kHardware = 2;     // section
constexpr uint16_t kApplication = 4;  // section
constexpr uint16_t kName = 2;         // interface
constexpr uint16_t kTimeResolution = 9;
constexpr uint16_t kFcsLength = 13;
constexpr uint16_t kFlags = 2;  // packet
constexpr uint32_t kCrcError = 1U << 24;
constexpr uint16_t kReceived = 4;  // statistics
constexpr uint16_t kDropped = 5;

constexpr uint8_t kNanoseconds = 9;  // the negative power of 10

template <class Value>
void Put(std::vector<uint8_t>& out, Value value) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&value);
  out.insert(out.end(), bytes, bytes + sizeof value);
}

void PutOption(std::vector<uint8_t>& out, uint16_t code, const void* value, size_t size) {
  Put(out, code);
  Put(out, static_cast<uint16_t>(size));
  const auto* bytes = static_cast<const uint8_t*>(value);
  out.insert(out.end(), bytes, bytes + size);
  out.resize((out.size() + 3) & ~size_t{3});
}

void PutText(std::vector<uint8_t>& out, uint16_t code, std::string_view text) {
  if (!text.empty()) PutOption(out, code, text.data(), text.size() & 0xFFFF);
}

// A time is two words, the higher one first in either byte order.
void PutTime(std::vector<uint8_t>& out, int64_t time_ns) {
  Put(out, static_cast<uint32_t>(static_cast<uint64_t>(time_ns) >> 32));
  Put(out, static_cast<uint32_t>(time_ns));
}

// A block's type and room for its length; returns where the block begins.
size_t BeginBlock(std::vector<uint8_t>& out, uint32_t type) {
  const size_t begin = out.size();
  Put(out, type);
  Put(out, uint32_t{0});
  return begin;
}

void EndBlock(std::vector<uint8_t>& out, size_t begin) {
  Put(out, uint16_t{kEnd});
  Put(out, uint16_t{0});
  const auto length = static_cast<uint32_t>(out.size() - begin + sizeof(uint32_t));
  Put(out, length);
  memcpy(&out[begin + 4], &length, sizeof length);
}

struct PacketHead {
  uint32_t type;
  uint32_t length;
  uint32_t interface;
  uint32_t time_high;
  uint32_t time_low;
  uint32_t captured;
  uint32_t original;
};

}  // namespace

void AppendSectionHeader(std::vector<uint8_t>& out, std::string_view hardware,
                         std::string_view application) {
  const size_t begin = BeginBlock(out, kSectionHeader);
  Put(out, kByteOrder);
  Put(out, uint16_t{1});  // version 1.0
  Put(out, uint16_t{0});
  Put(out, int64_t{-1});  // the section's length is not given
  PutText(out, kHardware, hardware);
  PutText(out, kApplication, application);
  EndBlock(out, begin);
}

void AppendInterface(std::vector<uint8_t>& out, const InterfaceDescription& description) {
  const size_t begin = BeginBlock(out, kInterfaceDescription);
  Put(out, kEthernet);
  Put(out, uint16_t{0});
  Put(out, description.snap_length);
  PutText(out, kComment, description.comment);
  PutText(out, kName, description.name);
  PutOption(out, kTimeResolution, &kNanoseconds, sizeof kNanoseconds);
  const uint8_t fcs_length = description.crc_kept ? 4 : 0;
  PutOption(out, kFcsLength, &fcs_length, sizeof fcs_length);
  EndBlock(out, begin);
}

void AppendStatistics(std::vector<uint8_t>& out, const InterfaceStatistics& statistics) {
  const size_t begin = BeginBlock(out, kInterfaceStatistics);
  Put(out, statistics.interface);
  PutTime(out, statistics.time_ns);
  PutOption(out, kReceived, &statistics.received, sizeof statistics.received);
  PutOption(out, kDropped, &statistics.dropped, sizeof statistics.dropped);
  EndBlock(out, begin);
}

void PutPacket(uint8_t* out, const Packet& packet) {
  const auto size = static_cast<uint32_t>(PacketBlockSize(packet.captured, packet.crc_error));
  const auto time = static_cast<uint64_t>(packet.time_ns);
  const PacketHead head = {.type = kEnhancedPacket,
                           .length = size,
                           .interface = packet.interface,
                           .time_high = static_cast<uint32_t>(time >> 32),
                           .time_low = static_cast<uint32_t>(time),
                           .captured = packet.captured,
                           .original = packet.original};
  const uint64_t zero_and_length = uint64_t{size} << 32;  // the padding lies under the last bytes
  memcpy(out + size - 8, &zero_and_length, sizeof zero_and_length);
  const uint32_t flags[] = {0, 4U << 16 | kFlags, kCrcError};
  if (packet.crc_error) memcpy(out + size - 8 - sizeof flags, flags, sizeof flags);
  memcpy(out, &head, sizeof head);
  if (packet.captured > 0) memcpy(out + sizeof head, packet.bytes, packet.captured);
}

size_t WholeBlocks(const uint8_t* blocks, size_t size) {
  size_t whole = 0;
  while (size - whole >= 8) {
    uint32_t length;
    memcpy(&length, blocks + whole + 4, sizeof length);
    if (length > size - whole) break;
    whole += length;
  }
  return whole;
}

uint64_t CapturedBytes(const uint8_t* blocks, size_t size) {
  uint64_t bytes = 0;
  for (size_t at = 0; size - at >= sizeof(PacketHead);) {
    PacketHead head;
    memcpy(&head, blocks + at, sizeof head);
    if (head.type == kEnhancedPacket) bytes += head.captured;
    at += head.length;
  }
  return bytes;
}

}  // namespace simulator
