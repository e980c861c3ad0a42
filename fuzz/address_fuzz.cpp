// Every address parser on one text: what is refused leaves the records alone, what is accepted
// comes back as a text that parses to the same bytes.
#include <cstring>

#include "filter/address_wildcard.h"
#include "require.h"

namespace {

template <class Record>
bool Same(const Record& one, const Record& other) {
  return memcmp(&one, &other, sizeof one) == 0;
}

template <class Record>
Record Filled() {
  Record record;
  memset(&record, 0x5A, sizeof record);
  return record;
}

void CheckMac(const std::string& text, bool is_source) {
  auto record = Filled<PacketFilterRecord>();
  if (!ParseMacWildcard(text, record, is_source)) {
    Require(Same(record, Filled<PacketFilterRecord>()));
    return;
  }
  auto again = Filled<PacketFilterRecord>();
  Require(ParseMacWildcard(FormatMacWildcard(record, is_source), again, is_source));
  Require(Same(record, again));
}

void CheckFilterIp(const std::string& text, bool is_source, int version) {
  auto record = Filled<PacketFilterRecord>();
  const bool accepted = SetFilterIpWildcard(text, record, is_source, version);
  Require(accepted || Same(record, Filled<PacketFilterRecord>()));
  FormatFilterIpWildcard(record, is_source, version);
}

void CheckCounterIp(const std::string& text, int version) {
  auto record = Filled<CounterV2Config>();
  if (!SetCounterIpWildcard(text, record, version)) {
    Require(Same(record, Filled<CounterV2Config>()));
    return;
  }
  const std::string formatted = FormatCounterIpWildcard(record, version);
  // A whole IPv4 address comes back as it was; an IPv6 one loses single wildcard nibbles.
  const bool ipv4 = text.find('.') != std::string::npos;
  if (ipv4 && version == kIpv4) Require(formatted == text);
  if (version == kIpv6) Require(formatted.size() == 39);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A word of a command line ends at its first NUL.
  const auto* characters = reinterpret_cast<const char*>(data);
  const std::string text(characters, strnlen(characters, size));
  uint8_t value[16];
  uint8_t mask[16];
  ParseIpv4Wildcard(text, value, mask);
  ParseIpv6Wildcard(text, value, mask);
  for (const bool is_source : {false, true}) {
    CheckMac(text, is_source);
    for (const int version : {0, kIpv4, kIpv6}) CheckFilterIp(text, is_source, version);
  }
  CheckCounterIp(text, kIpv4);
  CheckCounterIp(text, kIpv6);
  return 0;
}
