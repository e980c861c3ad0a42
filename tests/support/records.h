// Records given to the simulator as they are, and the reports expected of them.
#pragma once

#include "device/corvane_api.h"
#include "support/simulation.h"

inline constexpr const char* kMac = "00:1a:2b:3c:4d:5e";

// `name = "hexadecimal digits"` for a device table: the simulator serves the record byte for byte.
template <class Record>
std::string RawToml(const char* name, const Record& record) {
  constexpr const char* kDigits = "0123456789abcdef";
  uint8_t bytes[sizeof record];
  memcpy(bytes, &record, sizeof record);
  std::string hex;
  for (const uint8_t byte : bytes) hex += {kDigits[byte >> 4], kDigits[byte & 15]};
  return std::string(name) + " = \"" + hex + "\"\n";
}

// Every field out of line, so that one written by mistake shows.
template <class Record>
Record Sevens() {
  Record record;
  memset(&record, 7, sizeof record);
  return record;
}

inline std::string GoldenReport(const char* name) {
  return ReadFile(std::string(CORVANE_GOLDEN) + "/report/" + name + ".txt");
}
