// timing setsntp, setgps, setmanual and setsystem, end to end, with an SNTP server of the test's
// own.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <ctime>
#include <functional>
#include <thread>

#include "device/capabilities.h"
#include "support/expectations.h"

namespace {

constexpr const char* kUnsupported =
    "Your device does not support timing information and configuration\n";

std::string Devices(std::initializer_list<uint32_t> capabilities) {
  std::string toml;
  char mac[] = "00:00:00:00:00:00";
  for (const uint32_t mask : capabilities) {
    toml += DeviceToml(11, mac, mask);
    ++mac[16];
  }
  return toml;
}

// Without a line about the device's selection.
void ExpectTimes(const Simulation& simulation, const std::string& words, const std::string& out,
                 int status) {
  const Result result = simulation.Run(words);
  EXPECT_EQ(result.out, out) << words;
  EXPECT_EQ(result.status, status) << words;
}

TEST(TimeSetting, SetsOneDeviceOrAll) {
  const Simulation simulation(Devices({kGps, kGps}));
  ExpectTimes(simulation, "timing setmanual --timestamp 1800000000 --timestamp_ns 5",
              "Time updated\n", 0);
  EXPECT_EQ(Sent(simulation, "SetTimingTime"), Hex(4, 4) + Hex(1800000000, 4) + Hex(5, 4));
  ExpectTimes(simulation, "timing setmanual --timestamp -1 -d 1", "Time updated\n", 0);
  EXPECT_EQ(Sent(simulation, "SetTimingTime"), Hex(4, 4) + Hex(~0U, 4) + Hex(0, 4));
  ExpectTimes(simulation, "timing setgps --device ALL",
              "Corvane 0: Time source updated\nCorvane 1: Time source updated\n", 0);
  EXPECT_EQ(Sent(simulation, "SetTimingTime"), Hex(2, 4) + Hex(0, 4) + Hex(0, 4));
  ExpectTimes(simulation, "timing setsystem", "Time updated\n", 0);
  const auto sent = simulation.Sent<TimingTimeRecord>("CorvaneAPISetTimingTime");
  EXPECT_EQ(sent.time_source, 0U);
  EXPECT_NEAR(sent.seconds, static_cast<double>(time(nullptr)), 2);
  EXPECT_EQ(sent.nanoseconds % 1000, 0U);
}

TEST(TimeSetting, NeedsADevice) {
  const Simulation simulation(Devices({kGps}));
  for (const char* command : {"setsntp", "setgps", "setmanual", "setsystem"}) {
    const std::string words = std::string("timing ") + command;
    ExpectTimes(simulation, words + " -d 1", "", 252);
    EXPECT_EQ(simulation.Calls().back(), "CorvaneAPIUninitialize");
  }
  // The first list ends the wait for devices, the second is the one to work on.
  const Simulation without(Devices({kGps}) + FaultToml("CorvaneAPIGetDevicesList", -1, 2));
  ExpectTimes(without, "timing setgps -d all", "", 252);
}

// The last call decides; a device without timing changes nothing.
TEST(TimeSetting, GoesOnAfterAFailure) {
  const struct {
    const char* words;
    const char* failure;
    const char* success;
  } cases[] = {
      {"timing setgps", "Failed to set time from GPS\n", "Time source updated\n"},
      {"timing setmanual", "Failed to set manual timestamp\n", "Time updated\n"},
      {"timing setsystem", "Failed to set system timestamp\n", "Time updated\n"},
  };
  for (const auto& [words, failure, success] : cases) {
    const std::string all = std::string(words) + " -d all";
    for (const int failing : {1, 2}) {
      const Simulation simulation(Devices({kGps, 0, kGps, 0}) +
                                  FaultToml("CorvaneAPISetTimingTime", -77, failing));
      ExpectTimes(simulation, all,
                  std::string("Corvane 0: ") + (failing == 1 ? failure : success) + "Corvane 1: " +
                      kUnsupported + "Corvane 2: " + (failing == 2 ? failure : success) +
                      "Corvane 3: " + kUnsupported,
                  failing == 2 ? 179 : 0);
    }
    ExpectTimes(Simulation(Devices({0})), words, kUnsupported, 0);
  }
}

// ---- Network time

// A loopback address of this process alone: tests that run at the same time all need the same port.
in_addr ServerAddress() {
  return {htonl(0x7F000000U | (static_cast<uint32_t>(getpid()) & 0x3FFFFF) << 2 | 2)};
}

std::string Command() {
  return std::string("timing setsntp --sntpserver ") + inet_ntoa(ServerAddress());
}

// What a server does with the nth request.
using Answer = std::function<void(int socket, const sockaddr_in& to, int request)>;

class Server {
 public:
  explicit Server(Answer answer) : socket_(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address = {};
    address.sin_family = AF_INET;
    address.sin_port = htons(123);
    address.sin_addr = ServerAddress();
    bound_ = bind(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0;
    thread_ = std::thread([this, answer = std::move(answer)] { Serve(answer); });
  }
  ~Server() {
    stop_ = true;
    thread_.join();
    close(socket_);
  }
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  bool bound() const { return bound_; }
  int requests() const { return requests_; }
  std::string request() const { return request_; }

 private:
  void Serve(const Answer& answer) {
    timeval patience = {0, 20'000};
    setsockopt(socket_, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
    while (!stop_) {
      uint8_t packet[64];
      sockaddr_in from = {};
      socklen_t size = sizeof from;
      const ssize_t count =
          recvfrom(socket_, packet, sizeof packet, 0, reinterpret_cast<sockaddr*>(&from), &size);
      if (count < 0) continue;
      request_.clear();
      for (ssize_t i = 0; i < count; ++i) request_ += Hex(packet[i], 1);
      answer(socket_, from, ++requests_);
    }
  }

  int socket_;
  bool bound_ = false;
  std::atomic<bool> stop_ = false;
  std::atomic<int> requests_ = 0;
  std::string request_;
  std::thread thread_;
};

void Send(int socket, const sockaddr_in& to, const void* bytes, size_t size) {
  sendto(socket, bytes, size, 0, reinterpret_cast<const sockaddr*>(&to), sizeof to);
}

// An answer with that transmit timestamp, cut to so many octets.
void SendTime(int socket, const sockaddr_in& to, uint32_t seconds, uint32_t fraction,
              size_t size = 48) {
  uint8_t packet[48] = {0x1C};
  const uint32_t words[] = {htonl(seconds), htonl(fraction)};
  memcpy(packet + 40, words, sizeof words);
  Send(socket, to, packet, size);
}

constexpr uint32_t kSeconds = 0xEA000001;  // 1716879745 as Unix time
constexpr uint32_t kMiddle = 0x80000000;   // of a second
constexpr const char* kObtained = "SNTP : time obtained from server\n";

#define NEEDS_PORT(server) \
  if (!(server).bound()) GTEST_SKIP() << "UDP port 123 of the loopback is not to be had"

TEST(TimeFromNetwork, AsksForTheMiddleOfASecond) {
  const Simulation simulation(Devices({kGps, 0}));
  const Server server([](int socket, const sockaddr_in& to, int request) {
    // 199999988 ns and 700000047 ns are not in the middle, 200000002 ns are.
    const uint32_t fractions[] = {0x33333300, 0xB3333400, 0x33333340};
    SendTime(socket, to, kSeconds, fractions[(request - 1) % 3]);
  });
  NEEDS_PORT(server);
  ExpectTimes(simulation, Command() + " -d all",
              std::string(kObtained) + "Corvane 0: Time updated\nCorvane 1: " + kUnsupported, 251);
  EXPECT_EQ(server.requests(), 3);
  EXPECT_EQ(server.request(), "db000a00" + std::string(88, '0'));
  EXPECT_EQ(Sent(simulation, "SetTimingTime"), Hex(5, 4) + Hex(1716879745, 4) + Hex(200000002, 4));
  EXPECT_EQ(simulation.Lines("CorvaneApiSleepMs"),
            std::vector<std::string>(2, "CorvaneApiSleepMs milliseconds=100 status=0"));
}

TEST(TimeFromNetwork, PassesTheDevicesStatusThrough) {
  const Simulation simulation(Devices({kGps}) + FaultToml("CorvaneAPISetTimingTime", -77));
  const Server server(
      [](int socket, const sockaddr_in& to, int) { SendTime(socket, to, kSeconds, kMiddle); });
  NEEDS_PORT(server);
  ExpectTimes(simulation, Command(), std::string(kObtained) + "Failed to set time from SNTP\n",
              179);
}

TEST(TimeFromNetwork, GivesUpAfterTenAttempts) {
  const Simulation simulation(Devices({kGps}));
  const Server server([](int, const sockaddr_in&, int) {});
  NEEDS_PORT(server);
  std::string expected;
  for (int i = 0; i < 10; ++i) expected += "Timeout..\nFailed to get time from SNTP, retrying\n";
  ExpectTimes(simulation, Command(), expected + "SNTP : Failed to get time from server\n", 255);
  EXPECT_EQ(server.requests(), 10);
  EXPECT_EQ(simulation.CallsOf("CorvaneAPISetTimingTime"), 0);
  EXPECT_EQ(simulation.Calls().back(), "CorvaneAPIUninitialize");
}

// Nothing in an answer is checked: what did not come reads as 0, which is no middle of a second. A
// flood is as good as its first datagram.
TEST(TimeFromNetwork, TakesABrokenServerAsItIs) {
  const Simulation simulation(Devices({kGps}));
  const Server server([](int socket, const sockaddr_in& to, int request) {
    if (request == 1) Send(socket, to, "", 0);
    if (request == 2) Send(socket, to, "garbage", 7);
    if (request == 3) SendTime(socket, to, kSeconds, kMiddle, 44);
    for (int i = 0; request == 4 && i < 2000; ++i) SendTime(socket, to, kSeconds, kMiddle);
  });
  NEEDS_PORT(server);
  ExpectTimes(simulation, Command(), std::string(kObtained) + "Time updated\n", 0);
  EXPECT_EQ(server.requests(), 4);
}

TEST(TimeFromNetwork, SaysWhenTheNameDoesNotResolve) {
  const Simulation simulation(Devices({kGps}));
  const Result result = simulation.Run("timing setsntp --sntpserver name.invalid");
  std::string expected;
  for (int i = 0; i < 10; ++i) expected += "Failed to get time from SNTP, retrying\n";
  EXPECT_EQ(result.out, expected + "SNTP : Failed to get time from server\n");
  EXPECT_EQ(result.status, 255);
}

}  // namespace
