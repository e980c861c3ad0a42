// The lines that are not plain "label : value", as data. A pattern is tried on the line without its
// tabs; the names of its placeholders are keys, or paths of keys and positions (see pattern.h).
#pragma once

#include <string_view>

namespace report {

// The member of every object that no report may have.
inline constexpr const char* kFormatKey = "format";

enum class LineKind {
  kValues,   // sets its values in the current object
  kReport,   // the same, and begins a new report
  kElement,  // appends an object with its values to the array
  kHeading,  // the same, and the deeper lines that follow belong to that object
  kOpen,     // the same, for lines that follow at its own depth
  kMessage,  // an element; what its message says decides about the key that this gets
};

struct SpecialLine {
  std::string_view pattern;
  LineKind kind = LineKind::kValues;
  std::string_view array = {};
};

// The first that fits counts. The first placeholder of an element is its name in flat outputs.
inline constexpr SpecialLine kSpecialLines[] = {
    {"Found {#found} corvanes", LineKind::kReport},
    {"{#device} : {=error}", LineKind::kElement, "devices"},
    {"{#device} : {#type} {=error}", LineKind::kElement, "devices"},
    {"{#device} : {#type} {=model} MAC {=error}", LineKind::kElement, "devices"},
    {"{#device} : {#type} {=model} {=mac}", LineKind::kElement, "devices"},
    {"Corvane {#device}: {*message}", LineKind::kMessage, "devices"},
    {"Packet slicing : {=packet_slicing} {*packet_slicing_size}"},
    {"Inline mode : {=inline_mode} ({=inline_mode_forced})"},
    {"Loopback : {=loopback} ({=loopback_forced})"},
    {"Port {=port} status:", LineKind::kHeading, "ports"},
    {"Port {=port} :", LineKind::kHeading, "ports"},
    {"Port {=port}", LineKind::kHeading, "ports"},
    {"-----Pair {#pair}-----", LineKind::kOpen, "pairs"},
    {"Filter {=enabled}"},
    {"Counter {#counter}:", LineKind::kHeading, "counters"},
    {"Counter {#counter} : {#count}", LineKind::kElement, "counters"},
    {"Size mode: {*size_mode} {#size}"},
    {"Timestamp on : Port {=timestamp_on/0/port} : {=timestamp_on/0/place} Port "
     "{=timestamp_on/1/port} : {=timestamp_on/1/place}"},
    {"Satellites : GPS : {#satellites/gps} GLONASS : {#satellites/glonass} Used : "
     "{#satellites/used}"},
};

// Labels whose values are texts of the device: never read as numbers or switches.
inline constexpr std::string_view kTextLabels[] = {
    "{*label} version", "Loaded firmware", "Filter Data", "Filter Mask", "Vendor name", "Model",
    "Revision",         "Date code",       "Serial No",
};

inline constexpr std::string_view kListLabels[] = {"Alarms", "Warnings", "Status bits",
                                                   "Return path"};

// Labels with several words for "yes": the word stays, and a boolean is added.
struct StateLabel {
  std::string_view label;
  std::string_view key;  // of the boolean
  std::string_view off;  // the word for "no"; N/A is "no" as well
};

inline constexpr StateLabel kStateLabels[] = {
    {"Link", "link_is_up", "Down"},
    {"GPS module detected", "gps_module_is_detected", "no"},
    {"GPS fix", "gps_has_fix", "no"},
};

// The one label whose unit is not in brackets at the end, and how it would look.
inline constexpr std::string_view kUnitInWords = "Wave length nm";
inline constexpr std::string_view kUnitInBrackets = "Wave length (nm)";

// A command that reports for ever ends each report with one of these.
inline constexpr std::string_view kLastLines[] = {"Direct capture : STOPPED",
                                                  "Files Written : {#n}"};

// What a message says, and the member that takes it: a list in a report, a text in a device of a
// report on several.
enum class MessageKind { kNotice, kUnsupported, kFailure };

struct MessageKeys {
  const char* list;
  const char* text;
};

inline constexpr MessageKeys kMessageKeys[] = {
    // by kind
    {"messages", "message"},
    {"unsupported", "unsupported"},  // the device cannot do this, and nothing went wrong
    {"errors", "error"},
};

struct MessageLine {
  std::string_view pattern;
  MessageKind kind;
  bool begins = false;  // a new report
};

// The first that fits counts.
inline constexpr MessageLine kMessageLines[] = {
    {"Corvane detected", MessageKind::kNotice, true},
    {"Warning : {*}", MessageKind::kNotice},
    {"Capture {=}", MessageKind::kNotice},
    {"The device was reset", MessageKind::kNotice},
    {"Time {*}updated", MessageKind::kNotice},
    {"SNTP : time obtained {*}", MessageKind::kNotice},
    {"Failed to get time from SNTP, retrying", MessageKind::kNotice},
    {"Firmware update s{*}", MessageKind::kNotice},
    {"If the process gets interrupted{*}", MessageKind::kNotice},
    {"Progress : {*}", MessageKind::kNotice},
    {"Your device does not support {*}", MessageKind::kUnsupported},
    {"This device does not support {*}", MessageKind::kUnsupported},
    {"Failed to set {*}: this device does not support {*}", MessageKind::kUnsupported},
    {"Could not get {*}: your device does not support {*}", MessageKind::kUnsupported},
    {"Could not get {*}; maybe, it's unavailable on your device", MessageKind::kUnsupported},
    {"GPS output interface not supported", MessageKind::kUnsupported},
    {"Invalid Corvane device selected", MessageKind::kFailure, true},
    {"Failed to initialize {*}", MessageKind::kFailure, true},
    {"Failed{*}", MessageKind::kFailure},
    {"Could not get {*}", MessageKind::kFailure},
    {"Invalid {*}", MessageKind::kFailure},
    {"Error{*}", MessageKind::kFailure},
    {"Timeout..", MessageKind::kFailure},
    {"Unsupported statistics version", MessageKind::kFailure},
    {"Wrong counter was selected {*}", MessageKind::kFailure},
    {"Cannot configure counter {*}", MessageKind::kFailure},
    {"Select only {*}", MessageKind::kFailure},
    {"{=key} must {*}", MessageKind::kFailure},
    {"{=key} and {=} are mutually exclusive", MessageKind::kFailure},
    {"SNTP : Failed {*}", MessageKind::kFailure},
    {"No firmware file specified", MessageKind::kFailure},
    {"Firmware update failed", MessageKind::kFailure},
    {"Firmware file is not valid {*}", MessageKind::kFailure},
    {"Corvane device not found", MessageKind::kFailure},
};

}  // namespace report
