// A time server of the test's own.
#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <string>
#include <thread>

#include "support/expectations.h"

// A loopback address of this process alone: tests that run at the same time all need the same port.
inline std::string ServerAddress() {
  return inet_ntoa({htonl(0x7F000000U | (static_cast<uint32_t>(getpid()) & 0x3FFFFF) << 2 | 2)});
}

// What a server does with the nth request.
using Answer = void (*)(int socket, const sockaddr_in& to, int request);

struct TimeServer {
  explicit TimeServer(Answer answer) : answer_(answer) {
    const timeval patience = {0, 20'000};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const sockaddr_in address = {AF_INET, htons(123), {inet_addr(ServerAddress().c_str())}, {}};
    bound = bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    thread_ = std::jthread([this](const std::stop_token& stop) {
      while (!stop.stop_requested()) Serve();
    });
  }
  ~TimeServer() {
    thread_ = {};
    close(socket_);
  }
  TimeServer(const TimeServer&) = delete;
  TimeServer& operator=(const TimeServer&) = delete;

  bool bound = false;  // else the port is not to be had
  std::atomic<int> requests = 0;
  std::string request;  // the last one

 private:
  void Serve() {
    uint8_t packet[64];
    sockaddr_in from = {};
    socklen_t size = sizeof from;
    const ssize_t count =
        recvfrom(socket_, packet, sizeof packet, 0, reinterpret_cast<sockaddr*>(&from), &size);
    if (count < 0) return;
    request.clear();
    for (ssize_t i = 0; i < count; ++i) request += Hex(packet[i], 1);
    answer_(socket_, from, ++requests);
  }

  Answer answer_;
  int socket_ = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  std::jthread thread_;
};

inline constexpr uint32_t kMiddle = 0x80000000;  // of a second

// An answer with 1716879745 s of Unix time and a fraction, cut to that size.
inline void SendTime(int socket, const sockaddr_in& to, uint32_t fraction, size_t size = 48) {
  uint8_t packet[48] = {0x1C};
  const uint32_t words[] = {htonl(0xEA000001), htonl(fraction)};
  memcpy(packet + 40, words, sizeof words);
  sendto(socket, packet, size, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}
