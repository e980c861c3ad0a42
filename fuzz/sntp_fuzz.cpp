// An SNTP answer of any 48 octets.
#include <cstring>

#include "require.h"
#include "timing/sntp_client.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  uint8_t packet[kSntpPacketSize] = {};
  if (size > 0) memcpy(packet, data, size < sizeof packet ? size : sizeof packet);
  uint32_t seconds = 0;
  uint32_t nanoseconds = 0;
  ReadSntpTime(packet, seconds, nanoseconds);
  // A fraction next to 1 may round up to the whole second.
  Require(nanoseconds <= 1'000'000'000);
  return 0;
}
