#include "timing/sntp_client.h"

#include <netdb.h>
#include <netinet/in.h>
#include <sys/select.h>
#include <sys/socket.h>

#include <cstring>

#include "console/report.h"

namespace corvane {

namespace {

constexpr uint32_t kUnixEpochAdjustment = 2085978496;  // -2208988800 modulo 2^32
constexpr int kTransmitTimestamp = 40;
constexpr suseconds_t kTimeoutUs = 200'000;

int Resolve(const char* server, sockaddr_in& address) {
  addrinfo* found = nullptr;
  const int failure = getaddrinfo(server, "ntp", nullptr, &found);
  if (failure != 0) return failure;
  for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
    if (entry->ai_family == AF_INET) memcpy(&address, entry->ai_addr, sizeof address);
  }
  freeaddrinfo(found);
  return 0;
}

// 0 when something is there to read; else one word is printed.
int WaitForAnswer(int descriptor) {
  if (descriptor < 0 || descriptor >= FD_SETSIZE) return Fail(kSntpSelectFailed, "Error..");
  fd_set readable;
  FD_ZERO(&readable);
  FD_SET(descriptor, &readable);
  timeval timeout = {0, kTimeoutUs};
  const int ready = select(descriptor + 1, &readable, nullptr, nullptr, &timeout);
  if (ready == 0) return Fail(kSntpTimeout, "Timeout..");
  return ready < 0 ? Fail(kSntpSelectFailed, "Error..") : 0;
}

uint32_t ReadWord(const uint8_t* octets) {
  return static_cast<uint32_t>(octets[0]) << 24 | static_cast<uint32_t>(octets[1]) << 16 |
         static_cast<uint32_t>(octets[2]) << 8 | static_cast<uint32_t>(octets[3]);
}

}  // namespace

void MakeSntpRequest(uint8_t (&packet)[kSntpPacketSize]) {
  memset(packet, 0, sizeof packet);
  packet[0] = 0xDB;
  packet[2] = 10;
}

void ReadSntpTime(const uint8_t (&packet)[kSntpPacketSize], uint32_t& seconds,
                  uint32_t& nanoseconds) {
  seconds = ReadWord(packet + kTransmitTimestamp) + kUnixEpochAdjustment;
  const auto fraction = static_cast<float>(ReadWord(packet + kTransmitTimestamp + 4));
  nanoseconds = static_cast<uint32_t>(static_cast<double>(fraction) * 1000000000.0 / 4294967296.0);
}

int QuerySntp(const char* server, uint32_t& seconds, uint32_t& nanoseconds) {
  uint8_t request[kSntpPacketSize];
  uint8_t answer[kSntpPacketSize] = {};
  MakeSntpRequest(request);
  // Left open: a late answer finds its own socket and not the next query's.
  const int descriptor = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, IPPROTO_UDP);
  sockaddr_in address = {};
  int status = Resolve(server, address);
  if (status != 0) return status;

  sendto(descriptor, request, sizeof request, 0, reinterpret_cast<const sockaddr*>(&address),
         sizeof address);
  status = WaitForAnswer(descriptor);
  if (status != 0) return status;
  // A datagram that select saw may be gone by now (a wrong checksum): never wait for the next.
  const ssize_t received = recv(descriptor, answer, sizeof answer, MSG_DONTWAIT);
  if (received < 0) return static_cast<int>(received);
  ReadSntpTime(answer, seconds, nanoseconds);
  return 0;
}

}  // namespace corvane
