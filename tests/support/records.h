// Records given to the simulator as they are, and the reports expected of them.
#pragma once

#include "device/corvane_api.h"
#include "support/expectations.h"

// `name = "hexadecimal digits"` for a device table: the simulator serves the record byte for byte.
template <class Record>
std::string RawToml(const std::string& name, const Record& record) {
  uint8_t bytes[sizeof record];
  memcpy(bytes, &record, sizeof record);
  std::string hex;
  for (const uint8_t byte : bytes) hex += Hex(byte, 1);
  return name + " = \"" + hex + "\"\n";
}

inline std::string GoldenReport(const std::string& name) {
  return ReadFile(std::string(CORVANE_GOLDEN) + "/report/" + name + ".txt");
}
