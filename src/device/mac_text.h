// A MAC address as people write it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace corvane {

// Six bytes (CORVANE_MAC_SIZE) as "00:1a:2b:3c:4d:5e".
inline std::string MacText(const uint8_t* mac) {
  char text[sizeof "00:00:00:00:00:00"];
  snprintf(text, sizeof text, "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2], mac[3],
           mac[4], mac[5]);
  return text;
}

}  // namespace corvane
