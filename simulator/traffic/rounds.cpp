#include "traffic/rounds.h"

#include "traffic/byte_writer.h"

namespace simulator {
namespace {

constexpr uint32_t kTcpHeader = 20;
constexpr uint32_t kClientPorts = 0x1FFF;

uint32_t Read32(std::span<const uint8_t> bytes, size_t at) {
  return static_cast<uint32_t>(bytes[at] << 24 | bytes[at + 1] << 16 | bytes[at + 2] << 8 |
                               bytes[at + 3]);
}

uint32_t TransportAt(const Frame& frame) {
  return 14 + (frame.vlan != 0 ? 4 : 0) + (frame.network == Layer2::kIp6 ? 40 : 20);
}

// How many sequence numbers a segment takes. The shortest frames and handshakes have no payload.
uint32_t SegmentSize(const Frame& frame) {
  if ((frame.tcp_flags & kSyn) != 0) return 1;
  const uint32_t headers = TransportAt(frame) + kTcpHeader + kFcsSize;
  return (frame.size == 64 ? 0 : frame.size - headers) + (frame.tcp_flags & kFin);
}

// One direction of a connection, at a frame of the cycle.
struct Stream {
  uint32_t next;   // sequence number
  uint32_t round;  // numbers in a round
  bool opens;      // has a handshake
};

// like: a frame of that direction.
Stream StreamAt(Cycle cycle, const Frame& at, const Frame& like) {
  Stream stream = {like.source_port * 2654435761U, 0, false};
  for (const Frame& frame : cycle) {
    if (frame.transport != kTcp || frame.source != like.source ||
        frame.destination != like.destination || frame.source_port != like.source_port ||
        frame.destination_port != like.destination_port) {
      continue;
    }
    const uint32_t size = frame.fate == Fate::kReceived ? SegmentSize(frame) : 0;
    if (&frame < &at) stream.next += size;
    stream.round += size;
    stream.opens = stream.opens || (frame.tcp_flags & kSyn) != 0;
  }
  return stream;
}

// A connection that is opened in each round has another port of the client, at port A, each time.
RoundFields TcpFields(Cycle cycle, const Frame& frame, size_t at, uint32_t ports) {
  Frame reverse = frame;
  std::swap(reverse.source, reverse.destination);
  std::swap(reverse.source_port, reverse.destination_port);
  const Stream own = StreamAt(cycle, frame, frame);
  const Stream other = StreamAt(cycle, frame, reverse);
  RoundFields fields = {.checksum_at = at + 16};
  fields.fields[0] = {at + 4, own.next, own.round};
  if ((frame.tcp_flags & kAck) != 0) fields.fields[1] = {at + 8, other.next, other.round};
  const uint32_t client = frame.port == 0 ? 1U << 16 : 1;
  if (own.opens || other.opens) fields.fields[2] = {at, ports, client, kClientPorts};
  return fields;
}

// Identifiers of questions and their answers, in the higher half of a field.
struct Numbered {
  Transport transport;
  uint16_t port;  // of UDP; of ICMP the type or code
  uint16_t at;    // in the packet of the transport protocol
  uint16_t checksum_at;
};
constexpr Numbered kNumbered[] = {{kUdp, 53, 8, 6}, {kUdp, 67, 12, 6}, {kIcmp, 0, 4, 2}};

}  // namespace

RoundFields FieldsOf(Cycle cycle, const Frame& frame, std::span<const uint8_t> bytes) {
  const size_t at = TransportAt(frame);
  if (frame.transport == kTcp) return TcpFields(cycle, frame, at, Read32(bytes, at));
  for (const auto& [transport, port, field, checksum] : kNumbered) {
    const bool uses = frame.source_port == port || frame.destination_port == port;
    if (frame.transport != transport || !uses) continue;
    return {.fields = {{{at + field, Read32(bytes, at + field), 1U << 16}}},
            .checksum_at = at + checksum,
            .for_zero = transport == kUdp ? 0xFFFFU : 0};
  }
  return {};
}

void SetRound(const RoundFields& fields, uint64_t round, std::span<uint8_t> bytes) {
  if (fields.checksum_at == 0) return;
  uint64_t sum = 0xFFFF & ~(Read32(bytes, fields.checksum_at) >> 16);
  for (const auto& [at, first, step, rounds] : fields.fields) {
    if (at == 0) continue;
    const uint32_t value = first + (static_cast<uint32_t>(round) & rounds) * step;
    sum += uint64_t{~Read32(bytes, at)} + value;
    ByteWriter(bytes.subspan(at)).Put32(value);
  }
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  const auto checksum = static_cast<uint32_t>(sum == 0xFFFF ? fields.for_zero : ~sum);
  ByteWriter(bytes.subspan(fields.checksum_at)).Put16(checksum);
}

}  // namespace simulator
