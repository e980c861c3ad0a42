// The filter by addresses, ports and VLAN.
#pragma once

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kFilterCommand = "filter";

// One thing that a filter compares: its option, report label and flags.
struct FilterItem {
  ParameterSpec parameter;
  const char* label;
  uint32_t match_flag;
  uint16_t either_flag = 0;  // of one that matches as source or as destination
  uint32_t needs = 0;        // bits of the capability mask
};

// What a filter can name as source, as destination or, in the source's field, as either of them.
struct FilterSubject {
  FilterItem either;
  FilterItem source;
  FilterItem destination;
  const char* mode_label;
};

inline constexpr FilterSubject kFilterMac = {
    .either = {TextSpec("mac", "<MAC address>",
                        "Source or destination MAC address; could be in a form of a wildcard, e.g. "
                        "aa:bb:*:dd:ee:*"),
               "MAC", CORVANE_MATCH_SRC_MAC, CORVANE_EITHER_MAC},
    .source = {TextSpec("srcmac", "<MAC address>", "Source MAC address or its wildcard"),
               "Source MAC", CORVANE_MATCH_SRC_MAC},
    .destination = {TextSpec("dstmac", "<MAC address>", "Destination MAC address or its wildcard"),
                    "Destination MAC", CORVANE_MATCH_DST_MAC},
    .mode_label = "Source OR Destination MAC mode"};

inline constexpr FilterSubject kFilterIp = {
    .either = {TextSpec("ip", "<IP address>",
                        "Source or destination IP address; could be in a form of a wildcard, e.g. "
                        "123.*.10.*; in case of IPv6 the address must be fully expanded"),
               "IP", CORVANE_MATCH_SRC_IP, CORVANE_EITHER_IP},
    .source = {TextSpec("srcip", "<IP address>", "Source IP address or its wildcard"), "Source IP",
               CORVANE_MATCH_SRC_IP},
    .destination = {TextSpec("dstip", "<IP address>", "Destination IP address or its wildcard"),
                    "Destination IP", CORVANE_MATCH_DST_IP},
    .mode_label = "Source OR Destination IP mode"};

inline constexpr FilterSubject kFilterPort = {
    .either = {IntegerSpec("port", "<port>", "Source or destination port"), "Port",
               CORVANE_MATCH_SRC_PORT, CORVANE_EITHER_PORT},
    .source = {IntegerSpec("srcport", "<srcport>", "Source port"), "Source port",
               CORVANE_MATCH_SRC_PORT},
    .destination = {IntegerSpec("dstport", "<dstport>", "Destination port"), "Destination port",
                    CORVANE_MATCH_DST_PORT},
    .mode_label = "Source OR Destination port mode"};

inline constexpr FilterItem kFilterVlan = {IntegerSpec("vlanid", "<vlanid>", "VLAN id"), "VLAN id",
                                           CORVANE_MATCH_VLAN, 0, CORVANE_CAP_VLAN_FILTER};

inline constexpr auto kFilterParameters =
    Parameters(kFilterMac.either, kFilterMac.source, kFilterMac.destination, kFilterIp.either,
               kFilterIp.source, kFilterIp.destination, kFilterPort.either, kFilterPort.source,
               kFilterPort.destination, kFilterVlan);

// In a file the whole filter is enabled unless it says otherwise; it starts from kFilterWhole.
inline constexpr DisableRow<PacketFilterRecord> kFilterDisable = {
    FlagSpec("disable", "Disable the filter"), &PacketFilterRecord::enable};
inline constexpr auto kFilterRows =
    std::tie(kFilterDisable, kFilterMac.either, kFilterMac.source, kFilterMac.destination,
             kFilterIp.either, kFilterIp.source, kFilterIp.destination, kFilterPort.either,
             kFilterPort.source, kFilterPort.destination, kFilterVlan);
inline constexpr PacketFilterRecord kFilterWhole = {.enable = 1};

// As every row of a section has them.
std::optional<Value> Show(const FilterItem& row, const PacketFilterRecord& filter);
std::string Store(const FilterItem& row, const Value& value, const DeviceKind& device,
                  PacketFilterRecord& filter);

int FilterSet(const CommandNode& leaf);  // serves filter disable too
int FilterShow(const CommandNode& leaf);

}  // namespace corvane
