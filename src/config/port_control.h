// Speeds, autonegotiation, pause and role of each port.
#pragma once

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kPortControlCommand = "portcontrol";

inline constexpr ParameterSpec kPortSelection =
    PatternSpec("port", "portselection", "^a|b$", "<a|b>", 1, "Selection of the port");

using PortSwitch = SwitchRow<PortControl>;

inline constexpr PortSwitch kPortSwitches[] = {
    {SwitchSpec("1000txfd", "Gigabit ethernet status"), "Gigabit ethernet",
     &PortControl::_1000txfd},
    {SwitchSpec("100txfd", "Fast ethernet full duplex status"), "Fast ethernet full duplex",
     &PortControl::_100txfd},
    {SwitchSpec("100txhd", " Fast ethernet half duplex status"), "Fast ethernet half duplex",
     &PortControl::_100txhd},
    {SwitchSpec("10txfd", "Ethernet full duplex status"), "Ethernet full duplex",
     &PortControl::_10txfd},
    {SwitchSpec("10txhd", "Ethernet half duplex status"), "Ethernet half duplex",
     &PortControl::_10txhd},
    {SwitchSpec("autoneg", "autonegotiation", "Autonegotiation status"), "Autonegotiation",
     &PortControl::autoneg},
    {SwitchSpec("sympause", "symmetricpause", "Symmetric pause status"), "Symmetric pause",
     &PortControl::sympause},
    {SwitchSpec("asympause", "asymmetricpause", "Asymmetric pause status"), "Asymmetric pause",
     &PortControl::asympause},
    {SwitchSpec("prefmaster", "prefermaster",
                "When set, the port PHY will prefer to be master of the link"),
     "Prefer master", &PortControl::prefmaster},
    {SwitchSpec("forcerole", "When set, the port PHY will force the chosen role\n"),
     "Force preferred role", &PortControl::forcerole},
};

inline constexpr auto kPortControlParameters = Parameters(kPortSelection, kPortSwitches);

// The words of kPortSelection, in the order of the ports.
inline constexpr const char* kPortWords[CORVANE_PORTS] = {"a", "b"};

// What is wrong with the settings of a port together; null when nothing is.
const char* CheckPort(const PortControl& port);

int PortControlSet(const CommandNode& leaf);
int PortControlShow(const CommandNode& leaf);

}  // namespace corvane
