#include "shell/command_table.h"

#include "capture/counters_v2.h"
#include "capture/direct_capture.h"
#include "capture/firmware_update.h"
#include "capture/statistics.h"
#include "config/dpi_filter.h"
#include "config/features.h"
#include "config/poe.h"
#include "config/port_control.h"
#include "config/port_status.h"
#include "config/reset.h"
#include "config/sfp_status.h"
#include "filter/packet_filter.h"
#include "filter/packet_type_filter.h"
#include "inventory/inventory.h"
#include "line/device_option.h"
#include "timing/nmea.h"
#include "timing/time_setting.h"
#include "timing/timing_config.h"

namespace corvane {

namespace {

// One node of the tree as data. A branch has children, a leaf a handler; a leaf without a device
// option has no parameters at all.
struct NodeSpec {
  const char* name;
  const char* description;
  std::span<const NodeSpec> children = {};
  const ParameterSpec* device = nullptr;
  ParameterList parameters = {};  // after the device
  Handler handler = nullptr;
};

constexpr const ParameterSpec* kOne = &kOneDevice;
constexpr const ParameterSpec* kOneOrAll = &kOneDeviceOrAll;

constexpr NodeSpec Branch(const char* name, const char* description,
                          std::span<const NodeSpec> children) {
  return {.name = name, .description = description, .children = children};
}

constexpr NodeSpec Leaf(const char* name, const char* description, const ParameterSpec* device,
                        Handler handler) {
  return {.name = name, .description = description, .device = device, .handler = handler};
}

constexpr NodeSpec Leaf(const char* name, const char* description, const ParameterSpec* device,
                        ParameterList parameters, Handler handler) {
  return {.name = name,
          .description = description,
          .device = device,
          .parameters = parameters,
          .handler = handler};
}

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
    Leaf("setsntp", "Set timestamp from SNTP", kOneOrAll, kTimingSntpParameters, TimingSetSntp),
    Leaf("setgps", "Set timestamp from GPS", kOneOrAll, TimingSetGps),
    Leaf("setmanual", "Set manual timestamp", kOneOrAll, kTimingManualParameters, TimingSetManual),
    Leaf("setsystem", "Set timestamp from system time", kOneOrAll, TimingSetSystem),
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
    Leaf("list", "List available devices", nullptr, ListDevices),
    Branch("directcapture", "Configure direct capture", kDirectCaptureCommands),
    Branch(kDpiCommand, "Configure deep packet inspection", kDpiCommands),
    Branch(kFeaturesCommand, "Configure features", kFeaturesCommands),
    Branch(kPortControlCommand, "Configure port control", kPortControlCommands),
    Leaf("portstatus", "Show statuses of the ports", kOne, PortStatus),
    Branch("capabilities", "Show device's capabilities", kCapabilitiesCommands),
    Leaf("sfp", "Show status of SFP ports", kOne, SfpStatus),
    Leaf("statistics", "Display statistics", kOne, kStatisticsParameters, Statistics),
    Branch(kCountersCommand, "Configure statistics V2 counters configuration", kCountersCommands),
    Branch(kFilterCommand, "Filter configuration", kFilterCommands),
    Leaf("nmea", "Display NMEA data from GPS", kOne, Nmea),
    Branch(kTimingCommand, "Timing information and configuration", kTimingCommands),
    Leaf("reset", "Reset device", kOne, Reset),
    Branch("poe", "PoE information and calibration", kPoeCommands),
    Branch(kPacketTypesCommand, "Packet type filter configuration", kPacketTypeFilterCommands),
    Leaf("version", "Display version information", kOne, Version),
    Leaf("update", "Update device firmware", kOne, kUpdateParameters, FirmwareUpdate),
};

constexpr NodeSpec kRoot = Branch("", "Corvane command-line tool", kCommands);

// The two device parameters, each made once and shared by all leaves that take it.
struct DeviceParameters {
  const NamedArg* one = MakeParameter(kOneDevice);
  const NamedArg* one_or_all = MakeParameter(kOneDeviceOrAll);
};

const CommandNode* MakeTree(const NodeSpec& row, const DeviceParameters& device) {
  Children children;
  for (const NodeSpec& child : row.children) children.push_back(MakeTree(child, device));
  NamedArgs params;
  if (row.device != nullptr) params.push_back(row.device == kOne ? device.one : device.one_or_all);
  for (const ParameterSpec* parameter : row.parameters) params.push_back(MakeParameter(*parameter));
  return MakeNode(row.name, row.description, std::move(children), std::move(params), row.handler);
}

}  // namespace

const CommandNode& BuildCommandTree() {
  static const CommandNode& root = *MakeTree(kRoot, {});
  return root;
}

}  // namespace corvane
