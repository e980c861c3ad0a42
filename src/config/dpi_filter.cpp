#include "config/dpi_filter.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <string>

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

bool ApplyPattern(const CommandNode& leaf, DpiFilterRecord& filter) {
  const std::string text = TextOr(leaf, kDpiText.key, "");
  if (IsGiven(leaf, kDpiText.key)) {
    memset(filter.data, 0, sizeof filter.data);
    memcpy(filter.data, text.data(), std::min(text.size(), sizeof filter.data));
    return true;
  }
  // The scan reads the text parameter, which is empty here: --dpihex is always refused, as in
  // every release.
  return !IsGiven(leaf, kDpiHex.key) || ScanHex(text, filter);
}

bool ApplyMask(const CommandNode& leaf, DpiFilterRecord& filter) {
  if (!IsGiven(leaf, kDpiMask.key)) return true;
  const std::string text = TextOr(leaf, kDpiMask.key, "");
  char* end = nullptr;
  const unsigned long mask = strtoul(text.c_str(), &end, 16);
  if (text.empty() || *end != '\0') return false;
  filter.mask = static_cast<uint32_t>(mask);
  return true;
}

}  // namespace

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
