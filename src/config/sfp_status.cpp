#include "config/sfp_status.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstring>

#include "console/report.h"
#include "console/status.h"
#include "device/session.h"
#include "line/device_option.h"

namespace corvane {

namespace {

void PrintLine(const SfpText& line, const SfpInfo& sfp) {
  const char* text = reinterpret_cast<const char*>(&sfp) + line.offset;
  printf("\t%s: %.*s\n", line.label, static_cast<int>(strnlen(text, line.size)), text);
}

void PrintLine(const SfpNumber& line, const SfpInfo& sfp) {
  const int32_t number = sfp.*line.field;
  if (line.names.words == nullptr) {
    printf("\t%s: %d\n", line.label, number);
    return;
  }
  const bool named =
      number >= 0 && number < line.names.count && line.names.words[number] != nullptr;
  if (named) printf("\t%s: %s\n", line.label, line.names.words[number]);
}

void PrintMode(int32_t mode) {
  if (mode == 0) puts("\tMode: Inline");
  if (mode == 1) puts("\tMode: Span");
}

void PrintThresholds(const char* name, const SfpQuantities& quantities) {
  for (const SfpQuantity& line : kSfpQuantities) {
    printf("\t%s %s: %.2f\n", name, line.threshold, static_cast<double>(quantities.*line.field));
  }
}

void PrintDiagnostics(const SfpInfo& sfp) {
  for (const SfpQuantity& line : kSfpQuantities) {
    printf("\t%s: %.2f\n", line.measured, static_cast<double>(sfp.ddm.measured.*line.field));
  }
  PrintThresholds("Low alarm", sfp.ddm.low_alarm);
  PrintThresholds("Low warning", sfp.ddm.low_warning);
  PrintThresholds("High alarm", sfp.ddm.high_alarm);
  PrintThresholds("High warning", sfp.ddm.high_warning);
}

template <size_t kCount>
void PrintFlags(const char* label, const SfpFlag (&items)[kCount], uint32_t flags) {
  printf("\t%s:", label);
  for (const SfpFlag& item : items) {
    if ((flags & item.bit) != 0) fputs(item.text, stdout);
  }
  putchar('\n');
}

void PrintModule(const SfpInfo& sfp) {
  puts("\tLink: Up");
  PrintMode(sfp.mode);
  PrintLine(kSfpVendorName, sfp);
  PrintLine(kSfpVendorOui, sfp);
  for (const SfpText& line : kSfpTexts) PrintLine(line, sfp);
  for (const SfpNumber& line : kSfpNumbers) PrintLine(line, sfp);
  PrintDiagnostics(sfp);
  PrintFlags("Alarms", kSfpAlarms, sfp.flags);
  PrintFlags("Warnings", kSfpWarnings, sfp.flags);
  PrintFlags("Status bits", kSfpStatusBits, sfp.flags);
}

}  // namespace

int SfpStatus(const CommandNode& leaf) {
  const Session session(DeviceText(leaf));
  if (!session.has_device()) return kNoDevice;
  LinkStatusRecord ports = {};
  const int status = CorvaneAPIGetLinkStatus(session.device(), &ports);
  if (status != kSuccess) return Fail(status, "Could not get link status for SFP ports status");
  if (ports.sfp_valid != 1) {
    return Fail(kUnsupported,
                "Could not get SFP ports status; maybe, it's unavailable on your device");
  }
  const int count = std::min<int>(ports.sfp_count, CORVANE_PORTS);
  for (int port = 0; port < count; ++port) {
    puts(port == 0 ? "Port A status:" : "Port B status:");
    if (ports.sfps[port].link_up == 0) {
      puts("\tLink: Down");
    } else {
      PrintModule(ports.sfps[port]);
    }
  }
  return kSuccess;
}

}  // namespace corvane
