// Deep packet inspection: frames that hold a pattern.
#pragma once

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kDpiCommand = "dpi";

// The pattern is a text when all of it can be printed, else hexadecimal digits.
std::optional<Value> ShowDpiText(const DpiFilterRecord& filter);
std::string StoreDpiText(const Value& value, const DeviceKind& device, DpiFilterRecord& filter);
std::optional<Value> ShowDpiHex(const DpiFilterRecord& filter);
std::string StoreDpiHex(const Value& value, const DeviceKind& device, DpiFilterRecord& filter);
std::optional<Value> ShowDpiMask(const DpiFilterRecord& filter);
std::string StoreDpiMask(const Value& value, const DeviceKind& device, DpiFilterRecord& filter);

inline constexpr CodecRow<DpiFilterRecord> kDpiText = {
    PatternSpec("txtdata", "dpitxt", "^.{16}$", "<string>", 3,
                "16 characters string that will act as filter\n"),
    ShowDpiText, StoreDpiText};
// On the command line the hexadecimal patterns admit no digit but 0 and 1.
inline constexpr CodecRow<DpiFilterRecord> kDpiHex = {
    PatternSpec(
        "hexdata", "dpihex", "^[0-1a-fA-F]{32}$", "<hex values>", 3,
        "Hexadecimal values that will act as filter (ex : 054a1d8f90041235bed4054a1d8f9004)\n"),
    ShowDpiHex, StoreDpiHex};
inline constexpr CodecRow<DpiFilterRecord> kDpiMask = {
    PatternSpec("mask", "dpimask", "^[0x]*[0-1a-fA-F]{8}", "0xNNNNNNNN", 3,
                "32 bits hexadecimal integer value that will act as a mask for the data provided "
                "with --dpitxt or --dpihex. LSB corresponds to the first character, MSB to the "
                "last."),
    ShowDpiMask, StoreDpiMask};

inline constexpr auto kDpiParameters = Parameters(kDpiText, kDpiHex, kDpiMask);

// In a file the whole filter is enabled unless it says otherwise; it starts from kDpiWhole, whose
// mask has all 16 characters.
inline constexpr DisableRow<DpiFilterRecord> kDpiDisable = {
    FlagSpec("disable", "Disable deep packet inspection"), &DpiFilterRecord::enabled};
inline constexpr auto kDpiRows = std::tie(kDpiDisable, kDpiText, kDpiHex, kDpiMask);
inline constexpr DpiFilterRecord kDpiWhole = {.enabled = 1, .mask = 0xFFFF};

int DpiEnable(const CommandNode& leaf);
int DpiDisable(const CommandNode& leaf);
int DpiSave(const CommandNode& leaf);
int DpiShow(const CommandNode& leaf);

}  // namespace corvane
