// A minimal SNTP client (RFC 4330): one request, one answer, no filtering of clocks.
#pragma once

#include <cstdint>

namespace corvane {

inline constexpr int kSntpPacketSize = 48;  // octets of an NTP packet without authentication

inline constexpr int kSntpTimeout = -1;  // no answer within 0.2 s
inline constexpr int kSntpSelectFailed = -2;

// Asks the server, a host name or an IPv4 address, for the time and waits 0.2 s for its answer.
// Returns 0 with seconds (Unix time, modulo 2^32) and nanoseconds filled, a resolver's error code
// (EAI_...) or a negative number. Prints one word when the answer does not come. Of several IPv4
// addresses the last counts. For a name without one nothing is sent (an address that is all zero
// fails with EINVAL), and the query times out. The answer is taken as it is, however short: octets
// that did not come read as 0. Every call leaves one socket open.
int QuerySntp(const char* server, uint32_t& seconds, uint32_t& nanoseconds);

// The request: leap indicator 3 (unknown), version 3, mode 3 (client), poll exponent 10, else 0.
void MakeSntpRequest(uint8_t (&packet)[kSntpPacketSize]);

// The transmit timestamp (octets 40 to 47, RFC 4330 section 3) as Unix seconds, which wrap like the
// era does, and nanoseconds. The fraction goes through single precision: about 60 ns resolution.
void ReadSntpTime(const uint8_t (&packet)[kSntpPacketSize], uint32_t& seconds,
                  uint32_t& nanoseconds);

}  // namespace corvane
