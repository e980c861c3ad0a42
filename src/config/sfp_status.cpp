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

// The words for the codes from 0 on; null for a code that has none.
struct Names {
  const char* const* words;
  int32_t count;
};

template <size_t kCount>
constexpr Names NamesOf(const char* const (&words)[kCount]) {
  return {words, kCount};
}

constexpr const char* kEncodings[] = {"Unspecified", "8B10B",           "4B5B",  "NRZ",
                                      "Manchester",  "SONET_Scrambled", "64B66B"};

constexpr const char* kRateIds[] = {"Unspecified",     "SFF_8079", "SFF_8431_RXOnly", nullptr,
                                    "SFF_8431_TXOnly", nullptr,    "SFF_8431",        nullptr,
                                    "FC_PI_5_RXOnly",  nullptr,    "FC_PI_5"};

constexpr const char* kIdentifiers[] = {
    "Unknown", "GBIC", "SolderedToMB", "SFP_SFPPlus", "300pinXBI", "XENPAK",   "XFP", "XFF",
    "XFP_E",   "XPAK", "X2",           "DWDM_SFP",    "QSFP",      "QSFPPlus", "CXP"};

constexpr const char* kConnectors[] = {"Unknown",
                                       "SC",
                                       "FCStyle1Copper",
                                       "FCStyle2Copper",
                                       "BNC_TNC",
                                       "FCCoax",
                                       "FiberJack",
                                       "LC",
                                       "MT_RJ",
                                       "MU",
                                       "SG",
                                       "OpticalPigtail",
                                       "MPOParallelOptic",
                                       "HSSDC_II",
                                       "CopperPigtail",
                                       "RJ45"};

constexpr const char* kMonitoringTypes[] = {"IntCalibrated_AVPower", "IntCalibrated_OMA",
                                            "ExtCalibrated_AVPower", "ExtCalibrated_OMA", "None"};

constexpr const char* kCompliances[] = {"Undefined", "Rev9_3",  "Rev9_5",
                                        "Rev10_2",   "Rev10_4", "Rev_11_0"};

struct TextLine {
  const char* label;
  size_t offset;
  size_t size;
};

#define SFP_TEXT(label, field) \
  { label, offsetof(SfpInfo, field), sizeof(SfpInfo::field) }

constexpr TextLine kVendorName = SFP_TEXT("Vendor name", vendor_name);
constexpr TextLine kModelLines[] = {
    SFP_TEXT("Model", model),
    SFP_TEXT("Revision", revision),
    SFP_TEXT("Date code", date_code),
    SFP_TEXT("Serial No", serial_no),
};

// A number, or the word for it: a number without a word has no line.
struct NumberLine {
  const char* label;
  int32_t SfpInfo::*field;
  Names names = {nullptr, 0};
};

constexpr NumberLine kVendorOui = {"Vendor OUI", &SfpInfo::vendor_oui};
constexpr NumberLine kNumberLines[] = {
    {"Nominal rate", &SfpInfo::nominal_rate},
    {"Maximum bitrate", &SfpInfo::max_bitrate},
    {"Minimum bitrate", &SfpInfo::min_bitrate},
    {"Encoding", &SfpInfo::encoding, NamesOf(kEncodings)},
    {"Rate ID", &SfpInfo::rate_id, NamesOf(kRateIds)},
    {"Module identifier", &SfpInfo::identifier, NamesOf(kIdentifiers)},
    {"Extended identifier", &SfpInfo::ext_identifier},
    {"Connector", &SfpInfo::connector, NamesOf(kConnectors)},
    {"Wave length nm", &SfpInfo::wavelength_nm},
    {"Monitoring type", &SfpInfo::monitoring_type, NamesOf(kMonitoringTypes)},
    {"SFF8472 compliance", &SfpInfo::sff8472_compliance, NamesOf(kCompliances)},
    {"Fibre 9/125um length", &SfpInfo::length_smf},
    {"OM2 Fibre 50/125um length", &SfpInfo::length_om2},
    {"OM1 Fibre 62.5/125um length", &SfpInfo::length_om1},
    {"Copper/Active cable length", &SfpInfo::length_copper},
    {"Fibre 50/125um length", &SfpInfo::length_om3},
};

struct QuantityLine {
  const char* measured;   // the label of the measurement
  const char* threshold;  // what follows the name of a threshold
  float SfpQuantities::*field;
};

constexpr QuantityLine kQuantityLines[] = {
    {"Temperature (C)", "temperature (C)", &SfpQuantities::temperature},
    {"Voltage (V)", "voltage (V)", &SfpQuantities::voltage},
    {"TX bias (mA)", "TX bias (mA)", &SfpQuantities::tx_bias},
    {"TX power (mW)", "TX power (mW)", &SfpQuantities::tx_power},
    {"RX power (mW)", "RX power (mW)", &SfpQuantities::rx_power},
};

struct FlagItem {
  uint32_t bit;
  const char* text;
};

constexpr FlagItem kAlarms[] = {
    {0x1, " Temperature,"}, {0x2, " Voltage,"},   {0x4, " TX bias,"},
    {0x8, " TX power,"},    {0x10, " RX power,"},
};

// The second blank before TX power is part of the report.
constexpr FlagItem kWarnings[] = {
    {0x20, " Temperature,"}, {0x40, " Voltage,"},   {0x80, " TX bias,"},
    {0x100, "  TX power,"},  {0x200, " RX power,"},
};

constexpr FlagItem kStatusBits[] = {
    {0x400, " TX_DISABLE Implementation,"},
    {0x800, " TX_FAULT Implementation,"},
    {0x1000, " Soft RX_LOS monitoring,"},
};

void PrintLine(const TextLine& line, const SfpInfo& sfp) {
  const char* text = reinterpret_cast<const char*>(&sfp) + line.offset;
  printf("\t%s: %.*s\n", line.label, static_cast<int>(strnlen(text, line.size)), text);
}

void PrintLine(const NumberLine& line, const SfpInfo& sfp) {
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
  for (const QuantityLine& line : kQuantityLines) {
    printf("\t%s %s: %.2f\n", name, line.threshold, static_cast<double>(quantities.*line.field));
  }
}

void PrintDiagnostics(const SfpInfo& sfp) {
  for (const QuantityLine& line : kQuantityLines) {
    printf("\t%s: %.2f\n", line.measured, static_cast<double>(sfp.ddm.measured.*line.field));
  }
  PrintThresholds("Low alarm", sfp.ddm.low_alarm);
  PrintThresholds("Low warning", sfp.ddm.low_warning);
  PrintThresholds("High alarm", sfp.ddm.high_alarm);
  PrintThresholds("High warning", sfp.ddm.high_warning);
}

template <size_t kCount>
void PrintFlags(const char* label, const FlagItem (&items)[kCount], uint32_t flags) {
  printf("\t%s:", label);
  for (const FlagItem& item : items) {
    if ((flags & item.bit) != 0) fputs(item.text, stdout);
  }
  putchar('\n');
}

void PrintModule(const SfpInfo& sfp) {
  puts("\tLink: Up");
  PrintMode(sfp.mode);
  PrintLine(kVendorName, sfp);
  PrintLine(kVendorOui, sfp);
  for (const TextLine& line : kModelLines) PrintLine(line, sfp);
  for (const NumberLine& line : kNumberLines) PrintLine(line, sfp);
  PrintDiagnostics(sfp);
  PrintFlags("Alarms", kAlarms, sfp.flags);
  PrintFlags("Warnings", kWarnings, sfp.flags);
  PrintFlags("Status bits", kStatusBits, sfp.flags);
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
