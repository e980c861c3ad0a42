// Writes a pcap file of made-up frames of all kinds, the same ones for the same seed:
//   mixed_frames FILE COUNT SEED
// Ethernet with and without VLAN tags, IPv4 with options and fragments, IPv6 with extension
// headers, the transports and ports that the filters know and others, other EtherTypes, frames cut
// short, padding, and garbage.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

std::mt19937 generator;  // NOLINT: seeded from the command line

uint32_t Below(uint32_t limit) {
  return static_cast<uint32_t>(uint64_t{generator()} * limit >> 32);
}

bool OneIn(uint32_t times) {
  return Below(times) == 0;
}

uint16_t OneOf(std::initializer_list<uint16_t> numbers) {
  return numbers.begin()[Below(static_cast<uint32_t>(numbers.size()))];
}

void Put8(Bytes& bytes, uint32_t value) {
  bytes.push_back(static_cast<uint8_t>(value));
}

void Put16(Bytes& bytes, uint32_t value) {
  Put8(bytes, value >> 8);
  Put8(bytes, value);
}

void PutRandom(Bytes& bytes, uint32_t size) {
  for (uint32_t i = 0; i < size; ++i) Put8(bytes, Below(256));
}

void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// ---- Payloads and transports

constexpr char kPattern[] = "Corvane pattern!";  // 16 bytes that the DPI cases look for

// Some payloads have the whole pattern or a part of it, at any place, even at the very end.
Bytes Payload() {
  Bytes payload;
  const uint32_t size = OneIn(4) ? Below(1400) : Below(64);
  if (OneIn(2)) {
    PutRandom(payload, size);
  } else {
    payload.resize(size, static_cast<uint8_t>(OneOf({0, 'C', ' ', 0xFF})));
  }
  if (!OneIn(8)) return payload;
  const uint32_t from = OneIn(3) ? Below(16) : 0;
  const uint32_t to = OneIn(3) ? from + Below(17 - from) : 16;
  payload.insert(payload.end(), kPattern + from, kPattern + to);
  if (OneIn(4) && to > from) payload[payload.size() - 1 - Below(to - from)] ^= 1;
  PutRandom(payload, OneIn(2) ? 0 : Below(40));
  return payload;
}

uint16_t Port() {
  if (OneIn(4)) return static_cast<uint16_t>(Below(65536));
  return OneOf({443, 80, 21, 20, 53, 25, 110, 67, 68, 22, 5060, 445, 8080, 50000, 0});
}

Bytes Tcp() {
  Bytes tcp;
  const uint32_t options = OneIn(4) ? 4 * Below(11) : 0;
  Put16(tcp, Port());
  Put16(tcp, Port());
  PutRandom(tcp, 8);
  Put8(tcp, (20 + options) / 4 << 4);
  Put8(tcp, Below(256));
  Put16(tcp, OneIn(4) ? 0 : Below(65536));
  PutRandom(tcp, 4);
  for (uint32_t i = 0; i < options; ++i) Put8(tcp, 1);
  Append(tcp, Payload());
  return tcp;
}

Bytes Udp() {
  Bytes udp;
  const Bytes payload = Payload();
  Put16(udp, Port());
  Put16(udp, Port());
  Put16(udp, static_cast<uint32_t>(8 + payload.size()));
  Put16(udp, 0);
  Append(udp, payload);
  return udp;
}

// An error report as ICMP has it: with the headers of another packet, which are not the frame's.
Bytes IcmpError() {
  Bytes icmp = {3, 1, 0, 0, 0, 0, 0, 0};
  Append(icmp, {0x45, 0, 0, 60, 0, 0, 0, 0, 64, 6, 0, 0, 10, 1, 2, 3, 192, 168, 10, 21});
  Put16(icmp, Port());
  Put16(icmp, Port());
  PutRandom(icmp, 16);
  return icmp;
}

Bytes Transport(uint8_t protocol) {
  switch (protocol) {
    case 6:
      return Tcp();
    case 17:
      return Udp();
    case 1:
      return OneIn(2) ? IcmpError() : Bytes{8, 0, 0, 0, 0, 1, 0, 1, 'p', 'i', 'n', 'g'};
    case 58:
      return Bytes{128, 0, 0, 0, 0, 1, 0, 1, 'p', 'i', 'n', 'g'};
    default:
      return Payload();
  }
}

uint8_t Protocol(bool ipv6) {
  const uint32_t kind = Below(16);
  if (kind < 7) return 6;
  if (kind < 12) return 17;
  if (kind < 13) return ipv6 ? 58 : 1;
  if (kind < 14) return ipv6 ? 58 : 2;
  return static_cast<uint8_t>(OneOf({1, 2, 58, 89, 103, 112, 132, 50, 253, 59}));
}

// ---- Networks

void PutIpv4Address(Bytes& bytes) {
  if (OneIn(8)) return PutRandom(bytes, 4);
  Put8(bytes, OneOf({10, 192}));
  Put8(bytes, OneOf({1, 168}));
  Put8(bytes, OneOf({2, 10}));
  Put8(bytes, OneOf({3, 21, 22}));
}

Bytes Ipv4() {
  Bytes ip;
  const uint32_t options = OneIn(4) ? 4 * Below(11) : 0;
  const uint8_t protocol = Protocol(false);
  const Bytes transport = Transport(protocol);
  const auto size = static_cast<uint32_t>(20 + options + transport.size());
  Put8(ip, 0x40 | (20 + options) / 4);
  Put8(ip, 0);
  Put16(ip, OneIn(40) ? Below(100) : size);
  PutRandom(ip, 2);
  Put16(ip, OneIn(8) ? OneOf({0x2000, 0x2001, 0x0001, 0x00B9, 0x3FFF}) : OneOf({0, 0x4000}));
  Put8(ip, 64);
  Put8(ip, protocol);
  Put16(ip, 0);
  PutIpv4Address(ip);
  PutIpv4Address(ip);
  for (uint32_t i = 0; i < options; ++i) Put8(ip, 1);
  Append(ip, transport);
  if (OneIn(50)) ip[0] = static_cast<uint8_t>(Below(256));
  return ip;
}

void PutIpv6Address(Bytes& bytes) {
  if (OneIn(8)) return PutRandom(bytes, 16);
  Append(bytes, {0x20, 0x01, 0x0D, 0xB8, 0, static_cast<uint8_t>(OneOf({0x10, 0x20})), 0, 0, 0, 0,
                 0, 0, 0, 0});
  Put16(bytes, OneOf({0x21, 0x22, 0x1021, 0x53}));
}

// The headers in front of the transport; first becomes the number of the first one.
Bytes Extensions(uint8_t& first) {
  Bytes headers;
  for (uint32_t left = OneIn(3) ? 1 + Below(3) : 0; left > 0; --left) {
    const auto kind = static_cast<uint8_t>(OneOf({0, 43, 44, 51, 60}));
    Bytes header = {first, 0, 0, 0, 0, 0, 0, 0};
    const uint32_t units = kind == 44 ? 0 : Below(3);
    if (kind == 0 || kind == 60) {
      Append(header, Bytes(8 * size_t{units}));
      header[1] = static_cast<uint8_t>(units);
      header[2] = 1;  // one padding option over all
      header[3] = static_cast<uint8_t>(4 + 8 * units);
    } else if (kind == 44) {
      const uint32_t fragment = OneIn(2) ? 0 : OneOf({1, 0x0008, 0x0009, 0x05A0});
      header[2] = static_cast<uint8_t>(fragment >> 8);
      header[3] = static_cast<uint8_t>(fragment);
    } else if (kind == 51) {
      Append(header, Bytes(size_t{4} + 8 * units));
      header[1] = static_cast<uint8_t>(1 + 2 * units);
    }
    headers.insert(headers.begin(), header.begin(), header.end());
    first = kind;
  }
  return headers;
}

Bytes Ipv6() {
  Bytes ip = {0x60, 0, 0, 0};
  uint8_t next = Protocol(true);
  const Bytes transport = Transport(next);
  const Bytes extensions = Extensions(next);
  Put16(ip, OneIn(40) ? Below(100) : static_cast<uint32_t>(extensions.size() + transport.size()));
  Put8(ip, next);
  Put8(ip, 64);
  PutIpv6Address(ip);
  PutIpv6Address(ip);
  Append(ip, extensions);
  Append(ip, transport);
  if (OneIn(50)) ip[0] = static_cast<uint8_t>(Below(256));
  return ip;
}

Bytes Arp() {
  Bytes arp = {0, 1, 8, 0, 6, 4, 0, 1, 2, 0, 0, 10, 0, 21};
  PutIpv4Address(arp);
  Append(arp, {0, 0, 0, 0, 0, 0});
  PutIpv4Address(arp);
  return arp;
}

// ---- Frames

void PutMac(Bytes& frame) {
  const uint32_t kind = Below(8);
  if (kind == 0) return Append(frame, {0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF});
  if (kind == 1) return Append(frame, {0x01, 0x00, 0x5E, 0, 0, 5});
  if (kind == 2) return PutRandom(frame, 6);
  Append(frame, {2, 0, 0, static_cast<uint8_t>(OneOf({10, 20})), 0,
                 static_cast<uint8_t>(OneOf({21, 22, 53}))});
}

void PutTags(Bytes& frame) {
  if (!OneIn(4)) return;
  const uint32_t count = OneIn(3) ? 2 + Below(2) : 1;
  for (uint32_t i = 0; i < count; ++i) {
    Put16(frame, i + 1 < count ? OneOf({0x88A8, 0x9100, 0x8100}) : 0x8100);
    Put16(frame, Below(8) << 13 | OneOf({30, 40, 200, 0, 4095}));
  }
}

// The EtherType and all behind it.
void PutContent(Bytes& frame) {
  const uint32_t kind = Below(16);
  if (kind < 8) {
    Put16(frame, 0x0800);
    return Append(frame, Ipv4());
  }
  if (kind < 13) {
    Put16(frame, 0x86DD);
    return Append(frame, Ipv6());
  }
  if (kind < 14) {
    Put16(frame, 0x0806);
    return Append(frame, Arp());
  }
  if (kind < 15) {
    Put16(frame, OneOf({0x88CC, 0x8863, 0x88F7, 0x1234, 0x8847}));
    return Append(frame, Payload());
  }
  const Bytes payload = Payload();  // IEEE 802.3 with a length, as spanning tree has it
  Put16(frame, static_cast<uint32_t>(3 + payload.size()));
  Append(frame, {0x42, 0x42, 0x03});
  Append(frame, payload);
}

Bytes Frame() {
  Bytes frame;
  if (OneIn(100)) {
    PutRandom(frame, Below(200));
    return frame;
  }
  PutMac(frame);
  PutMac(frame);
  PutTags(frame);
  PutContent(frame);
  if (frame.size() < 60 && !OneIn(4)) frame.resize(60, static_cast<uint8_t>(OneOf({0, 0xA5})));
  return frame;
}

// ---- The pcap file (little-endian, microseconds, link type Ethernet)

bool Write32(FILE* file, std::initializer_list<uint32_t> numbers) {
  for (const uint32_t number : numbers) {
    const uint8_t bytes[4] = {static_cast<uint8_t>(number), static_cast<uint8_t>(number >> 8),
                              static_cast<uint8_t>(number >> 16),
                              static_cast<uint8_t>(number >> 24)};
    if (fwrite(bytes, sizeof bytes, 1, file) != 1) return false;
  }
  return true;
}

// A service tag without the EtherType behind it, of which tshark shows nothing.
bool CutsServiceTag(const Bytes& frame, uint32_t length) {
  for (uint32_t at = length < 5 ? 0 : length - 5; at + 4 <= length; ++at) {
    if (frame[at] == 0x88 && frame[at + 1] == 0xA8) return true;
  }
  return false;
}

// Some frames were cut when they were captured.
bool WriteFrame(FILE* file, uint32_t index) {
  const Bytes frame = Frame();
  const auto size = static_cast<uint32_t>(frame.size());
  uint32_t captured = OneIn(20) ? Below(size + 1) : size;
  if (CutsServiceTag(frame, captured)) captured = size;
  return Write32(file, {1700000000 + index / 1000, index % 1000 * 1000, captured, size}) &&
         fwrite(frame.data(), 1, captured, file) == captured;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  FILE* file = fopen(argv[1], "wb");
  if (file == nullptr) return 1;
  generator.seed(static_cast<uint32_t>(strtoul(argv[3], nullptr, 10)));
  const auto count = static_cast<uint32_t>(strtoul(argv[2], nullptr, 10));
  bool written = Write32(file, {0xA1B2C3D4, 0x00040002, 0, 0, 262144, 1});
  for (uint32_t i = 0; i < count && written; ++i) written = WriteFrame(file, i);
  return fclose(file) == 0 && written ? 0 : 1;
}
