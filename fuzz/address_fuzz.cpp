// Every address parser on one text: what is refused leaves the records alone; what is accepted
// touches its own fields only and comes back as a text that parses to the same bytes.
#include <cstring>
#include <regex>

#include "filter/address_wildcard.h"
#include "require.h"

using namespace corvane;

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

const auto kFilter = Filled<PacketFilterRecord>();
const auto kCounter = Filled<CounterV2Config>();

void CheckMac(const std::string& text, bool is_source) {
  static const std::regex mac(R"((([0-9A-Fa-f]{2}|\*)[:-]){5}([0-9A-Fa-f]{2}|\*))");
  PacketFilterRecord filter = kFilter;
  const bool accepted = ParseMacWildcard(text, filter, is_source);
  Require(accepted == (text.size() < 20 && std::regex_match(text, mac)));
  if (!accepted) return Require(Same(filter, kFilter));
  PacketFilterRecord again = kFilter;
  Require(ParseMacWildcard(FormatMacWildcard(filter, is_source), again, is_source));
  Require(Same(filter, again));
  Require(FormatMacWildcard(filter, !is_source) == FormatMacWildcard(kFilter, !is_source));
}

// A byte that is not wholly significant shows as a wildcard, so its value does not come back.
void CheckFilterIp(const std::string& text, bool is_source, int version) {
  PacketFilterRecord filter = kFilter;
  if (!SetFilterIpWildcard(text, filter, is_source, version)) return Require(Same(filter, kFilter));
  const std::string shown = FormatFilterIpWildcard(filter, is_source, version);
  PacketFilterRecord again = kFilter;
  Require(SetFilterIpWildcard(shown, again, is_source, version));
  Require(FormatFilterIpWildcard(again, is_source, version) == shown);
  auto* const slot = is_source ? again.src_ip : again.dst_ip;
  memcpy(slot, is_source ? filter.src_ip : filter.dst_ip, sizeof again.src_ip);
  Require(Same(filter, again));
}

void CheckCounterIp(const std::string& text, int version) {
  CounterV2Config counter = kCounter;
  if (!SetCounterIpWildcard(text, counter, version)) return Require(Same(counter, kCounter));
  const std::string shown = FormatCounterIpWildcard(counter, version);
  CounterV2Config again = kCounter;
  Require(SetCounterIpWildcard(shown, again, version));
  for (int i = 0; i < 16; ++i) {
    const bool exact = counter.mask[i] == 0xFF;
    Require(again.mask[i] == (exact ? 0xFF : 0x00));
    Require(!exact || again.address[i] == counter.address[i]);
  }
  const bool ipv4 = text.find('.') != std::string::npos;
  Require(ipv4 ? version != kIpv4 || shown == text : text.size() == 39);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A word of a command line ends at its first NUL.
  const auto* characters = reinterpret_cast<const char*>(data);
  const std::string text(characters, strnlen(characters, size));
  for (const bool is_source : {false, true}) {
    CheckMac(text, is_source);
    for (const int version : {0, kIpv4, kIpv6}) CheckFilterIp(text, is_source, version);
  }
  for (const int version : {0, kIpv4, kIpv6}) CheckCounterIp(text, version);
  return 0;
}
