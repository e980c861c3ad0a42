// The state of copper ports.
#pragma once

#include "device/corvane_api.h"
#include "line/node.h"

namespace corvane {

// By slot; null for the two slots that are not flags.
inline constexpr const char* kPhyFlags[CORVANE_PHY_SLOTS] = {
    nullptr,
    "Link Partner Auto-Neg Capable",
    "Link Partner Next Page Capable",
    "Next Page Request",
    "Acknowledge",
    "Advertise 1000BASET_FDX",
    "Advertise 1000BASET_HDX",
    "Advertise 100BASETX_FDX",
    "Advertise 100BASETX_HDX",
    "Advertise 10BASET_FDX",
    "Advertise 10BASET_HDX",
    "Advertise Asymmetric Pause",
    "Advertise Symmetric Pause",
    "Parallel Detection Fault",
    "Remote Fault",
    "Master Slave Fault",
    "Local Receiver",
    "Remote Receiver",
    nullptr,
    "100BASETX Lock Error",
    "100BASETX Receive Error",
    "100BASETX Transmit Error",
    "100BASETX SSD Error",
    "100BASETX ESD Error",
    "1000BASET Lock Error",
    "1000BASET Receive Error",
    "1000BASET Transmit Error",
    "1000BASET SSD Error",
    "1000BASET ESD Error",
    "1000BASET Carrier Extension Error",
    "MDI Crossover Error",
};

// The word for speed and duplex; N/A for a speed that has none.
const char* LinkName(const LinkEntry& link);

int PortStatus(const CommandNode& leaf);

}  // namespace corvane
