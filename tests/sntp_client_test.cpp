// The arithmetic of the SNTP client; its network side is tested with the command that uses it.
#include "timing/sntp_client.h"

#include <gtest/gtest.h>

#include <cstring>

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

// Nothing can be sent then.
TEST(SntpClient, WaitsInVainForANameWithoutIpv4) {
  uint32_t seconds = 7, nanoseconds = 7;
  testing::internal::CaptureStdout();
  EXPECT_EQ(QuerySntp("::1", seconds, nanoseconds), kSntpTimeout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Timeout..\n");
  EXPECT_EQ(seconds, 7U);
}

}  // namespace
