// MAC and IP wildcards: texts, value and mask bytes, formats.
#include "filter/address_wildcard.h"

#include "support/expectations.h"

using namespace corvane;

namespace {

std::string Digits(const uint8_t (&bytes)[16]) {
  std::string digits;
  for (const uint8_t byte : bytes) digits += Hex(byte, 1);
  return digits;
}

TEST(MacWildcard, IsSixGroupsOfTwoDigitsOrAWildcard) {
  std::vector<std::string> texts = Split(R"(
      09:aF-*:*-Be:01 *-*-*:*:*:* 00:1a:2b:3c:4d:5e
      00:1a:2b:3c:4d 00:1a:2b:3c:4d: :00:1a:2b:3c:4d:5e 00:1a:2b:3c:4d:5e: 00:1a:2b:3c:4d:5e:6f
      0:1a:2b:3c:4d:5e 00:1a:2b:3c:4d:5 001:a:2b:3c:4d:5e 00:1a:2b:3c:4d:5ef 00:1a::2b:3c:4d:5e
      00:**:2b:3c:4d:5e 00:*a:2b:3c:4d:5e 00:a*:2b:3c:4d:5e 0g:1a:2b:3c:4d:5e g0:1a:2b:3c:4d:5e
      00.1a:2b:3c:4d:5e 00:1a:2b:3c:4d.5e -1:1a:2b:3c:4d:5e +1:1a:2b:3c:4d:5e 001a2b3c4d5e * -)");
  texts.insert(texts.end(), {"", " 0:1a:2b:3c:4d:5e", "00:1a:2b:3c:4d:5e "});
  for (size_t i = 0; i < texts.size(); ++i) {
    PacketFilterRecord record = {.src_mac = {0, 0, 0, 0, 0, 0x22}};
    EXPECT_EQ(ParseMacWildcard(texts[i], record, true), i < 3) << texts[i];
    EXPECT_EQ(record.src_mac[5] != 0x22, i < 3) << texts[i];
  }
}

TEST(IpWildcard, IsStoredReversedInTheArrangementOfTheVersion) {
  const std::tuple<const char*, int, const char*, const char*> cases[] = {
      {"1.255.*.4", 4, "0400ff01000000000000000000000000 ff00ffff000000000000000000000000",
       "1.255.*.4"},
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
    EXPECT_EQ(Digits(counter.address) + " " + Digits(counter.mask), address_and_mask) << text;
    EXPECT_EQ(FormatCounterIpWildcard(counter, version), shown);
    PacketFilterRecord filter = {.src_ip = {1, 1, 1, 1, 1, 1}, .src_ip_mask = 0xFFFF};
    EXPECT_TRUE(SetFilterIpWildcard(text, filter, true, version));
    EXPECT_EQ(Digits(filter.src_ip), Digits(counter.address));
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
