// timing setsystem, and timing setsntp with a time server of the test's own.
#include "device/capabilities.h"
#include "support/golden.h"
#include "support/time_server.h"

namespace {

// The simulator keeps how far the device's clock is from the host's, in nanoseconds.
TEST(TimeSetting, SetsTheSystemsTime) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS));
  EXPECT_EQ(simulation.Run("timing setsystem").out, "Time updated\n");
  EXPECT_TRUE(Sent(simulation, "SetTimingTime").starts_with(Hex(0, 4)));
  const Result offset = Shell(simulation,
                              "sqlite3 state/devices.db \"SELECT hex(bytes) FROM fact "
                              "WHERE name = 'clock_offset'\"");
  const auto ns = static_cast<int64_t>(__builtin_bswap64(std::stoull(offset.out, nullptr, 16)));
  EXPECT_LT(std::abs(ns), 500'000'000) << offset.out << offset.err;
}

// Without a line about the device's selection.
void ExpectTimes(const Simulation& simulation, const std::string& more, const std::string& out,
                 int status) {
  const std::string words = "timing setsntp --sntpserver " + ServerAddress();
  const Result result = simulation.Run(words + more);
  EXPECT_EQ(result.out, out);
  EXPECT_EQ(result.status, status);
}

#define NEEDS_PORT(server) \
  if (!(server).bound) GTEST_SKIP() << "UDP port 123 of the loopback is not to be had"

TEST(TimeFromNetwork, AsksForTheMiddleOfASecond) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS) + DeviceToml("00:00:00:00:00:01", 0));
  const TimeServer server([](int socket, const sockaddr_in& to, int request) {
    if (request == 1) usleep(60'000);
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

// Nothing in an answer is checked: what did not come reads as 0, which is no middle of a second. A
// flood is as good as its first datagram.
TEST(TimeFromNetwork, TakesABrokenServerAsItIs) {
  const Simulation simulation(OneDevice(CORVANE_CAP_GPS));
  const TimeServer server([](int socket, const sockaddr_in& to, int request) {
    if (request <= 3) SendTime(socket, to, kMiddle, request == 3 ? 44 : request == 2 ? 7 : 0);
    for (int i = 0; request == 4 && i < 2000; ++i) SendTime(socket, to, kMiddle);
  });
  NEEDS_PORT(server);
  ExpectTimes(simulation, "", "SNTP : time obtained from server\nTime updated\n", 0);
  EXPECT_EQ(server.requests, 4);
}

}  // namespace
