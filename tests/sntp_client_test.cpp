// The SNTP client's arithmetic, and what a name server and a network can do to it; the rest is
// tested with the command that uses it.
#include "timing/sntp_client.h"

#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <vector>

namespace {

std::vector<sockaddr_in> resolved;  // what every name stands for
int client;                         // the client's socket

}  // namespace

// In place of the C library's. The client is to hear when nobody is at the address that it asks.
int getaddrinfo(const char*, const char*, const addrinfo*, addrinfo** found) {
  static addrinfo entries[3];
  for (size_t i = 0; i < resolved.size(); ++i) {
    auto* address = reinterpret_cast<sockaddr*>(&resolved[i]);
    addrinfo* next = i + 1 < resolved.size() ? &entries[i + 1] : nullptr;
    entries[i] = {.ai_family = address->sa_family, .ai_addr = address, .ai_next = next};
  }
  const int on = 1;
  setsockopt(client, IPPROTO_IP, IP_RECVERR, &on, sizeof on);
  *found = entries;
  return 0;
}
void freeaddrinfo(addrinfo*) noexcept {}

using namespace corvane;

namespace {

TEST(SntpClient, ReadsTheTransmitTimestamp) {
  const struct {
    uint8_t octets[8];
    uint32_t seconds, nanoseconds;
  } cases[] = {
      {{0, 0, 0, 0, 0, 0, 0, 1}, 2085978496, 0},  // the next era begins
      {{0x83, 0xAA, 0x7E, 0x80, 0x80, 0, 0, 0}, 0, 500000000},
      // Single precision keeps 24 bits of the fraction, and rounds the last ones up to a second.
      {{0xEA, 0, 0, 1, 0x12, 0x34, 0x56, 0x78}, 1716879745, 71111112},
      {{0xEA, 0, 0, 1, 0xFF, 0xFF, 0xFF, 0xFF}, 1716879745, 1000000000},
  };
  for (const auto& [octets, seconds, nanoseconds] : cases) {
    uint8_t packet[kSntpPacketSize] = {};
    memcpy(packet + 40, octets, sizeof octets);
    uint32_t s = 7, ns = 7;
    ReadSntpTime(packet, s, ns);
    EXPECT_EQ(s, seconds);
    EXPECT_EQ(ns, nanoseconds);
  }
}

// A socket at a port of its own, whose address is written.
int Open(sockaddr_in& address) {
  address = {AF_INET, 0, {htonl(INADDR_LOOPBACK)}, {}};
  socklen_t size = sizeof address;
  const int server = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  EXPECT_EQ(bind(server, reinterpret_cast<sockaddr*>(&address), size), 0);
  getsockname(server, reinterpret_cast<sockaddr*>(&address), &size);
  return server;
}

void ExpectNoTime(int status, const char* out) {
  uint32_t seconds = 7, nanoseconds = 7;
  testing::internal::CaptureStdout();
  client = dup(STDOUT_FILENO);  // the one that is free next
  close(client);
  EXPECT_EQ(QuerySntp("name", seconds, nanoseconds), status);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), out);
  EXPECT_EQ(seconds, 7U);
}

TEST(SntpClient, AsksTheLastIpv4AddressOfAName) {
  sockaddr_in first, last;
  const int servers[] = {Open(first), Open(last)};
  resolved = {first, last, {AF_INET6, last.sin_port, {}, {}}};
  ExpectNoTime(kSntpTimeout, "Timeout..\n");
  char packet[64];
  EXPECT_EQ(recv(servers[0], packet, sizeof packet, MSG_DONTWAIT), -1);
  EXPECT_EQ(recv(servers[1], packet, sizeof packet, MSG_DONTWAIT), kSntpPacketSize);
  for (const int server : servers) close(server);

  ExpectNoTime(-1, "");
  resolved.erase(resolved.begin(), resolved.end() - 1);
  ExpectNoTime(kSntpTimeout, "Timeout..\n");
}

}  // namespace
