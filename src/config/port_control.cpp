#include "config/port_control.h"

#include <cstdio>
#include <string>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

// All failures of portcontrol set begin alike.
int FailSet(int status, const char* reason) {
  printf("Failed to set Corvane port control configuration%s\n", reason);
  return status;
}

// Changes one port as the switches say. In inline mode both ports form one link: port A's settings
// are port B's, whatever it had.
int Apply(const CommandNode& leaf, bool inline_mode, PortsSpeedRecord& speeds) {
  const std::string port = TextOr(leaf, kPortSelection.key, "");
  if (port == "b" && inline_mode) {
    return FailSet(kRejected, ": cannot configure port B when inline mode is on");
  }
  if (port != "a" && port != "b") {
    return FailSet(kRejected, ": port must be selected to apply control configuration to");
  }
  PortControl& block = speeds.ports[port == "a" ? 0 : 1];
  ApplySwitches(leaf, kPortSwitches, block);
  const char* wrong = CheckPort(block);
  if (wrong != nullptr) return FailSet(kRejected, (std::string(": ") + wrong).c_str());
  if (inline_mode) speeds.ports[1] = speeds.ports[0];
  return kSuccess;
}

}  // namespace

const char* CheckPort(const PortControl& port) {
  if (port.autoneg != 0) return nullptr;
  if (port._1000txfd == 1) {
    return "1000TXFD speed is not supported if autonegotiation is disabled";
  }
  if (port._100txfd + port._100txhd + port._10txfd + port._10txhd != 1) {
    return "if autonegotiation is disabled, one and only one port speed must be set";
  }
  return nullptr;
}

int PortControlSet(const CommandNode& leaf) {
  PortsSpeedRecord speeds = {};
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_SPEED_CONTROL)) {
    return FailSet(kUnsupported, ": this device does not support port control");
  }
  int status = CorvaneAPIGetDevicePortsSpeed(session.device(), &speeds);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane ports control configuration");
  FeaturesRecord features = {};
  status = CorvaneAPIGetDeviceFeatures(session.device(), &features);
  if (status != kSuccess) return FailSet(status, ": failed to get Corvane features");

  status = Apply(leaf, features.inline_ == 1, speeds);
  if (status != kSuccess) return status;
  status = CorvaneAPISetDevicePortsSpeed(session.device(), speeds);
  return status == kSuccess ? kSuccess : FailSet(status, "");
}

int PortControlShow(const CommandNode& leaf) {
  PortsSpeedRecord speeds = {};
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  if (!Supports(session.device(), CORVANE_CAP_SPEED_CONTROL)) {
    return Fail(kUnsupported, "This device does not support port control");
  }
  const int status = CorvaneAPIGetDevicePortsSpeed(session.device(), &speeds);
  if (status != kSuccess) return Fail(status, "Failed to get Corvane ports control configuration");

  puts("Port Control configuration : ");
  for (int port = 0; port < CORVANE_PORTS; ++port) {
    printf("\tPort %c :\n", 'A' + port);
    for (const PortSwitch& row : kPortSwitches) {
      printf("\t\t%s : %s\n", row.label, EnabledOrDisabled(speeds.ports[port].*row.field == 1));
    }
  }
  return kSuccess;
}

}  // namespace corvane
