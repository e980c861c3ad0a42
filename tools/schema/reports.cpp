#include "reports.h"

#include "capture/counters_v2.h"
#include "capture/statistics.h"
#include "config/features.h"
#include "config/port_control.h"
#include "config/port_status.h"
#include "config/sfp_status.h"
#include "console/report.h"
#include "device/capabilities.h"
#include "filter/packet_filter.h"
#include "filter/packet_type_filter.h"
#include "timing/timing_config.h"

using namespace corvane;

namespace schema {

namespace {

using Values = std::vector<std::string>;

const Values kTitle = {""};
const Values kCount = {"7"};
const Values kNumber = {"7", "-7"};
const Values kText = {kAnyText};
const Values kEnabled = {EnabledOrDisabled(true), EnabledOrDisabled(false)};
const Values kYes = {YesOrNo(true), YesOrNo(false)};
const Values kOn = {"on", "off"};
const Values kDetected = {"detected", "not detected"};
const Values kVersion = {"1.2.3.4"};
constexpr const char* kPorts[] = {"A", "B"};
constexpr const char* kUnknownWord = "Unknown";  // for a code that has no word

Lines operator+(Lines lines, const Lines& more) {
  lines.insert(lines.end(), more.begin(), more.end());
  return lines;
}

// A device may measure what is not a number.
Values Quantity(const std::string& unit) {
  return {"7.25" + unit, "-7.25" + unit, "nan" + unit};
}

// A line for each row.
template <class Rows>
Lines Each(const std::string& tabs, const Rows& rows, const Values& values, bool always = true) {
  Lines lines;
  for (const auto& row : rows) lines.push_back({tabs + row.label + " : ", values, always});
  return lines;
}

// The lines below the heading of each port.
Lines EachPort(const std::string& before, const std::string& after, const Lines& lines) {
  Lines all;
  for (const char* port : kPorts) {
    Line heading = {before, kTitle};
    heading.start.append(port).append(after);
    all = all + Lines{heading} + lines;
  }
  return all;
}

// Those of port A alone.
Lines FirstHalf(const Lines& lines) {
  return {lines.begin(), lines.begin() + static_cast<std::ptrdiff_t>(lines.size() / 2)};
}

Values NamesOf(std::span<const Choice> choices) {
  Values names = {kUnknownWord};
  for (const Choice& choice : choices) names.emplace_back(choice.name);
  return names;
}

// ---- inventory

Report List() {
  const std::string mac = "00:1a:2b:3c:4d:5e";
  const std::string model = std::string(" ") + kAnyText;
  return {"list",
          {{{"Found ", {"0 corvanes"}}},
           {{"Found ", {"1 corvanes"}}, {"0 : ", {"Error"}}},
           {{"Found ", {"4 corvanes"}},
            {"0 : ", {"7" + model + " " + mac}},
            {"1 : ", {"Error"}},
            {"2 : ", {"-7 Error"}},
            {"3 : ", {"7" + model + " MAC error"}}}}};
}

Report Version() {
  return {"version",
          {{{"Command line utility version : ", kVersion},
            {"Corvane API version : ", kVersion},
            {"Driver version : ", kVersion},
            {"SW firmware version : ", kVersion},
            {"HW firmware version : ", kVersion}}}};
}

Report CapabilitiesShow() {
  return {"capabilities show",
          {Lines{{"Device's capabilities:", kTitle}} + Each("\t", kCapabilities, kYes)}};
}

Report CapabilitiesLegend() {
  return {"capabilities legend",
          {Lines{{"Legend of device's capabilities:", kTitle}} + Each("\t", kCapabilities, kText)}};
}

// ---- config

Report Features() {
  const auto also = [](Values values, const char* forced) {
    values.push_back(std::string(forced) + " (forced)");
    return values;
  };
  const Lines modes = {
      {"\tPacket slicing : ", {"Enabled 128 bytes", "Disabled 0 bytes"}},
      {"\t" + std::string(kInlineMode.label) + " : ", also(kEnabled, "Enabled")},
      {"\t" + std::string(kLoopbackMode.label) + " : ", also(kEnabled, "Disabled")}};
  return {"features show",
          {Lines{{"Features Configuration : ", kTitle}} + Each("\t", kFrameSwitches, kEnabled) +
           modes + Each("\t", kTimestampSwitches, kEnabled) +
           Each("\t", kAutonegotiationSwitches, kEnabled, false) +
           Lines{{"\tLoaded firmware: ", kText, false}}}};
}

Report PortControls() {
  return {"portcontrol show",
          {Lines{{"Port Control configuration : ", kTitle}} +
           EachPort("\tPort ", " :", Each("\t\t", kPortSwitches, kEnabled))}};
}

// A device may say that it has no port.
Report PortStates() {
  Lines lines = {{"\tLink: ", {}},
                 {"\tMaster/Slave: ", {"Master", "Slave", "N/A"}},
                 {"\tIdle Error Count: ", kCount}};
  for (uint32_t code = 0; code < 14; ++code) {
    LinkEntry link = {};
    link.speed = static_cast<decltype(link.speed)>(code / 2);
    link.duplex = static_cast<decltype(link.duplex)>(code % 2);
    lines[0].values.emplace_back(LinkName(link));
  }
  for (const char* flag : kPhyFlags) {
    if (flag != nullptr) lines.push_back({std::string("\t") + flag + ": ", {"Yes", "No", "N/A"}});
  }
  const Lines both = EachPort("Port ", " status:", lines);
  return {"portstatus", {{}, FirstHalf(both), both}};
}

Line SfpLine(const SfpNumber& row) {
  Line line = {std::string("\t") + row.label + ": ", kNumber};
  if (row.names.words == nullptr) return line;
  line.always = false;
  line.values.clear();
  for (int32_t code = 0; code < row.names.count; ++code) {
    if (row.names.words[code] != nullptr) line.values.emplace_back(row.names.words[code]);
  }
  return line;
}

template <size_t kFlags>
Line SfpLine(const char* label, const SfpFlag (&flags)[kFlags]) {
  std::string all;
  for (const SfpFlag& flag : flags) all += flag.text;
  return {std::string("\t") + label + ":", {all, ""}};
}

Lines SfpQuantityLines() {
  Lines lines;
  for (const SfpQuantity& row : kSfpQuantities) {
    lines.push_back({std::string("\t") + row.measured + ": ", {"7.25", "-7.25"}});
  }
  for (const char* limit : {"Low alarm", "Low warning", "High alarm", "High warning"}) {
    for (const SfpQuantity& row : kSfpQuantities) {
      lines.push_back({std::string("\t") + limit + " " + row.threshold + ": ", {"7.25", "-7.25"}});
    }
  }
  return lines;
}

Report SfpModules() {
  Lines module = {{"\tLink: ", {"Up"}}, {"\tMode: ", {"Inline", "Span"}, false}};
  module.push_back({std::string("\t") + kSfpVendorName.label + ": ", kText});
  module.push_back(SfpLine(kSfpVendorOui));
  module = module + Each("\t", kSfpTexts, kText);
  for (const SfpNumber& row : kSfpNumbers) module.push_back(SfpLine(row));
  module = module + SfpQuantityLines() +
           Lines{SfpLine("Alarms", kSfpAlarms), SfpLine("Warnings", kSfpWarnings),
                 SfpLine("Status bits", kSfpStatusBits)};
  const Lines down = EachPort("Port ", " status:", {{"\tLink: ", {"Down"}}});
  return {"sfp", {{}, FirstHalf(down), down, EachPort("Port ", " status:", module)}};
}

Report Power() {
  Lines lines = {{"Supply voltage: ", Quantity("V")}, {"PoE measures :", kTitle}};
  for (int pair = 0; pair < CORVANE_POE_PAIRS; ++pair) {
    lines.push_back({"-----Pair " + std::to_string(pair) + "-----", kTitle});
    lines.push_back({"Voltage: ", Quantity("V")});
    lines.push_back({"Current: ", Quantity("A")});
    lines.push_back({"Return path: ", {"2 3 ", "None"}});
  }
  return {"poe show", {lines}};
}

Report DpiFilter() {
  return {"dpi show",
          {{{"DPI Filter Configuration : ", kTitle},
            {"\tStatus : ", kEnabled},
            {"\tFilter Data : ", {"00ff"}},
            {"\tFilter Mask : ", {"0x0000ffff"}}}}};
}

// ---- filter

// Either a line for both sides, or one for each.
Lines FilterLines(const FilterSubject& subject, const Values& values) {
  const auto label = [](const FilterItem& item) { return std::string("\t") + item.label + ": "; };
  Values or_not = values;
  or_not.emplace_back(EnabledOrDisabled(false));
  return {{std::string("\t") + subject.mode_label + ": ", kYes},
          {label(subject.either), values, false},
          {label(subject.source), or_not, false},
          {label(subject.destination), or_not, false}};
}

Report PacketFilter() {
  const Lines title = {{"Packet filter configuration:", kTitle}};
  const Lines vlan = {
      {std::string("\t") + kFilterVlan.label + ": ", {"7", EnabledOrDisabled(false)}, false}};
  return {"filter show",
          {title + Lines{{"\tFilter ", {"disabled"}}},
           title + FilterLines(kFilterMac, {"00:*:00:00:00:01"}) +
               FilterLines(kFilterIp, {"10.1.*.*"}) + FilterLines(kFilterPort, kCount) + vlan}};
}

Report PacketTypes() {
  return {"packet_type_filter show",
          {Lines{{"Packet type filters:", kTitle}} + Each("\t", kPacketTypes, kYes) +
           Lines{{std::string("\t") + kVlanType.label + ": ", kYes, false}}}};
}

// ---- capture

// With each kind of counters, and what may be said of the capture, if anything.
Report Statistics() {
  const Lines begin = {{"Timestamp : ", kCount}, {"SW dropped : ", kCount}};
  const Lines ports = begin + Lines{{"Link Up : ", {"7 ms"}}, {"Link Down : ", {"7 ms"}}} +
                      EachPort("Port ", "", Each("\t", kPortCounters, kCount));
  Lines counters = begin + Lines{{"HW dropped : ", kCount}};
  for (int i = 1; i <= CORVANE_COUNTERS_V2; ++i) {
    counters.push_back({"Counter " + std::to_string(i) + " : ", kCount});
  }
  const Values sizes = {"7.25 B", "7.25 KB", "7.25 MB", "7.25 GB"};
  const Lines captures[] = {{},
                            {{"Direct capture : ", {"STOPPED"}}},
                            {{"Direct capture : ", {"STARTED"}},
                             {"Cache used : ", sizes},
                             {"Written : ", sizes},
                             {"Dropped : ", sizes},
                             {"Files Written : ", kCount}}};
  Report report = {"statistics", {}};
  for (const Lines& capture : captures) {
    report.forms.push_back(ports + capture);
    report.forms.push_back(counters + capture);
  }
  return report;
}

Report CounterSettings() {
  const Values conditions = {"Count if true", "Count if false", "Ignore"};
  Values sizes = {EnabledOrDisabled(false)};
  for (const SizeMode& mode : kSizeModes) sizes.push_back(std::string(mode.words) + " 7");
  sizes.push_back(std::string(kSizeModes[0].words) + " -7");
  Lines lines = {{"Statistics V2 configuration : ", kTitle}};
  for (int i = 0; i < CORVANE_COUNTERS_V2; ++i) {
    lines =
        lines +
        Lines{{"\tCounter " + std::to_string(i) + ":", kTitle},
              {"\t\tMode: ", {kCountModes[0].parameter.key, kCountModes[1].parameter.key}}} +
        Each("\t\t", kCountedPorts, kEnabled) +
        Lines{{"\t\tSize mode: ", sizes}, {"\t\tIP address: ", {"10.1.*.*", "None"}}} +
        Each("\t\t",
             std::array{kFamily4.condition, kFamily6.condition, kBroadcast, kMulticast, kUnicast},
             conditions) +
        Each("\t\t", kOtherConditions, conditions);
  }
  return {"statsv2 show", {lines}};
}

Report Capture() {
  Lines lines = {{"Direct capture status :", kTitle}};
  for (const char* label :
       {"Enabled", "Error", "Cache used", "Maximum cache", "Bytes Written", "Files Written"}) {
    lines.push_back({std::string("\t") + label + " : ", kCount});
  }
  return {"directcapture status", {lines}};
}

// ---- timing

Lines TimingSettings() {
  Values places;
  for (const std::string& place : NamesOf(kPlaceChoices)) {
    places.emplace_back("Port A : ").append(place).append("   Port B : ").append(place);
  }
  return Lines{{"Timing configuration :", kTitle},
               {std::string("\t") + kTimestampInitialization.label + " : ",
                NamesOf(kInitializationChoices)}} +
         Each("\t", kTimingSwitches, kOn) +
         Lines{{"\tPPS compensation : ", {"7.25 ns", "-7.25 ns"}}, {"\tTimestamp on : ", places}};
}

Report Timing() {
  Values sources = {kUnknownWord};
  sources.insert(sources.end(), std::begin(kTimestampSources), std::end(kTimestampSources));
  const Lines status = {
      {"Timing status :", kTitle},
      {"\tGPS module detected : ", {"yes", "no", "locked"}},
      {"\tGPS fix : ", {"no", "2D fix", "3D fix"}},
      {"\tGPS PPS : ", kDetected},
      {"\tExternal PPS : ", kDetected},
      {"\tTimestamp source : ", sources},
      {"\tTimestamp synchronized : ", kYes},
      {"\tSatellites : ", {"GPS : 7 GLONASS : 7 Used : 7", "GPS : -7 GLONASS : -7 Used : -7"}},
      {"\tDeviation from PPS : ", Quantity(" ns")},
      {"\tCurrent RTC time : ", {"28/02/2026 07:08:09 (UTC)", "00/00/0000 00:00:00 (UTC)"}}};
  return {"timing status", {TimingSettings() + status}};
}

// ---- what was done, perhaps to each of several devices

Report Messages() {
  return {"",
          {{},
           {{"Corvane 0: ", {"Time updated"}}},
           {{"Corvane 0: ", {"Time updated"}},
            {"Corvane 1: ", {"Failed to set manual timestamp"}},
            {"Corvane 2: ", {kTimingUnsupported}}}}};
}

}  // namespace

std::vector<Report> AllReports() {
  return {List(),       Version(),         CapabilitiesShow(), CapabilitiesLegend(),
          Features(),   PortControls(),    PortStates(),       SfpModules(),
          Power(),      DpiFilter(),       PacketFilter(),     PacketTypes(),
          Statistics(), CounterSettings(), Capture(),          Timing(),
          Messages()};
}

}  // namespace schema
