// MAC and IP wildcards: texts, value and mask bytes, formats.
#include "filter/address_wildcard.h"

#include <gtest/gtest.h>

#include <random>
#include <regex>

#include "support/simulation.h"

namespace {

std::string Hex(const uint8_t (&bytes)[16]) {
  char text[33];
  for (size_t i = 0; i < 16; ++i) snprintf(text + 2 * i, 3, "%02x", bytes[i]);
  return text;
}

// A MAC wildcard with up to two faults.
std::string NearlyMac(std::mt19937& random) {
  std::string text;
  for (int group = 0; group < CORVANE_MAC_SIZE; ++group) {
    if (group > 0) text += ":-"[random() % 2];
    text += random() % 3 == 0 ? "*" : std::string{"09afAF"[random() % 6], "19beBE"[random() % 6]};
  }
  for (auto faults = random() % 3; faults > 0; --faults) {
    text.replace(random() % text.size(), random() % 2, random() % 2, "0gG*:-. "[random() % 8]);
  }
  return text;
}

TEST(MacWildcard, TakesExactlyWhatTheExpressionMatches) {
  const std::regex expression(R"(^(([0-9A-Fa-f]{2}|(\*))[:-]){5}(([0-9A-Fa-f]{2})|(\*))$)");
  std::mt19937 random(1588);
  int accepted = 0;
  for (int i = 0; i < 6000; ++i) {
    const std::string text = i == 0 ? "" : NearlyMac(random);
    PacketFilterRecord record = {.src_mac = {0, 0, 0, 0, 0, 0x22}};
    const bool matches = std::regex_match(text, expression);
    ASSERT_EQ(ParseMacWildcard(text, record, true), matches) << text;
    ASSERT_EQ(record.src_mac[5] != 0x22, matches) << text;
    accepted += matches ? 1 : 0;
  }
  EXPECT_NEAR(accepted, 2500, 1200);
}

TEST(IpWildcard, IsStoredReversedInTheArrangementOfTheVersion) {
  const std::tuple<const char*, int, const char*, const char*> cases[] = {
      {"1.2.3.4", 4, "04030201000000000000000000000000 ffffffff000000000000000000000000",
       "1.2.3.4"},
      {"255.255.255.255", 4, "ffffffff000000000000000000000000 ffffffff000000000000000000000000",
       "255.255.255.255"},
      {"AB*1:0db8:****:0000:0000:0000:0000:000*", 6,
       "000000000000000000000000b80d01ab f0ffffffffffffffffff0000ffff0fff",
       "ab**:0db8:****:0000:0000:0000:0000:00**"},
      // Only the character of a group that is read first must be a digit.
      {"12g4:1-_x:3333:4444:5555:6666:7777:1*::", 6,
       "10007777666655554444333300100412 f0ffffffffffffffffffffffffffffff",
       "1204:1000:3333:4444:5555:6666:7777:00**"},
      // Behind the last "::" groups are left-aligned; what stands between two is not read.
      {"1111:2222::is:never:read:here::*777:gef", 6,
       "f00e7707000000000000000022221111 ffffff0fffffffffffffffffffffffff",
       "1111:2222:0000:0000:0000:0000:**77:0ef0"}};
  for (const auto& [text, version, address_and_mask, shown] : cases) {
    CounterV2Config counter = {.address = {1, 1, 1, 1, 1, 1}, .mask = {0, 0, 0, 0, 1, 1}};
    EXPECT_TRUE(SetCounterIpWildcard(text, counter, version));
    EXPECT_EQ(Hex(counter.address) + " " + Hex(counter.mask), address_and_mask) << text;
    EXPECT_EQ(FormatCounterIpWildcard(counter, version), shown);
    PacketFilterRecord filter = {.src_ip = {1, 1, 1, 1, 1, 1}, .src_ip_mask = 0xFFFF};
    EXPECT_TRUE(SetFilterIpWildcard(text, filter, true, version));
    EXPECT_EQ(Hex(filter.src_ip), Hex(counter.address));
    for (int i = 0; i < 16; ++i) EXPECT_EQ(filter.src_ip_mask >> i & 1, counter.mask[i] == 0xFF);
    EXPECT_EQ(FormatFilterIpWildcard(filter, true, version), shown);
  }
}

TEST(IpWildcard, RefusesEverythingElseAndLeavesTheRecordAlone) {
  PacketFilterRecord filter = {.dst_ip = {1}, .dst_ip_mask = 1};
  CounterV2Config counter = {.address = {1}, .mask = {1}};
  for (const std::string& text : Split(R"(
      1.2.3 1.2.3.4.5 1*.2.3.4 *1.2.3.4 **.2.3.4 01.2.3.4 256.1.1.1 1..2.3.4 1.2.3.a .1.2.3.4
      1.2.3.4. *.*.*.*. 255.255.255.2555 *****.*.*.* 12.4:2222:3333:4444:5555:6666:7777:8888 ::1
      1111:2222:3333:4444:5555:6666:7777:888 1111:2222:3333:4444:5555:6666:7777:88888
      11111:222:3333:4444:5555:6666:7777:8888 1:2222:3333:4444:5555:6666:7777:8888:99
      1111:2222:3333:4444:5555:6666:7777:-888 1111:2222:3333:4444:5555:6666:7777:888:
      1111:2222:3333:4444:5555:6666::77777:de 1111:2222:3333:4444:5555:6666::7777:feg)")) {
    EXPECT_FALSE(SetFilterIpWildcard(text, filter, false, 0)) << text;
    EXPECT_FALSE(SetCounterIpWildcard(text, counter, kIpv6)) << text;
  }
  EXPECT_EQ(filter.dst_ip[0] + filter.dst_ip_mask + counter.address[0] + counter.mask[0], 4);
}

}  // namespace
