#include "support/expectations.h"

std::string OneDevice(uint32_t capabilities, const std::string& more) {
  return DeviceToml("00:1a:2b:3c:4d:5e", capabilities, more);
}

std::string Hex(uint64_t number, int bytes) {
  std::string digits;
  for (; bytes > 0; --bytes, number >>= 8) {
    for (const uint64_t digit : {number >> 4, number}) digits += "0123456789abcdef"[digit & 15];
  }
  return digits;
}

std::string Sent(const Simulation& simulation, const std::string& function) {
  const auto lines = simulation.Lines("CorvaneAPI" + function);
  const size_t at = lines.empty() ? std::string::npos : lines.back().find(" record=");
  if (at == std::string::npos) return "nothing";
  return lines.back().substr(at + 8, lines.back().rfind(' ') - at - 8);
}
