// Deep packet inspection: frames that hold a pattern.
#pragma once

#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kDpiText =
    PatternSpec("txtdata", "dpitxt", "^.{16}$", "<string>", 3,
                "16 characters string that will act as filter\n");
// The hexadecimal patterns admit no digit but 0 and 1.
inline constexpr ParameterSpec kDpiHex = PatternSpec(
    "hexdata", "dpihex", "^[0-1a-fA-F]{32}$", "<hex values>", 3,
    "Hexadecimal values that will act as filter (ex : 054a1d8f90041235bed4054a1d8f9004)\n");
inline constexpr ParameterSpec kDpiMask = PatternSpec(
    "mask", "dpimask", "^[0x]*[0-1a-fA-F]{8}", "0xNNNNNNNN", 3,
    "32 bits hexadecimal integer value that will act as a mask for the data provided with "
    "--dpitxt or --dpihex. LSB corresponds to the first character, MSB to the last.");

inline constexpr auto kDpiParameters = Parameters(kDpiText, kDpiHex, kDpiMask);

int DpiEnable(const CommandNode& leaf);
int DpiDisable(const CommandNode& leaf);
int DpiSave(const CommandNode& leaf);
int DpiShow(const CommandNode& leaf);

}  // namespace corvane
