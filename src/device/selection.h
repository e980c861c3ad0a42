// Which device a command applies to.
#pragma once

#include <cstdint>

#include "device/corvane_api.h"
#include "shell/command_tree.h"

// Reads six hexadecimal bytes separated by colons into mac (CORVANE_MAC_SIZE bytes, first byte of
// the text first) and returns 0; text after the sixth is ignored. Else zeroes mac and returns -1.
int ParseMac(const char* text, uint8_t* mac);

// The device that the text names: an index into the device list (an empty text is 0) or a MAC
// address. Waits for devices to be attached. CORVANE_NO_DEVICE when there is none, and for "all".
DeviceHandle ResolveDevice(const char* text);

// The first device.
DeviceHandle DefaultDevice();

// Prints the line that every command without a device ends with; returns kNoDevice.
int FailSelection();

// The device of the leaf's --device, by default the first; prints one line either way.
// CORVANE_NO_DEVICE when there is none.
DeviceHandle SelectDevice(const CommandNode& leaf);
