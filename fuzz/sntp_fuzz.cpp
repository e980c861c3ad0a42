// An SNTP answer of any 48 octets: the seconds are exact, the nanoseconds as near as single
// precision comes.
#include <arpa/inet.h>

#include <cstdlib>
#include <cstring>

#include "require.h"
#include "timing/sntp_client.h"

using namespace corvane;

namespace {

constexpr uint32_t kUnixEpoch = 2208988800;  // seconds since 1900
constexpr int64_t kRounding = 31;            // ns: half a unit in the last place, and truncation

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  uint8_t packet[kSntpPacketSize] = {};
  if (size > 0) memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  uint32_t seconds = 0;
  uint32_t nanoseconds = 0;
  ReadSntpTime(packet, seconds, nanoseconds);
  uint32_t sent[2];
  memcpy(sent, packet + 40, sizeof sent);
  Require(ntohl(sent[0]) - kUnixEpoch == seconds);
  const auto exact = static_cast<int64_t>(uint64_t{ntohl(sent[1])} * 1'000'000'000 >> 32);
  Require(llabs(exact - int64_t{nanoseconds}) <= kRounding);
  // A fraction next to 1 may round up to the whole second.
  Require(nanoseconds <= 1'000'000'000);
  return 0;
}
