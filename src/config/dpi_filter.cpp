#include "config/dpi_filter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>
#include <string_view>

#include "console/report.h"
#include "console/status.h"
#include "device/capabilities.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

// Success when there is a device that can filter.
int CheckDevice(const Session& session) {
  if (!session.has_device()) return kNoDevice;
  if (Supports(session.device(), CORVANE_CAP_FILTER)) return kSuccess;
  return Fail(kUnsupported, "Your device does not support filtering");
}

int GetFilter(const Session& session, DpiFilterRecord& filter) {
  int status = CheckDevice(session);
  if (status != kSuccess) return status;
  status = CorvaneAPIGetDpiFilter(session.device(), &filter);
  if (status != kSuccess) puts("Failed to get Corvane DPI Filter configuration");
  return status;
}

int SetFilter(DeviceHandle device, const DpiFilterRecord& filter) {
  const int status = CorvaneAPISetDpiFilter(device, filter);
  if (status != kSuccess) puts("Failed to set Corvane DPI Filter configuration");
  return status;
}

// Sixteen bytes from groups of two hexadecimal digits.
bool ScanHex(const std::string& text, DpiFilterRecord& filter) {
  for (size_t i = 0; i < std::size(filter.data); ++i) {
    unsigned byte = 0;
    if (2 * i >= text.size() || sscanf(text.c_str() + 2 * i, "%02x", &byte) != 1) return false;
    filter.data[i] = static_cast<uint8_t>(byte);
  }
  return true;
}

void SetText(const std::string& text, DpiFilterRecord& filter) {
  memset(filter.data, 0, sizeof filter.data);
  memcpy(filter.data, text.data(), std::min(text.size(), sizeof filter.data));
}

bool IsPrintable(const DpiFilterRecord& filter) {
  return std::ranges::all_of(filter.data, [](uint8_t byte) { return byte >= ' ' && byte <= '~'; });
}

bool HasPattern(const DpiFilterRecord& filter) {
  return std::ranges::any_of(filter.data, [](uint8_t byte) { return byte != 0; });
}

bool ApplyPattern(const CommandNode& leaf, DpiFilterRecord& filter) {
  const std::string text = TextOr(leaf, kDpiText.parameter.key, "");
  if (IsGiven(leaf, kDpiText.parameter.key)) {
    SetText(text, filter);
    return true;
  }
  // The scan reads the text parameter, which is empty here: --dpihex is always refused, as in
  // every release.
  return !IsGiven(leaf, kDpiHex.parameter.key) || ScanHex(text, filter);
}

bool SetMask(const std::string& text, DpiFilterRecord& filter) {
  char* end = nullptr;
  const unsigned long mask = strtoul(text.c_str(), &end, 16);
  if (text.empty() || *end != '\0') return false;
  filter.mask = static_cast<uint32_t>(mask);
  return true;
}

bool ApplyMask(const CommandNode& leaf, DpiFilterRecord& filter) {
  return !IsGiven(leaf, kDpiMask.parameter.key) ||
         SetMask(TextOr(leaf, kDpiMask.parameter.key, ""), filter);
}

bool IsHex(std::string_view text, size_t digits) {
  return text.size() == digits &&
         text.find_first_not_of("0123456789abcdefABCDEF") == std::string_view::npos;
}

constexpr const char* kOnePattern = "dpitxt or dpihex, not both";

}  // namespace

std::optional<Value> ShowDpiText(const DpiFilterRecord& filter) {
  if (!IsPrintable(filter)) return std::nullopt;
  return std::string(std::begin(filter.data), std::end(filter.data));
}

std::string StoreDpiText(const Value& value, const DeviceKind&, DpiFilterRecord& filter) {
  const auto* text = std::get_if<std::string>(&value);
  if (text == nullptr || text->size() != sizeof filter.data) return "a text of 16 characters";
  if (HasPattern(filter)) return kOnePattern;
  SetText(*text, filter);
  return "";
}

std::optional<Value> ShowDpiHex(const DpiFilterRecord& filter) {
  if (IsPrintable(filter) || !HasPattern(filter)) return std::nullopt;
  std::string digits;
  for (const uint8_t byte : filter.data) {
    for (const int digit : {byte >> 4, byte & 0xF}) digits += "0123456789abcdef"[digit];
  }
  return digits;
}

std::string StoreDpiHex(const Value& value, const DeviceKind&, DpiFilterRecord& filter) {
  const auto* digits = std::get_if<std::string>(&value);
  if (digits == nullptr || !IsHex(*digits, 2 * sizeof filter.data)) {
    return "a text of 32 hexadecimal digits";
  }
  if (HasPattern(filter)) return kOnePattern;
  ScanHex(*digits, filter);
  return "";
}

std::optional<Value> ShowDpiMask(const DpiFilterRecord& filter) {
  char text[11];
  snprintf(text, sizeof text, "0x%08x", filter.mask);
  return text;
}

std::string StoreDpiMask(const Value& value, const DeviceKind&, DpiFilterRecord& filter) {
  const auto* text = std::get_if<std::string>(&value);
  const size_t start = text != nullptr && text->starts_with("0x") ? 2 : 0;
  if (const auto number = NumberIn(value, 0, UINT32_MAX)) {
    filter.mask = static_cast<uint32_t>(*number);
  } else if (text == nullptr || !IsHex(std::string_view(*text).substr(start), 8) ||
             !SetMask(*text, filter)) {
    return "8 hexadecimal digits, such as \"0x0000ffff\"";
  }
  return "";
}

int DpiEnable(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  DpiFilterRecord filter = {};
  const int status = GetFilter(session, filter);
  if (status != kSuccess) return status;
  filter.enabled = 1;
  if (!ApplyPattern(leaf, filter)) {
    return Fail(kBadValue, "Invalid hexadecimal value supplied");
  }
  if (!ApplyMask(leaf, filter)) return Fail(kBadValue, "Invalid mask value supplied");
  return SetFilter(session.device(), filter);
}

int DpiDisable(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  DpiFilterRecord filter = {};
  const int status = GetFilter(session, filter);
  if (status != kSuccess) return status;
  filter.enabled = 0;
  return SetFilter(session.device(), filter);
}

int DpiSave(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  int status = CheckDevice(session);
  if (status != kSuccess) return status;
  status = CorvaneAPISaveDpiFilter(session.device());
  if (status != kSuccess) puts("Failed to save Corvane DPI Filter configuration");
  return status;
}

int DpiShow(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  DpiFilterRecord filter = {};
  const int status = GetFilter(session, filter);
  if (status != kSuccess) return status;
  puts("DPI Filter Configuration : ");
  printf("\tStatus : %s\n", EnabledOrDisabled(filter.enabled == 1));
  printf("\tFilter Data : ");
  for (const uint8_t byte : filter.data) printf("%02x", byte);
  printf("\n\tFilter Mask : 0x%08x\n", filter.mask);
  return kSuccess;
}

}  // namespace corvane
