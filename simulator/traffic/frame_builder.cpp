#include "traffic/frame_builder.h"

#include <algorithm>

#include "traffic/byte_writer.h"
#include "traffic/frame_payload.h"

namespace simulator {
namespace {

constexpr uint16_t kShortest = 64;
constexpr size_t kTcpHeader = 20;
constexpr size_t kUdpHeader = 8;
constexpr size_t kMostOptions = 20;  // of a SYN

using Room = std::span<uint8_t>;

uint32_t Sum(std::span<const uint8_t> bytes, uint32_t sum) {
  for (size_t i = 0; i < bytes.size(); ++i) {
    sum += static_cast<uint32_t>(bytes[i] << (i % 2 == 0 ? 8 : 0));
  }
  return sum;
}

void PutChecksum(Room at, uint32_t sum) {
  while (sum > 0xFFFF) sum = (sum & 0xFFFF) + (sum >> 16);
  ByteWriter(at).Put16(~sum);
}

// The sum over the addresses, the protocol and the length, which TCP, UDP and ICMPv6 check too.
uint32_t PseudoSum(const Frame& frame, size_t size) {
  uint32_t sum = static_cast<uint32_t>(size) + frame.transport;
  for (const Host* host : {frame.source, frame.destination}) {
    sum = frame.network == Layer2::kIp4 ? Sum(host->ipv4, sum) : Sum(host->ipv6, sum);
  }
  return sum;
}

// ---- Transport

// The options of a handshake, as many as there is room for.
void PutSynOptions(ByteWriter& out, size_t size) {
  constexpr uint8_t kOptions[kMostOptions] = {2, 4, 5, 180, 4, 2, 8, 10, 0, 0,
                                              1, 0, 0, 0,   0, 0, 1, 3,  3, 7};
  out.Put(std::span(kOptions).first(size));
}

void FillTcp(const Frame& frame, uint32_t seed, Room packet) {
  const bool syn = (frame.tcp_flags & kSyn) != 0;
  const size_t options = syn ? std::min(packet.size() - kTcpHeader, kMostOptions) / 4 * 4 : 0;
  ByteWriter out(packet);
  out.Put16({frame.source_port, frame.destination_port});
  out.Put32({0, 0});  // the numbers are those of the round
  out.Put8({static_cast<uint32_t>((kTcpHeader + options) / 4 << 4), frame.tcp_flags});
  out.Put16({frame.tcp_window, 0, 0});
  PutSynOptions(out, options);
  FillPayload(frame, seed, out.rest());
  PutChecksum(packet.subspan(16, 2), Sum(packet, PseudoSum(frame, packet.size())));
}

void FillUdp(const Frame& frame, uint32_t seed, Room packet) {
  ByteWriter out(packet);
  const auto size = static_cast<uint32_t>(packet.size());
  out.Put16({frame.source_port, frame.destination_port, size, 0});
  FillPayload(frame, seed, packet.subspan(kUdpHeader));
  const Room checksum = packet.subspan(6, 2);
  PutChecksum(checksum, Sum(packet, PseudoSum(frame, size)));
  if (checksum[0] == 0 && checksum[1] == 0) checksum[0] = checksum[1] = 0xFF;
}

void FillTransport(const Frame& frame, uint32_t seed, Room packet) {
  if (frame.transport == kTcp) return FillTcp(frame, seed, packet);
  if (frame.transport == kUdp) return FillUdp(frame, seed, packet);
  FillMessage(frame, seed, packet);
  const size_t at = frame.transport == kOspf ? 12 : 2;
  const uint32_t pseudo = frame.transport == kIcmp6 ? PseudoSum(frame, packet.size()) : 0;
  PutChecksum(packet.subspan(at, 2), Sum(packet, pseudo));
}

// ---- Network

// The shortest frames carry only a header and padding.
size_t TransportSize(const Frame& frame, size_t room) {
  if (frame.size > kShortest) return room;
  if (frame.transport == kTcp) return kTcpHeader;
  return frame.transport == kIgmp ? 16 : room;
}

// How far a packet may go: neighbour discovery and mDNS (RFC 6762) say that nobody forwarded it.
uint32_t HopsOf(const Frame& frame) {
  if (frame.transport == kIcmp6 || frame.destination_port == 5353) return 255;
  const bool local = (frame.destination->ipv4[0] & 0xF0) == 0xE0;
  return local ? 1 : 64;
}

void FillIpv4(const Frame& frame, uint32_t seed, Room packet) {
  constexpr uint32_t kRouterAlert = 0x94040000;  // RFC 2113, with every IGMP message
  const size_t header = frame.transport == kIgmp ? 24 : 20;
  const size_t size = TransportSize(frame, packet.size() - header);
  ByteWriter out(packet);
  out.Put16(
      {static_cast<uint32_t>(0x4000 | header / 4 << 8), static_cast<uint32_t>(header + size)});
  out.Put16({seed, 0x4000});  // not to be fragmented
  out.Put8({HopsOf(frame), frame.transport, 0, 0});
  out.Put(frame.source->ipv4);
  out.Put(frame.destination->ipv4);
  if (header > 20) out.Put32(kRouterAlert);
  PutChecksum(packet.subspan(10, 2), Sum(packet.first(header), 0));
  FillTransport(frame, seed, packet.subspan(header, size));
}

void FillIpv6(const Frame& frame, uint32_t seed, Room packet) {
  constexpr size_t kHeader = 40;
  ByteWriter out(packet);
  out.Put32(0x60000000);
  out.Put16(static_cast<uint32_t>(packet.size() - kHeader));
  out.Put8({frame.transport, HopsOf(frame)});
  out.Put(frame.source->ipv6);
  out.Put(frame.destination->ipv6);
  FillTransport(frame, seed, packet.subspan(kHeader));
}

void FillArp(const Frame& frame, Room packet) {
  const bool request = frame.source_port == 1;
  constexpr uint8_t kNobody[CORVANE_MAC_SIZE] = {};
  constexpr uint8_t kRouter[] = {192, 168, 10, 1};  // the address that requests ask for
  ByteWriter out(packet);
  out.Put16({0x0001, 0x0800, 0x0604, frame.source_port});
  out.Put(frame.source->mac);
  out.Put(frame.source->ipv4);
  out.Put(request ? std::span<const uint8_t>(kNobody) : frame.destination->mac);
  out.Put(request ? std::span<const uint8_t>(kRouter) : frame.destination->ipv4);
}

constexpr uint16_t kEtherTypes[] = {0x0800, 0x86DD, 0x0806, 0x88CC};  // by Layer2

}  // namespace

std::vector<uint8_t> BuildFrame(const Frame& frame, uint32_t seed) {
  std::vector<uint8_t> bytes(frame.size - kFcsSize);
  ByteWriter out(bytes);
  out.Put(frame.destination->mac);
  out.Put(frame.source->mac);
  if (frame.vlan != 0) out.Put16({0x8100, frame.vlan});
  out.Put16(kEtherTypes[static_cast<size_t>(frame.network)]);
  if (frame.network == Layer2::kIp4) FillIpv4(frame, seed, out.rest());
  if (frame.network == Layer2::kIp6) FillIpv6(frame, seed, out.rest());
  if (frame.network == Layer2::kArp) FillArp(frame, out.rest());
  if (frame.network == Layer2::kOther) FillLldp(frame, out.rest());
  return bytes;
}

}  // namespace simulator
