#include "filter/address_wildcard.h"

#include <arpa/inet.h>

#include <cstdio>
#include <cstring>

namespace corvane {

namespace {

constexpr int kIpv6TextLength = 39;
constexpr int kSourceMaskShift = 6;  // mac_masks: the source's bits stand above the destination's

// The address bytes that a parser fills, in the order of the text.
struct WorkArea {
  uint8_t value[16] = {};
  uint8_t mask[16] = {};
};

constexpr int AddressSize(int version) {
  return version == kIpv4 ? 4 : 16;
}

bool IsHexDigit(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

// 0 for a character that is no hexadecimal digit.
unsigned HexValue(char c) {
  if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A' + 10);
  return 0;
}

char CharacterAt(const std::string& text, size_t position) {
  return position < text.size() ? text[position] : '\0';
}

// Matches ^(([0-9A-Fa-f]{2}|\*)[:-]){5}([0-9A-Fa-f]{2}|\*)$ by hand: std::regex takes 0.1 ms to
// compile it.
bool IsMacWildcard(const std::string& text) {
  size_t p = 0;
  for (int group = 0; group < CORVANE_MAC_SIZE; ++group) {
    if (group > 0) {
      const char separator = CharacterAt(text, p++);
      if (separator != ':' && separator != '-') return false;
    }
    if (CharacterAt(text, p) == '*') {
      p += 1;
    } else if (IsHexDigit(CharacterAt(text, p)) && IsHexDigit(CharacterAt(text, p + 1))) {
      p += 2;
    } else {
      return false;
    }
  }
  return p == text.size();
}

bool IsIpv6Character(char c) {
  return IsHexDigit(c) || c == ':' || c == '*';
}

// One group of an IPv6 text while it is read, most significant nibble first or last.
struct Group {
  unsigned value = 0;
  unsigned mask = 0xFFFF;
  int count = 0;

  void PushRight(char c) {
    value = (value << 4 | HexValue(c)) & 0xFFFF;
    mask = (mask << 4 | (c == '*' ? 0x0U : 0xFU)) & 0xFFFF;
    ++count;
  }
  void PushLeft(char c) {
    value = value >> 4 | HexValue(c) << 12;
    mask = mask >> 4 | (c == '*' ? 0x0U : 0xF000U);
    ++count;
  }
  bool TooLong() const { return count > 4; }
  void Store(uint8_t* values, uint8_t* masks) const {
    values[0] = static_cast<uint8_t>(value >> 8);
    values[1] = static_cast<uint8_t>(value);
    masks[0] = static_cast<uint8_t>(mask >> 8);
    masks[1] = static_cast<uint8_t>(mask);
  }
};

enum class Pass : uint8_t { kAccepted, kRejected, kGoBackward };

// Fills from byte 0 up to the end of the text or to a "::".
Pass ParseForward(const std::string& text, uint8_t* value, uint8_t* mask) {
  bool colon_seen = false;
  int byte = 0;
  for (size_t p = 0; p < text.size();) {
    if (!IsIpv6Character(text[p])) return Pass::kRejected;
    if (text[p] == ':') {
      if (colon_seen) return Pass::kGoBackward;
      colon_seen = true;
      ++p;
      byte += 2;
      continue;
    }
    colon_seen = false;
    Group group;
    for (; p < text.size() && text[p] != ':'; ++p) {
      group.PushRight(text[p]);
      if (group.TooLong()) return Pass::kRejected;
    }
    if (byte > 14) return Pass::kRejected;
    group.Store(value + byte, mask + byte);
  }
  return colon_seen ? Pass::kGoBackward : Pass::kAccepted;
}

// Fills from byte 15 down to a "::". A group of fewer than four characters ends up in the high
// nibbles, as devices expect it.
bool ParseBackward(const std::string& text, uint8_t* value, uint8_t* mask) {
  const char* const characters = text.data();
  bool colon_seen = false;
  int byte = 15;
  int p = static_cast<int>(text.size()) - 1;
  while (p >= 0) {
    if (!IsIpv6Character(characters[p])) return false;
    if (characters[p] == ':') {
      if (colon_seen) return true;
      colon_seen = true;
      --p;
      byte -= 2;
      continue;
    }
    colon_seen = false;
    Group group;
    for (; p >= 0 && characters[p] != ':'; --p) {
      group.PushLeft(characters[p]);
      if (group.TooLong()) return false;
    }
    if (byte < 1) return false;
    group.Store(value + byte - 1, mask + byte - 1);
  }
  return true;
}

uint8_t* MacSlot(PacketFilterRecord& record, bool is_source) {
  return is_source ? record.src_mac : record.dst_mac;
}

int MaskShift(bool is_source) {
  return is_source ? kSourceMaskShift : 0;
}

}  // namespace

bool ParseMacWildcard(const std::string& text, PacketFilterRecord& record, bool is_source) {
  if (!IsMacWildcard(text)) return false;
  uint8_t* slot = MacSlot(record, is_source);
  const int shift = MaskShift(is_source);
  memset(slot, 0, CORVANE_MAC_SIZE);
  unsigned masks = record.mac_masks & ~(0x3FU << shift);
  size_t p = 0;
  for (int byte = CORVANE_MAC_SIZE - 1; byte >= 0; --byte) {
    if (text[p] == '*') {
      p += 2;
      continue;
    }
    slot[byte] = static_cast<uint8_t>(HexValue(text[p]) << 4 | HexValue(text[p + 1]));
    masks |= 1U << (byte + shift);
    p += 3;
  }
  record.mac_masks = static_cast<uint16_t>(masks);
  return true;
}

std::string FormatMacWildcard(const PacketFilterRecord& record, bool is_source) {
  const uint8_t* slot = is_source ? record.src_mac : record.dst_mac;
  std::string text;
  for (int byte = CORVANE_MAC_SIZE - 1; byte >= 0; --byte) {
    char group[4] = "*";
    if ((record.mac_masks >> (byte + MaskShift(is_source)) & 1) != 0) {
      snprintf(group, sizeof group, "%02hhx", slot[byte]);
    }
    text += group;
    if (byte > 0) text += ':';
  }
  return text;
}

bool ParseIpv4Wildcard(const std::string& text, uint8_t* value, uint8_t* mask) {
  if (text.size() < 7 || text.size() > 15) return false;
  std::string values;
  std::string masks;
  bool in_number = false;
  for (const char c : text) {
    if (c == '.' || c == '*') {
      values += c == '.' ? '.' : '0';
      masks += c == '.' ? '.' : '0';
      if (c == '.') in_number = false;
      continue;
    }
    values += c;
    if (!in_number) masks += "255";
    in_number = true;
  }
  return inet_pton(AF_INET, values.c_str(), value) == 1 &&
         inet_pton(AF_INET, masks.c_str(), mask) == 1;
}

bool ParseIpv6Wildcard(const std::string& text, uint8_t* value, uint8_t* mask) {
  if (text.size() != kIpv6TextLength) return false;
  memset(value, 0x00, 16);
  memset(mask, 0xFF, 16);
  const Pass forward = ParseForward(text, value, mask);
  if (forward != Pass::kGoBackward) return forward == Pass::kAccepted;
  return ParseBackward(text, value, mask);
}

bool ParseIpWildcard(const std::string& text, uint8_t* value, uint8_t* mask, int /*version*/) {
  return text.find('.') != std::string::npos ? ParseIpv4Wildcard(text, value, mask)
                                             : ParseIpv6Wildcard(text, value, mask);
}

bool SetFilterIpWildcard(const std::string& text, PacketFilterRecord& record, bool is_source,
                         int version) {
  WorkArea work;
  if (!ParseIpWildcard(text, work.value, work.mask, version)) return false;
  uint8_t* slot = is_source ? record.src_ip : record.dst_ip;
  unsigned slot_mask = 0;
  memset(slot, 0, sizeof record.src_ip);
  const int size = AddressSize(version);
  for (int i = 0; i < size; ++i) {
    slot[size - 1 - i] = work.value[i];
    if (work.mask[i] == 0xFF) slot_mask |= 1U << (size - 1 - i);
  }
  (is_source ? record.src_ip_mask : record.dst_ip_mask) = static_cast<uint16_t>(slot_mask);
  return true;
}

bool SetCounterIpWildcard(const std::string& text, CounterV2Config& record, int version) {
  WorkArea work;
  if (!ParseIpWildcard(text, work.value, work.mask, version)) return false;
  memset(record.address, 0, sizeof record.address);
  memset(record.mask, 0, sizeof record.mask);
  const int size = AddressSize(version);
  for (int i = 0; i < size; ++i) {
    record.address[size - 1 - i] = work.value[i];
    record.mask[size - 1 - i] = work.mask[i];
  }
  return true;
}

std::string FormatIpWildcard(const uint8_t* value, const uint8_t* mask, int version) {
  const bool ipv4 = version == kIpv4;
  std::string text;
  for (int byte = AddressSize(version) - 1; byte >= 0; --byte) {
    char number[4];
    snprintf(number, sizeof number, ipv4 ? "%d" : "%02x", value[byte]);
    const char* wildcard = ipv4 ? "*" : "**";
    text += mask[byte] == 0xFF ? number : wildcard;
    if (byte > 0 && (ipv4 || byte % 2 == 0)) text += ipv4 ? '.' : ':';
  }
  return text;
}

std::string FormatFilterIpWildcard(const PacketFilterRecord& record, bool is_source, int version) {
  const unsigned bits = is_source ? record.src_ip_mask : record.dst_ip_mask;
  uint8_t mask[16] = {};
  for (int byte = 0; byte < AddressSize(version); ++byte) {
    if ((bits >> byte & 1) != 0) mask[byte] = 0xFF;
  }
  return FormatIpWildcard(is_source ? record.src_ip : record.dst_ip, mask, version);
}

std::string FormatCounterIpWildcard(const CounterV2Config& record, int version) {
  return FormatIpWildcard(record.address, record.mask, version);
}

bool IsIpText(const std::string& text) {
  return text.find_first_not_of("0123456789abcdefABCDEF:.*") == std::string::npos;
}

std::string SameFilterIp(const PacketFilterRecord& record, bool is_source) {
  const unsigned bits = is_source ? record.src_ip_mask : record.dst_ip_mask;
  constexpr int kRest = 12;  // bytes that an IPv4 text leaves alone
  if ((bits & ((1U << kRest) - 1)) != 0) return FormatFilterIpWildcard(record, is_source, kIpv6);
  uint8_t mask[4];
  for (int byte = 0; byte < 4; ++byte) mask[byte] = (bits >> (byte + kRest) & 1) != 0 ? 0xFF : 0;
  return FormatIpWildcard((is_source ? record.src_ip : record.dst_ip) + kRest, mask, kIpv4);
}

std::string SameCounterIp(const CounterV2Config& record, int version) {
  if (version == kIpv4) return FormatIpWildcard(record.address, record.mask, version);
  std::string text;
  for (int byte = 15; byte >= 0; --byte) {
    for (const int shift : {4, 0}) {
      const bool counts = (record.mask[byte] >> shift & 0xF) == 0xF;
      text += counts ? "0123456789abcdef"[record.address[byte] >> shift & 0xF] : '*';
    }
    if (byte > 0 && byte % 2 == 0) text += ':';
  }
  return text;
}

}  // namespace corvane
