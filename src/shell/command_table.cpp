#include "shell/command_table.h"

#include <argtable3.h>

#include <cstdio>
#include <cstring>
#include <iterator>

#include "device/corvane_api.h"
#include "shell/handlers.h"
#include "shell/parameter_table.h"

namespace {

enum class DeviceChoice : uint8_t { kNone, kOne, kOneOrAll };

// One node of the tree as data. A branch has children, a leaf a handler; a leaf without a device
// choice has no parameters at all.
struct NodeSpec {
  TableText<20> name;
  TableText<52> description;
  const NodeSpec* children;
  size_t child_count;
  DeviceChoice device;
  const ParameterSpec* parameters;
  size_t parameter_count;
  Handler handler;
};

template <size_t kCount>
constexpr NodeSpec Branch(const char* name, const char* description,
                          const NodeSpec (&children)[kCount]) {
  return {name, description, children, kCount, DeviceChoice::kNone, nullptr, 0, nullptr};
}

constexpr NodeSpec Leaf(const char* name, const char* description, DeviceChoice device,
                        Handler handler) {
  return {name, description, nullptr, 0, device, nullptr, 0, handler};
}

template <size_t kCount>
constexpr NodeSpec Leaf(const char* name, const char* description, DeviceChoice device,
                        const ParameterSpec (&parameters)[kCount], Handler handler) {
  return {name, description, nullptr, 0, device, parameters, kCount, handler};
}

constexpr DeviceChoice kNone = DeviceChoice::kNone;
constexpr DeviceChoice kOne = DeviceChoice::kOne;
constexpr DeviceChoice kAll = DeviceChoice::kOneOrAll;

constexpr NodeSpec kDirectCaptureCommands[] = {
    Leaf("status", "Display direct capture status", kOne, DirectCaptureStatus),
    Leaf("start", "Start direct capture", kOne, kDirectCaptureParameters, DirectCaptureStart),
    Leaf("stop", "Stop direct capture", kOne, DirectCaptureStop),
};

constexpr NodeSpec kDpiCommands[] = {
    Leaf("enable", "Enable deep packet inspection", kOne, kDpiParameters, DpiEnable),
    Leaf("disable", "Disable deep packet inspection", kOne, DpiDisable),
    Leaf("save", "Save deep packet inspection configuration", kOne, DpiSave),
    Leaf("show", "Show deep packet inspection configuration", kOne, DpiShow),
};

constexpr NodeSpec kFeaturesCommands[] = {
    Leaf("set", "Set features", kOne, kFeatureParameters, FeaturesSet),
    Leaf("save", "Save features and port control configurations", kOne, FeaturesSave),
    Leaf("show", "Show features status", kOne, FeaturesShow),
};

constexpr NodeSpec kPortControlCommands[] = {
    Leaf("set", "Set port control", kOne, kPortControlParameters, PortControlSet),
    Leaf("save", "Save port control and features configurations", kOne, FeaturesSave),
    Leaf("show", "Show port control configuration", kOne, PortControlShow),
};

constexpr NodeSpec kCapabilitiesCommands[] = {
    Leaf("show", "Show device's capabilities", kOne, CapabilitiesShow),
    Leaf("legend", "Show descriptions of possible capabilities", kOne, CapabilitiesLegend),
};

constexpr NodeSpec kCountersCommands[] = {
    Leaf("set", "Set statistics V2 counters configuration", kOne, kCounterParameters, CountersSet),
    Leaf("show", "Show statistics V2 counters configuration", kOne, CountersShow),
};

constexpr NodeSpec kFilterCommands[] = {
    Leaf("show", "Show filter configuration", kOne, FilterShow),
    Leaf("set", "Set filter configuration", kOne, kFilterParameters, FilterSet),
    Leaf("disable", "Disable the filter", kOne, FilterSet),
};

constexpr NodeSpec kTimingCommands[] = {
    Leaf("config", "Set timing configuration", kOne, kTimingConfigParameters, TimingConfig),
    Leaf("setsntp", "Set timestamp from SNTP", kAll, kTimingSntpParameters, TimingSetSntp),
    Leaf("setgps", "Set timestamp from GPS", kAll, TimingSetGps),
    Leaf("setmanual", "Set manual timestamp", kAll, kTimingManualParameters, TimingSetManual),
    Leaf("setsystem", "Set timestamp from system time", kAll, TimingSetSystem),
    Leaf("save", "Save timing configuration to the device", kOne, TimingSave),
    Leaf("status", "Display timing information", kOne, TimingStatus),
};

constexpr NodeSpec kPoeCommands[] = {
    Leaf("show", "Show PoE measures", kOne, PoeShow),
};

constexpr NodeSpec kPacketTypeFilterCommands[] = {
    Leaf("set", "Set packet type filter configuration", kOne, kPacketTypeParameters,
         PacketTypeFilterSet),
    Leaf("show", "Show packet type filter configuration", kOne, PacketTypeFilterShow),
};

constexpr NodeSpec kCommands[] = {
    Leaf("list", "List available devices", kNone, ListDevices),
    Branch("directcapture", "Configure direct capture", kDirectCaptureCommands),
    Branch("dpi", "Configure deep packet inspection", kDpiCommands),
    Branch("features", "Configure features", kFeaturesCommands),
    Branch("portcontrol", "Configure port control", kPortControlCommands),
    Leaf("portstatus", "Show statuses of the ports", kOne, PortStatus),
    Branch("capabilities", "Show device's capabilities", kCapabilitiesCommands),
    Leaf("sfp", "Show status of SFP ports", kOne, SfpStatus),
    Leaf("statistics", "Display statistics", kOne, kStatisticsParameters, Statistics),
    Branch("statsv2", "Configure statistics V2 counters configuration", kCountersCommands),
    Branch("filter", "Filter configuration", kFilterCommands),
    Leaf("nmea", "Display NMEA data from GPS", kOne, Nmea),
    Branch("timing", "Timing information and configuration", kTimingCommands),
    Leaf("reset", "Reset device", kOne, Reset),
    Branch("poe", "PoE information and calibration", kPoeCommands),
    Branch("packet_type_filter", "Packet type filter configuration", kPacketTypeFilterCommands),
    Leaf("version", "Display version information", kOne, Version),
    Leaf("update", "Update device firmware", kOne, kUpdateParameters, FirmwareUpdate),
};

constexpr NodeSpec kRoot = Branch("", "Corvane command-line tool", kCommands);

const char* CounterGlossary() {
  static char glossary[128];
  snprintf(glossary, sizeof glossary,
           "Index of the counter to be configured; possible values are from 0 to %d except for %d",
           CORVANE_COUNTERS_V2, CORVANE_COUNTERS_V2 - 1);
  return glossary;
}

void* MakeArgument(const ParameterSpec& row) {
  const char* s = row.short_option.OrNull();
  const char* l = row.long_option.OrNull();
  const char* datatype = row.datatype.OrNull();
  const char* glossary = row.glossary.text;
  switch (row.kind) {
    case ParameterKind::kFlag:
      return arg_lit0(s, l, glossary);
    case ParameterKind::kInteger:
      return arg_int0(s, l, datatype, glossary);
    case ParameterKind::kCounterIndex:
      return arg_int0(s, l, datatype, CounterGlossary());
    case ParameterKind::kReal:
      return arg_dbl0(s, l, datatype, glossary);
    case ParameterKind::kText:
      return arg_str0(s, l, datatype, glossary);
    case ParameterKind::kFile:
      return arg_file0(s, l, datatype, glossary);
    case ParameterKind::kRequiredFile:
      return arg_file1(s, l, datatype, glossary);
    case ParameterKind::kPattern:
      return arg_rex0(s, l, row.pattern.text, datatype, row.flags, glossary);
    case ParameterKind::kSwitch:
      return OptionalSwitch(s, l, glossary);
  }
  return nullptr;
}

const NamedArg* MakeParameter(const ParameterSpec& row) {
  return MakeNamedArg(row.key.text, MakeArgument(row));
}

// The two device parameters, each made once and shared by all leaves that take it.
const NamedArg* DeviceParameter(DeviceChoice choice) {
  static const NamedArg* one = nullptr;
  static const NamedArg* one_or_all = nullptr;
  const bool is_one = choice == DeviceChoice::kOne;
  const NamedArg*& made = is_one ? one : one_or_all;
  if (made == nullptr) made = MakeParameter(is_one ? kOneDevice : kOneDeviceOrAll);
  return made;
}

const CommandNode* MakeLeaf(const NodeSpec& row) {
  if (row.device == DeviceChoice::kNone) {
    return MakeNode(row.name.text, row.description.text, nullptr, nullptr, row.handler);
  }
  auto* params = KeptPointers<const NamedArg*>(row.parameter_count + 1);
  params[0] = DeviceParameter(row.device);
  for (size_t i = 0; i < row.parameter_count; ++i) {
    params[i + 1] = MakeParameter(row.parameters[i]);
  }
  return MakeNode(row.name.text, row.description.text, nullptr, params, row.handler);
}

// The first words that lead from the node down; null for a node to be made with all below it.
using Words = const char* const*;

const CommandNode* MakeTree(const NodeSpec& row, Words words);

// A child that the words do not lead to is there for its parent's help only.
const CommandNode* MakeChild(const NodeSpec& row, Words words) {
  if (words == nullptr) return MakeTree(row, nullptr);
  if (*words != nullptr && strcmp(*words, row.name.text) == 0) return MakeTree(row, words + 1);
  return MakeNode(row.name.text, row.description.text, nullptr, nullptr, nullptr);
}

const CommandNode* MakeTree(const NodeSpec& row, Words words) {
  if (row.children == nullptr) return MakeLeaf(row);
  auto* children = KeptPointers<const CommandNode*>(row.child_count);
  for (size_t i = 0; i < row.child_count; ++i) children[i] = MakeChild(row.children[i], words);
  return MakeNode(row.name.text, row.description.text, children, nullptr, nullptr);
}

}  // namespace

const CommandNode& BuildCommandTree(const char* const* words) {
  return *MakeTree(kRoot, words);
}

const CommandNode& BuildCommandTree() {
  static const CommandNode& root = BuildCommandTree(nullptr);
  return root;
}
