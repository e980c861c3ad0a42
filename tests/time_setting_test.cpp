// timing setsystem, and timing setsntp with a time server of the test's own.
#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

TEST(TimeSetting, SetsTheSystemsTime) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS));
  EXPECT_EQ(simulation.Run("timing setsystem").out, "Time updated\n");
  const auto sent = simulation.Sent<TimingTimeRecord>("CorvaneAPISetTimingTime");
  EXPECT_EQ(sent.time_source, 0U);
  EXPECT_NEAR(sent.seconds, static_cast<double>(time(nullptr)), 2);
  EXPECT_EQ(sent.nanoseconds % 1000, 0U);
}

// A loopback address of this process alone: tests that run at the same time all need the same port.
in_addr ServerAddress() {
  return {htonl(0x7F000000U | (static_cast<uint32_t>(getpid()) & 0x3FFFFF) << 2 | 2)};
}

// What a server does with the nth request.
using Answer = void (*)(int socket, const sockaddr_in& to, int request);

struct Server {
  explicit Server(Answer answer) : answer_(answer) {
    const timeval patience = {0, 20'000};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    const sockaddr_in address = {AF_INET, htons(123), ServerAddress(), {}};
    bound = bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    thread_ = std::jthread([this](const std::stop_token& stop) {
      while (!stop.stop_requested()) Serve();
    });
  }
  ~Server() {
    thread_ = {};
    close(socket_);
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  bool bound = false;
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

constexpr uint32_t kMiddle = 0x80000000;  // of a second

// An answer with 1716879745 s of Unix time and a fraction, cut to so many octets.
void SendTime(int socket, const sockaddr_in& to, uint32_t fraction, size_t size = 48) {
  uint8_t packet[48] = {0x1C};
  const uint32_t words[] = {htonl(0xEA000001), htonl(fraction)};
  memcpy(packet + 40, words, sizeof words);
  sendto(socket, packet, size, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

// Without a line about the device's selection.
void ExpectTimes(const Simulation& simulation, const std::string& more, const std::string& out,
                 int status) {
  const std::string words =
      std::string("timing setsntp --sntpserver ") + inet_ntoa(ServerAddress());
  const Result result = simulation.Run(words + more);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.status, status);
}

#define NEEDS_PORT(server) \
  if (!(server).bound) GTEST_SKIP() << "UDP port 123 of the loopback is not to be had"

TEST(TimeFromNetwork, AsksForTheMiddleOfASecond) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS) + DeviceToml(11, "00:00:00:00:00:01", 0));
  const Server server([](int socket, const sockaddr_in& to, int request) {
    // 199999988 ns and 700000047 ns are not in the middle, 200000002 ns are.
    const uint32_t fractions[] = {0x33333300, 0xB3333400, 0x33333340};
    SendTime(socket, to, fractions[(request - 1) % 3]);
  });
  NEEDS_PORT(server);
  ExpectTimes(simulation, " -d all",
              "SNTP : time obtained from server\nCorvane 0: Time updated\nCorvane 1: Your device "
              "does not support timing information and configuration\n",
              251);
  EXPECT_EQ(server.requests, 3);
  EXPECT_EQ(server.request, "db000a00" + std::string(88, '0'));
  EXPECT_EQ(Sent(simulation, "SetTimingTime"), Hex(5, 4) + Hex(1716879745, 4) + Hex(200000002, 4));
  EXPECT_EQ(simulation.CallsOf("CorvaneApiSleepMs milliseconds=100"), 2);
}

TEST(TimeFromNetwork, GivesUpAfterTenAttempts) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS));
  const Server server([](int, const sockaddr_in&, int) {});
  NEEDS_PORT(server);
  std::string expected;
  for (int i = 0; i < 10; ++i) expected += "Timeout..\nFailed to get time from SNTP, retrying\n";
  ExpectTimes(simulation, "", expected + "SNTP : Failed to get time from server\n", 255);
  EXPECT_EQ(server.requests, 10);
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetTimingTime"), 0);
}

// Nothing in an answer is checked: what did not come reads as 0, which is no middle of a second. A
// flood is as good as its first datagram.
TEST(TimeFromNetwork, TakesABrokenServerAsItIs) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS));
  const Server server([](int socket, const sockaddr_in& to, int request) {
    if (request <= 3) SendTime(socket, to, kMiddle, request == 3 ? 44 : request == 2 ? 7 : 0);
    for (int i = 0; request == 4 && i < 2000; ++i) SendTime(socket, to, kMiddle);
  });
  NEEDS_PORT(server);
  ExpectTimes(simulation, "", "SNTP : time obtained from server\nTime updated\n", 0);
  EXPECT_EQ(server.requests, 4);
}

}  // namespace
