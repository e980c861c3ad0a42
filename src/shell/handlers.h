// The handler of every leaf command. Each gets its leaf, opens the library, works and closes it on
// every path (features set has the one exception), and returns the exit status (device/status.h).
#pragma once

#include "shell/command_tree.h"

// src/device/
int ListDevices(const CommandNode& leaf);
int CapabilitiesShow(const CommandNode& leaf);
int CapabilitiesLegend(const CommandNode& leaf);
int Version(const CommandNode& leaf);

// src/capture/
int DirectCaptureStatus(const CommandNode& leaf);
int DirectCaptureStart(const CommandNode& leaf);
int DirectCaptureStop(const CommandNode& leaf);
int Statistics(const CommandNode& leaf);
int CountersSet(const CommandNode& leaf);
int CountersShow(const CommandNode& leaf);
int FirmwareUpdate(const CommandNode& leaf);

// src/config/
int FeaturesSet(const CommandNode& leaf);
int FeaturesSave(const CommandNode& leaf);  // serves portcontrol save too
int FeaturesShow(const CommandNode& leaf);
int PortControlSet(const CommandNode& leaf);
int PortControlShow(const CommandNode& leaf);
int PortStatus(const CommandNode& leaf);
int SfpStatus(const CommandNode& leaf);
int DpiEnable(const CommandNode& leaf);
int DpiDisable(const CommandNode& leaf);
int DpiSave(const CommandNode& leaf);
int DpiShow(const CommandNode& leaf);
int PoeShow(const CommandNode& leaf);
int Reset(const CommandNode& leaf);

// src/filter/
int FilterSet(const CommandNode& leaf);  // serves filter disable too
int FilterShow(const CommandNode& leaf);
int PacketTypeFilterSet(const CommandNode& leaf);
int PacketTypeFilterShow(const CommandNode& leaf);

// src/timing/
int TimingConfig(const CommandNode& leaf);
int TimingSave(const CommandNode& leaf);
int TimingStatus(const CommandNode& leaf);
int TimingSetSntp(const CommandNode& leaf);
int TimingSetGps(const CommandNode& leaf);
int TimingSetManual(const CommandNode& leaf);
int TimingSetSystem(const CommandNode& leaf);
int Nmea(const CommandNode& leaf);
