// The built-in mix: a small office on port A, its servers and the way to the Internet on port B.
#include "traffic/mix.h"

namespace simulator {
namespace {

constexpr uint8_t kA = 0;
constexpr uint8_t kB = 1;

// ---- Hosts. Addresses are private or set aside for documentation (RFC 5737, RFC 3849); the MAC
// addresses of stations are locally administered.

// 2001:db8:subnet::station
constexpr std::array<uint8_t, 16> Ipv6(uint8_t subnet, uint8_t station) {
  return {0x20, 0x01, 0x0D, 0xB8, 0, subnet, 0, 0, 0, 0, 0, 0, 0, 0, 0, station};
}

// ff02::group
constexpr std::array<uint8_t, 16> Ipv6Group(uint8_t group) {
  return {0xFF, 0x02, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, group};
}

constexpr Host kLaptop = {{2, 0, 0, 10, 0, 21}, {192, 168, 10, 21}, Ipv6(0x10, 0x21)};
constexpr Host kDesk = {{2, 0, 0, 10, 0, 22}, {192, 168, 10, 22}, Ipv6(0x10, 0x22)};
constexpr Host kPhone = {{2, 0, 0, 10, 0, 30}, {192, 168, 10, 30}, Ipv6(0x10, 0x30)};
constexpr Host kCamera = {{2, 0, 0, 10, 0, 40}, {192, 168, 10, 40}, Ipv6(0x10, 0x40)};
constexpr Host kBackup = {{2, 0, 0, 10, 0, 50}, {192, 168, 10, 50}, Ipv6(0x10, 0x50)};
constexpr Host kNewcomer = {{2, 0, 0, 10, 0, 99}, {0, 0, 0, 0}, {}};  // asks for an address
constexpr Host kRouter = {{2, 0, 0, 10, 0, 1}, {192, 168, 10, 1}, Ipv6(0x10, 0x01)};
constexpr Host kNames = {{2, 0, 0, 20, 0, 53}, {10, 1, 20, 53}, Ipv6(0x20, 0x53)};
constexpr Host kFiles = {{2, 0, 0, 20, 0, 30}, {10, 1, 20, 30}, Ipv6(0x20, 0x30)};
constexpr Host kMail = {{2, 0, 0, 20, 0, 25}, {10, 1, 20, 25}, Ipv6(0x20, 0x25)};
constexpr Host kExchange = {{2, 0, 0, 20, 0, 60}, {10, 1, 20, 60}, Ipv6(0x20, 0x60)};
constexpr Host kWeb = {{2, 0, 0, 99, 0, 80}, {203, 0, 113, 80}, Ipv6(0x80, 0x80)};

constexpr Host kEveryone = {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, {255, 255, 255, 255}, {}};
constexpr Host kBridges = {{0x01, 0x80, 0xC2, 0, 0, 0x0E}, {}, {}};
constexpr Host kOspfRouters = {{0x01, 0, 0x5E, 0, 0, 5}, {224, 0, 0, 5}, {}};
constexpr Host kIgmpRouters = {{0x01, 0, 0x5E, 0, 0, 22}, {224, 0, 0, 22}, {}};
constexpr Host kMdns = {{0x01, 0, 0x5E, 0, 0, 251}, {224, 0, 0, 251}, {}};
constexpr Host kMdns6 = {{0x33, 0x33, 0, 0, 0, 0xFB}, {}, Ipv6Group(0xFB)};
constexpr Host kAllNodes6 = {{0x33, 0x33, 0, 0, 0, 1}, {}, Ipv6Group(1)};

// ---- Frames

constexpr Layer2 k4 = Layer2::kIp4;
constexpr Layer2 k6 = Layer2::kIp6;
constexpr uint8_t kPushAck = kPsh | kAck;

constexpr Frame kMix[] = {
    // Names, addresses, neighbours.
    {kA, 64, Layer2::kArp, kNoTransport, &kLaptop, &kEveryone, 1},
    {kB, 64, Layer2::kArp, kNoTransport, &kRouter, &kLaptop, 2},
    {kA, 86, k4, kUdp, &kLaptop, &kNames, 51822, 53},
    {kB, 142, k4, kUdp, &kNames, &kLaptop, 53, 51822},
    {kA, 106, k6, kUdp, &kDesk, &kNames, 52910, 53},
    {kB, 134, k6, kUdp, &kNames, &kDesk, 53, 52910},
    {kA, 346, k4, kUdp, &kNewcomer, &kEveryone, 68, 67},
    {kB, 346, k4, kUdp, &kRouter, &kEveryone, 67, 68},
    // A web page, from the first handshake to the end.
    {kA, 78, k4, kTcp, &kLaptop, &kWeb, 50412, 443, kSyn},
    {kB, 78, k4, kTcp, &kWeb, &kLaptop, 443, 50412, kSyn | kAck},
    {kA, 64, k4, kTcp, &kLaptop, &kWeb, 50412, 443, kAck},
    {kA, 575, k4, kTcp, &kLaptop, &kWeb, 50412, 443, kPushAck},
    {kB, 1518, k4, kTcp, &kWeb, &kLaptop, 443, 50412, kAck},
    {kB, 1518, k4, kTcp, &kWeb, &kLaptop, 443, 50412, kAck, 0, Fate::kBadCrc},
    {kB, 1518, k4, kTcp, &kWeb, &kLaptop, 443, 50412, kAck},
    {kB, 812, k4, kTcp, &kWeb, &kLaptop, 443, 50412, kPushAck},
    {kA, 64, k4, kTcp, &kLaptop, &kWeb, 50412, 443, kFin | kAck},
    {kA, 94, k6, kTcp, &kDesk, &kWeb, 49320, 80, kSyn},
    {kA, 431, k6, kTcp, &kDesk, &kWeb, 49320, 80, kPushAck},
    {kB, 1494, k6, kTcp, &kWeb, &kDesk, 80, 49320, kAck},
    {kB, 78, k6, kTcp, &kWeb, &kDesk, 80, 49320, kRst | kAck},
    {kA, 1250, k6, kUdp, &kDesk, &kWeb, 61001, 443},
    {kB, 1250, k6, kUdp, &kWeb, &kDesk, 443, 61001},
    // Mail, files, a shell.
    {kA, 112, k4, kTcp, &kDesk, &kMail, 40125, 25, kPushAck},
    {kB, 98, k4, kTcp, &kMail, &kDesk, 25, 40125, kPushAck},
    {kA, 77, k4, kTcp, &kDesk, &kMail, 40126, 110, kPushAck},
    {kB, 640, k4, kTcp, &kMail, &kDesk, 110, 40126, kPushAck},
    {kA, 84, k4, kTcp, &kDesk, &kFiles, 40200, 21, kPushAck},
    {kB, 102, k4, kTcp, &kFiles, &kDesk, 21, 40200, kPushAck},
    {kA, 166, k4, kTcp, &kLaptop, &kFiles, 50500, 445, kPushAck},
    {kB, 1518, k4, kTcp, &kFiles, &kLaptop, 445, 50500, kAck},
    {kA, 64, k4, kTcp, &kLaptop, &kFiles, 50500, 445, kAck, 0, Fate::kReceived, 0},
    {kA, 118, k4, kTcp, &kDesk, &kFiles, 40300, 22, kPushAck},
    {kB, 150, k4, kTcp, &kFiles, &kDesk, 22, 40300, kPushAck},
    // A backup in jumbo frames.
    {kB, 9000, k4, kTcp, &kFiles, &kBackup, 33100, 873, kAck, 200},
    {kB, 9000, k4, kTcp, &kFiles, &kBackup, 33100, 873, kAck, 200, Fate::kHwDropped},
    {kA, 9000, k4, kTcp, &kBackup, &kFiles, 873, 33100, kPushAck, 200, Fate::kBadCrc},
    // Voice and pictures, each in a VLAN of its own.
    {kA, 618, k4, kUdp, &kPhone, &kExchange, 5060, 5060, 0, 30},
    {kB, 402, k4, kUdp, &kExchange, &kPhone, 5060, 5060, 0, 30},
    {kA, 222, k4, kUdp, &kPhone, &kExchange, 16402, 16404, 0, 30},
    {kB, 222, k4, kUdp, &kExchange, &kPhone, 16404, 16402, 0, 30},
    {kA, 1400, k6, kUdp, &kCamera, &kFiles, 20010, 20010, 0, 40},
    // Echoes, and the talk of the network itself.
    {kA, 102, k4, kIcmp, &kLaptop, &kRouter, 8, 0},
    {kB, 102, k4, kIcmp, &kRouter, &kLaptop, 0, 0},
    {kB, 122, k6, kIcmp6, &kRouter, &kAllNodes6, 134, 0},
    {kA, 64, k4, kIgmp, &kCamera, &kIgmpRouters},
    {kA, 91, k4, kUdp, &kPhone, &kMdns, 5353, 5353},
    {kA, 111, k6, kUdp, &kPhone, &kMdns6, 5353, 5353, 0, 0, Fate::kBadCrc},
    {kB, 82, k4, kOspf, &kRouter, &kOspfRouters},
    {kB, 124, Layer2::kOther, kNoTransport, &kRouter, &kBridges},
};

}  // namespace

Cycle TrafficCycle() {
  return kMix;
}

}  // namespace simulator
