// Which device a command applies to.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "device/corvane_api.h"

namespace corvane {

// Reads six hexadecimal bytes separated by colons into mac (CORVANE_MAC_SIZE bytes, first byte of
// the text first) and returns 0; text after the sixth is ignored. Else zeroes mac and returns -1.
int ParseMac(const char* text, uint8_t* mac);

// The device that the text names: an index into the device list (an empty text is 0) or a MAC
// address. Waits for devices to be attached. CORVANE_NO_DEVICE when there is none, and for "all".
DeviceHandle ResolveDevice(const char* text);

// The first device.
DeviceHandle DefaultDevice();

// The device that the text names, or the first when there is no text; prints one line either way.
// CORVANE_NO_DEVICE when there is none.
DeviceHandle SelectDevice(const std::optional<std::string>& text);

// Prints the line of a selection that found no device; returns kNoDevice.
int FailSelection();

}  // namespace corvane
