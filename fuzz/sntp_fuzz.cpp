// An SNTP answer of any 48 octets: the seconds are exact, the nanoseconds as near as single
// precision comes.
#include <cstdlib>
#include <cstring>

#include "require.h"
#include "timing/sntp_client.h"

namespace {

constexpr uint32_t kUnixEpoch = 2208988800;  // seconds since 1900
constexpr int64_t kRounding = 31;            // ns: half a unit in the last place, and truncation

uint32_t BigEndian(const uint8_t* octets) {
  uint32_t word = 0;
  for (int i = 0; i < 4; ++i) word = word << 8 | octets[i];
  return word;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  uint8_t packet[kSntpPacketSize] = {};
  if (size > 0) memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  uint32_t seconds = 0;
  uint32_t nanoseconds = 0;
  ReadSntpTime(packet, seconds, nanoseconds);
  Require(BigEndian(packet + 40) - kUnixEpoch == seconds);
  const uint64_t fraction = BigEndian(packet + 44);
  const auto exact = static_cast<int64_t>(fraction * 1'000'000'000 >> 32);
  Require(llabs(exact - int64_t{nanoseconds}) <= kRounding);
  // A fraction next to 1 may round up to the whole second.
  Require(nanoseconds <= 1'000'000'000);
  return 0;
}
