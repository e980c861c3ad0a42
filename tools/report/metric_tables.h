// How the members of reports become metrics, as data. The names are the parser's keys.
#pragma once

#include <string_view>

namespace report {

// The keys of values that only count up until the device restarts.
inline constexpr std::string_view kCounting[] = {
    "bytes_written",
    "between_64_and_1518_bytes",
    "collisions",
    "count",
    "crc_errors",
    "dropped",
    "files_written",
    "hw_dropped",
    "jabbers",
    "less_than_64bytes",
    "link_down",
    "link_up",
    "more_than_1518_bytes",
    "sw_dropped",
    "total_bytes",
    "total_invalid_packets",
    "total_valid_packets",
    "written",
};

// Ends of names that the text format reserves, or that do not say what the number is. No report
// gives the unit of a device's timestamp.
struct RenamedEnd {
  std::string_view end;
  std::string_view better;
};

inline constexpr RenamedEnd kRenamedEnds[] = {
    {"_count", ""},
    {"_bits", "_flags"},
    {"_timestamp", "_timestamp_ticks"},
};

// The array of the listed devices.
inline constexpr const char* kDevices = "devices";

// The metric whose labels identify a device. Each is a member of a report, or of one of the devices
// in it.
inline constexpr const char* kDeviceInfo = "device_info";

struct InfoLabel {
  const char* member;  // a path
  const char* label;
};

inline constexpr InfoLabel kListedInfo[] = {
    {"/device", "device"}, {"/mac", "mac"}, {"/model", "model"}, {"/type", "type"}};

inline constexpr InfoLabel kReportedInfo[] = {
    {"/sw_firmware_version", "firmware"},
    {"/hw_firmware_version", "hw_firmware"},
    {"/features_configuration/loaded_firmware", "loaded_firmware"},
    {"/driver_version", "driver"},
    {"/corvane_api_version", "api"},
    {"/command_line_utility_version", "utility"},
};

// The number of failures in the reports.
inline constexpr const char* kErrors = "errors";

// Replaces the text that is made of the path.
struct HelpText {
  std::string_view path;
  std::string_view text;
};

inline constexpr HelpText kHelp[] = {
    {kDeviceInfo, "what the device is"},
    {kErrors, "failures in the reports"},
    {"found", "devices that list found"},
    {"timestamp", "the timestamp of the statistics, in units of the device"},
};

}  // namespace report
