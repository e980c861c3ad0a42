// Every address parser on one text: what is refused leaves the record alone; what is accepted comes
// back as a text that is accepted too and comes back the same.
#include <cstring>

#include "filter/address_wildcard.h"
#include "require.h"

using namespace corvane;

namespace {

template <class Record, class Parse, class Format>
void Check(Parse parse, Format format) {
  Record before;
  memset(&before, 0x5A, sizeof before);
  Record record = before;
  if (!parse(nullptr, record)) return Require(memcmp(&record, &before, sizeof record) == 0);
  const std::string shown = format(record);
  Record again = before;
  Require(parse(shown.c_str(), again) && format(again) == shown);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // A word of a command line ends at its first NUL.
  const auto* characters = reinterpret_cast<const char*>(data);
  const std::string input(characters, strnlen(characters, size));
  const auto text = [&](const char* shown) { return shown == nullptr ? input : shown; };
  for (const bool source : {false, true}) {
    Check<PacketFilterRecord>(
        [&](auto* shown, auto& record) { return ParseMacWildcard(text(shown), record, source); },
        [&](auto& record) { return FormatMacWildcard(record, source); });
  }
  for (const int version : {0, kIpv4, kIpv6}) {
    for (const bool source : {false, true}) {
      Check<PacketFilterRecord>(
          [&](auto* shown, auto& r) {
            return SetFilterIpWildcard(text(shown), r, source, version);
          },
          [&](auto& record) { return FormatFilterIpWildcard(record, source, version); });
    }
    Check<CounterV2Config>(
        [&](auto* shown, auto& r) { return SetCounterIpWildcard(text(shown), r, version); },
        [&](auto& record) { return FormatCounterIpWildcard(record, version); });
  }
  return 0;
}
