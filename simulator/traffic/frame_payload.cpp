#include "traffic/frame_payload.h"

#include <algorithm>

#include "traffic/byte_writer.h"

namespace simulator {
namespace {

// Meaningless bytes, the same for the same seed.
void FillNoise(ByteWriter& out, uint32_t seed) {
  uint32_t state = seed * 2654435761U + 12345U;
  while (out.left() > 0) {
    state = state * 1664525U + 1013904223U;
    out.Put8(state >> 24);
  }
}

// ---- Names and addresses

constexpr size_t kQuestionSize = 28;  // a name of 24 bytes in labels, type and class

void PutQuestion(ByteWriter& out, size_t size) {
  const size_t label =
      size - 4 - 6;  // without type and class, the label "net", the lengths and the end
  out.Put8(static_cast<uint32_t>(label));
  out.Fill(label, 'a');
  out.Put("\3net");
  out.Put8(0);
  out.Put16({16, 1});  // TXT, Internet
}

// A question, or the answer to one of kQuestionSize bytes, filling the rest. In a multicast a host
// tells its name unasked.
void FillDns(const Frame& frame, ByteWriter& out) {
  constexpr char kOwnName[] = "\5phone\5local";
  constexpr std::string_view kNameAsked = "\xC0\x0C";
  const bool multicast = frame.source_port == 5353;
  const bool answer = multicast || frame.source_port == 53;
  out.Put32(multicast ? 0x00008400 : answer ? 0x2A178180 : 0x2A170100);
  out.Put16({multicast ? 0U : 1, answer ? 1U : 0, 0, 0});
  if (!multicast) PutQuestion(out, answer ? kQuestionSize : out.left());
  if (!answer) return;
  out.Put(multicast ? std::string_view(kOwnName, sizeof kOwnName) : kNameAsked);
  out.Put16({16, 1, 0, 300});
  const size_t text = out.left() - 3;
  out.Put16(static_cast<uint32_t>(text + 1));
  out.Put8(static_cast<uint32_t>(text));
  out.Fill(text, 't');
}

void FillDhcp(const Frame& frame, ByteWriter& out) {
  const bool request = frame.source_port == 68;
  out.Put32(
      {request ? 0x01010600U : 0x02010600, 0x5EED0099, 0x00008000});  // transaction, broadcast
  out.Put32({0, request ? 0 : 0xC0A80A63, 0, 0});                     // offered address
  out.Put8({2, 0, 0, 10, 0, 99});
  out.Fill(10 + 64 + 128, 0);
  out.Put32(0x63825363);
  out.Put8({53, 1, request ? 1U : 2, 255});  // message type
  out.Fill(out.left(), 0);
}

// ---- Applications by their port

void PutTls(ByteWriter& out) {
  out.Put8(23);  // application data
  out.Put16(0x0303);
  out.Put16(static_cast<uint32_t>(out.left() - 2));
}

void PutSmb(ByteWriter& out) {
  out.Put32(static_cast<uint32_t>(out.left() - 4));
  out.Put("\xFESMB");
  out.Put16(64);
  out.Fill(out.left(), 0);
}

struct Application {
  uint16_t port;
  Transport transport;
  void (*put)(ByteWriter& out);  // the beginning of the payload; noise fills the rest
};

// The voice of SIP, at its two ports.
void PutRtp(ByteWriter& out) {
  out.Put32({0x80000001, 160, 0xC0FFEE});
}

constexpr Application kApplications[] = {
    {443, kTcp, PutTls},   {443, kUdp, [](ByteWriter& out) { out.Put8(0x43); }},
    {445, kTcp, PutSmb},   {16402, kUdp, PutRtp},
    {16404, kUdp, PutRtp},
};

// Protocols of lines: the line, then as many letters as fit, then its end.
struct LineProtocol {
  uint16_t port;
  const char* client;
  const char* server;
};

constexpr LineProtocol kLineProtocols[] = {
    {80, "GET / HTTP/1.1\r\nHost: www.net\r\nX-Fill: ", "HTTP/1.1 200 OK\r\nX-Fill: "},
    {25, "HELO ", "220 "},
    {110, "USER ", "+OK "},
    {21, "RETR ", "220 "},
    {22, "SSH-2.0-", "SSH-2.0-"},
    {873, "@RSYNCD: 31.0 ", "@RSYNCD: 31.0 "},
    {5060, "OPTIONS sip:exchange SIP/2.0\r\nSubject: ", "SIP/2.0 200 OK\r\nSubject: "},
};

bool FillLines(const Frame& frame, ByteWriter& out) {
  for (const LineProtocol& protocol : kLineProtocols) {
    const bool to_server = frame.destination_port == protocol.port &&
                           (frame.source_port != protocol.port || frame.port == 0);
    if (!to_server && frame.source_port != protocol.port) continue;
    const std::string_view line = to_server ? protocol.client : protocol.server;
    const std::string_view end = protocol.port == 80 || protocol.port == 5060 ? "\r\n\r\n" : "\r\n";
    if (out.left() < line.size() + end.size()) return false;
    out.Put(line);
    out.Fill(out.left() - end.size(), 'x');
    out.Put(end);
    return true;
  }
  return false;
}

bool UsesPort(const Frame& frame, uint16_t port) {
  return frame.source_port == port || frame.destination_port == port;
}

}  // namespace

void FillPayload(const Frame& frame, uint32_t seed, std::span<uint8_t> payload) {
  ByteWriter out(payload);
  if (frame.transport == kUdp && (UsesPort(frame, 53) || UsesPort(frame, 5353))) {
    return FillDns(frame, out);
  }
  if (frame.transport == kUdp && UsesPort(frame, 67)) return FillDhcp(frame, out);
  if (payload.empty() || FillLines(frame, out)) return;
  for (const Application& application : kApplications) {
    if (application.transport != frame.transport || !UsesPort(frame, application.port)) continue;
    application.put(out);
    break;
  }
  FillNoise(out, seed);
}

namespace {

void FillEcho(const Frame& frame, uint32_t seed, ByteWriter& out) {
  out.Put8({frame.source_port, frame.destination_port, 0, 0});
  out.Put32(0x00010001);  // identifier and number
  FillNoise(out, seed);
}

void FillRouterAdvertisement(const Frame& frame, ByteWriter& out) {
  out.Put8({frame.source_port, frame.destination_port, 0, 0});
  out.Put32({0x40000708, 0, 0});             // hop limit 64, router for 1800 s
  out.Put32({0x030440C0, 86400, 14400, 0});  // prefix of 64 bits, on link, autonomous
  out.Put(std::span(frame.source->ipv6).first(8));
  out.Fill(8, 0);
  out.Put32({0x05010000, 1500});  // MTU
  out.Put16(0x0101);              // link-layer address
  out.Put(frame.source->mac);
  out.Fill(out.left(), 0);
}

void FillMembershipReport(ByteWriter& out) {
  // One group record: change to exclude nothing, which is to join.
  out.Put32({0x22000000, 1, 0x04000000, 0xE00000FB});
}

void FillOspfHello(const Frame& frame, ByteWriter& out) {
  out.Put32(0x02010000U + static_cast<uint32_t>(out.left()));
  out.Put(frame.source->ipv4);
  out.Put32({0, 0, 0, 0});                  // area; checksum, no authentication
  out.Put32({0xFFFFFF00, 0x000A0201, 40});  // every 10 s, external routes, priority 1
  out.Put(frame.source->ipv4);
  out.Fill(out.left(), 0);
}

}  // namespace

void FillMessage(const Frame& frame, uint32_t seed, std::span<uint8_t> message) {
  ByteWriter out(message);
  if (frame.transport == kIcmp) return FillEcho(frame, seed, out);
  if (frame.transport == kIcmp6) return FillRouterAdvertisement(frame, out);
  if (frame.transport == kIgmp) return FillMembershipReport(out);
  if (frame.transport == kOspf) FillOspfHello(frame, out);
}

void FillLldp(const Frame& frame, std::span<uint8_t> unit) {
  ByteWriter out(unit);
  out.Put16(0x0207);  // chassis: a MAC address
  out.Put8(4);
  out.Put(frame.source->mac);
  out.Put16(0x0403);  // port: a local name
  out.Put8(7);
  out.Put("p1");
  out.Put16({0x0602, 120});  // time to live, in seconds
  const size_t text = out.left() - 4;
  out.Put16(0x0C00 + static_cast<uint32_t>(text));  // description
  out.Fill(text, 'd');
  out.Put16(0);
}

}  // namespace simulator
