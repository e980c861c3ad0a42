// MAC and IP addresses in which single positions are wildcards, written "*": texts into value bytes
// and masks, and back.
//
//   MAC   six groups of two hexadecimal digits or "*", separated by ":" or "-"
//   IPv4  four decimal groups or "*", separated by "."
//   IPv6  exactly 39 characters, fully expanded; "*" stands for one nibble
//
// Parsers fill value and mask in the order of the text: mask 0xFF for a byte that must match, 0x00
// for a wildcard, a nibble of 0xF and 0x0 each for IPv6. The device records keep addresses
// reversed, the last byte of the text first.
#pragma once

#include <cstdint>
#include <string>

#include "device/corvane_api.h"

namespace corvane {

// An IP version of 4 selects the 4-byte arrangement of an address; any other, 0 included, the
// 16-byte one.
inline constexpr int kIpv4 = 4;
inline constexpr int kIpv6 = 6;

// The source or the destination slot gets the address and its byte mask. False, with the record
// untouched, when the text is not a MAC wildcard.
bool ParseMacWildcard(const std::string& text, PacketFilterRecord& record, bool is_source);

// The address of the slot, lower case, with ":" between the groups.
std::string FormatMacWildcard(const PacketFilterRecord& record, bool is_source);

// 4 value and 4 mask bytes. False when the text is not an IPv4 wildcard; value may then be written.
bool ParseIpv4Wildcard(const std::string& text, uint8_t* value, uint8_t* mask);

// 16 value and 16 mask bytes. False when the text is not an IPv6 wildcard; both may then be
// written. Lenient on purpose: of a group only the character that is read first (after a "::" its
// last one) must be a digit or a wildcard; any other that is neither counts as 0. What stands
// between the first and the last "::" is not read. After a "::" a group of fewer than four
// characters fills the high nibbles, as devices expect it.
bool ParseIpv6Wildcard(const std::string& text, uint8_t* value, uint8_t* mask);

// 16 value and 16 mask bytes, of which an IPv4 text (any with a ".") writes only the first four.
// The version is the caller's own copy: which one the text has does not come back.
bool ParseIpWildcard(const std::string& text, uint8_t* value, uint8_t* mask, int version);

// The slot of the filter gets the address in the arrangement of the version, with one mask bit a
// byte: a byte with a wildcard nibble matches anything. False, with the record untouched, when the
// text is not an IP wildcard.
bool SetFilterIpWildcard(const std::string& text, PacketFilterRecord& record, bool is_source,
                         int version);

// The counter gets the address in the arrangement of the version, with the mask in full. False,
// with the record untouched, when the text is not an IP wildcard.
bool SetCounterIpWildcard(const std::string& text, CounterV2Config& record, int version);

// The text of 4 (version 4) or 16 reversed bytes; what is not wholly significant shows as wildcard.
std::string FormatIpWildcard(const uint8_t* value, const uint8_t* mask, int version);
std::string FormatFilterIpWildcard(const PacketFilterRecord& record, bool is_source, int version);
std::string FormatCounterIpWildcard(const CounterV2Config& record, int version);

// False for a text that the parsers accept although it has other characters than an address.
bool IsIpText(const std::string& text);

// The text whose parsing gives the same bytes, as far as a text can: in a slot of a filter an IPv4
// address stands in the 16-byte arrangement and looks like an IPv6 one that ends in wildcards; the
// shorter text is returned. A counter's IPv6 address keeps its nibbles.
std::string SameFilterIp(const PacketFilterRecord& record, bool is_source);
std::string SameCounterIp(const CounterV2Config& record, int version);

}  // namespace corvane
