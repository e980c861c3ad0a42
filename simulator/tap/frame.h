// A frame as it arrives at a port, and what one pass over its headers finds out.
//
// Sources: Ethernet II, LLC and FCS: IEEE 802.3. VLAN tags: IEEE 802.1Q. IPv4: RFC 791. IPv6 and
// its extension headers: RFC 8200, RFC 4302 (authentication). TCP: RFC 9293. UDP: RFC 768.
#pragma once

#include <cstdint>

namespace simulator {

inline constexpr const char* kPortNames[] = {"port A", "port B"};  // in capture files

struct RawFrame {
  const uint8_t* bytes;  // from the destination MAC on, without the frame check sequence
  uint32_t length;       // bytes there
  uint32_t wire_length;  // bytes of the original frame, without the frame check sequence
  uint8_t port;          // 0 A, 1 B
  bool crc_ok;
  bool hw_dropped;         // arrived whole, but the device had no room for it
  int64_t time_ns;         // the device's clock, since the epoch
  int8_t fcs_length = -1;  // bytes of the frame check sequence after these; -1: it is not known
};

// Transport protocols (IANA protocol numbers); 0 where there is none.
enum Transport : uint8_t {
  kNoTransport = 0,
  kIcmp = 1,
  kIgmp = 2,
  kTcp = 6,
  kUdp = 17,
  kIcmp6 = 58,
  kOspf = 89
};

// TCP flags (RFC 9293).
enum TcpFlag : uint8_t { kFin = 0x01, kSyn = 0x02, kRst = 0x04, kPsh = 0x08, kAck = 0x10 };

enum class Layer2 : uint8_t { kIp4, kIp6, kArp, kOther };

inline constexpr uint32_t kFrameOverhead = 20;   // bytes of preamble, start and gap on the wire
inline constexpr uint32_t kFcsSize = 4;          // bytes of the frame check sequence
inline constexpr uint32_t kEthernetHeader = 14;  // a shorter frame has no addresses and no type
inline constexpr uint8_t kMaxVlanTags = 8;       // a frame with more is Layer2::kOther

// The pointers are into the frame's bytes. Bytes that are cut off, or that the lengths in the
// headers leave out (padding after an IP packet), do not count: a frame that ends within its IPv4
// header has layer2 kIp4 and no addresses.
struct FrameFacts {
  Layer2 layer2 = Layer2::kOther;  // by the EtherType after all VLAN tags
  uint8_t vlan_count = 0;          // tags, of 802.1Q, 802.1ad (QinQ) and 0x9100
  uint16_t vlans[kMaxVlanTags];    // identifiers, the outermost first; vlan_count are valid

  const uint8_t* source = nullptr;       // IP address: 4 bytes (IPv4) or 16 (IPv6); both null
  const uint8_t* destination = nullptr;  // when there is no whole IP header

  bool has_protocol = false;  // protocol is known
  bool is_fragment = false;   // any part of a fragmented packet
  bool is_first = true;       // not a later fragment: the transport header may be there
  uint8_t protocol = 0;       // IANA protocol number; for IPv6 after the extension headers

  bool has_ports = false;  // of TCP and UDP; never in later fragments
  uint16_t source_port = 0;
  uint16_t destination_port = 0;

  bool has_tcp = false;   // the flags and the window are there
  uint8_t tcp_flags = 0;  // FIN is bit 0
  uint16_t tcp_window = 0;
};

// Takes any bytes and never reads past frame.length. The facts are valid as long as the frame's
// bytes.
FrameFacts ParseFrame(const RawFrame& frame);

}  // namespace simulator
