// Addresses as texts: those that select a device, and those that come back as they were given.
#include <random>

#include "device/capabilities.h"
#include "device/selection.h"
#include "support/expectations.h"

using namespace corvane;

namespace {

TEST(ParseMac, WantsSixFields) {
  uint8_t mac[6];
  EXPECT_EQ(ParseMac("00:1A:2b:3c:4D:5e rest", mac), 0);
  EXPECT_EQ(memcmp(mac, "\0\x1A\x2B\x3C\x4D\x5E", sizeof mac), 0);
  for (const char* text : {"", "00:1a:2b:3c:4d", "00-1a-2b-3c-4d-5e", "g0:1a:2b:3c:4d:5e"}) {
    EXPECT_EQ(ParseMac(text, mac), -1) << text;
    EXPECT_EQ(memcmp(mac, "\0\0\0\0\0", sizeof mac), 0) << text;
  }
}

std::string Generate(std::mt19937& random, int groups, const char* separator, const char* format) {
  std::string text;
  for (int group = 0; group < groups; ++group) {
    char number[4];
    snprintf(number, sizeof number, format, static_cast<unsigned>(random() % 256));
    text += (group > 0 ? separator : "") + std::string(random() % 3 == 0 ? "*" : number);
  }
  return text;
}

TEST(Wildcards, ComeBackAsTheyWereGiven) {
  std::mt19937 random(826);
  const Simulation simulation(OneDevice(~0U));
  for (int i = 0; i < 20; ++i) {
    const std::string source = Generate(random, 6, ":", "%02x");
    const std::string destination = Generate(random, 6, ":", "%02x");
    const std::string ip = Generate(random, 4, ".", "%u");
    simulation.Run({"filter", "set", "--srcmac", source, "--dstmac", destination});
    simulation.Run({"statsv2", "set", "--counter=1", "--ipv4=on", "--ipv4_addr", ip});
    const std::string shown =
        simulation.Run("filter show").out.append(simulation.Run("statsv2 show").out);
    for (const std::string& line : {"\tSource MAC: " + source, "\tDestination MAC: " + destination,
                                    "\t\tIP address: " + ip}) {
      EXPECT_NE(shown.find(line + "\n"), std::string::npos) << line;
    }
  }
}

}  // namespace
