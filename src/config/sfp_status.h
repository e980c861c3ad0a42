// What is known of SFP modules: identification, diagnostics, alarms.
#pragma once

#include <cstddef>

#include "device/corvane_api.h"
#include "line/node.h"

namespace corvane {

// The words for the codes from 0 on; null for a code that has none.
struct SfpWords {
  const char* const* words;
  int32_t count;
};

template <size_t kCount>
constexpr SfpWords SfpWordsOf(const char* const (&words)[kCount]) {
  return {words, kCount};
}

inline constexpr const char* kSfpEncodings[] = {"Unspecified", "8B10B",           "4B5B",  "NRZ",
                                                "Manchester",  "SONET_Scrambled", "64B66B"};

inline constexpr const char* kSfpRateIds[] = {
    "Unspecified", "SFF_8079", "SFF_8431_RXOnly", nullptr, "SFF_8431_TXOnly", nullptr,
    "SFF_8431",    nullptr,    "FC_PI_5_RXOnly",  nullptr, "FC_PI_5"};

inline constexpr const char* kSfpIdentifiers[] = {
    "Unknown", "GBIC", "SolderedToMB", "SFP_SFPPlus", "300pinXBI", "XENPAK",   "XFP", "XFF",
    "XFP_E",   "XPAK", "X2",           "DWDM_SFP",    "QSFP",      "QSFPPlus", "CXP"};

inline constexpr const char* kSfpConnectors[] = {"Unknown",
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

inline constexpr const char* kSfpMonitoringTypes[] = {"IntCalibrated_AVPower", "IntCalibrated_OMA",
                                                      "ExtCalibrated_AVPower", "ExtCalibrated_OMA",
                                                      "None"};

inline constexpr const char* kSfpCompliances[] = {"Undefined", "Rev9_3",  "Rev9_5",
                                                  "Rev10_2",   "Rev10_4", "Rev_11_0"};

struct SfpText {
  const char* label;
  size_t offset;
  size_t size;
};

#define SFP_TEXT(label, field) \
  { label, offsetof(SfpInfo, field), sizeof(SfpInfo::field) }

inline constexpr SfpText kSfpVendorName = SFP_TEXT("Vendor name", vendor_name);
inline constexpr SfpText kSfpTexts[] = {
    SFP_TEXT("Model", model),
    SFP_TEXT("Revision", revision),
    SFP_TEXT("Date code", date_code),
    SFP_TEXT("Serial No", serial_no),
};
#undef SFP_TEXT

// A number, or the word for it: a number without a word has no line.
struct SfpNumber {
  const char* label;
  int32_t SfpInfo::*field;
  SfpWords names = {nullptr, 0};
};

inline constexpr SfpNumber kSfpVendorOui = {"Vendor OUI", &SfpInfo::vendor_oui};
inline constexpr SfpNumber kSfpNumbers[] = {
    {"Nominal rate", &SfpInfo::nominal_rate},
    {"Maximum bitrate", &SfpInfo::max_bitrate},
    {"Minimum bitrate", &SfpInfo::min_bitrate},
    {"Encoding", &SfpInfo::encoding, SfpWordsOf(kSfpEncodings)},
    {"Rate ID", &SfpInfo::rate_id, SfpWordsOf(kSfpRateIds)},
    {"Module identifier", &SfpInfo::identifier, SfpWordsOf(kSfpIdentifiers)},
    {"Extended identifier", &SfpInfo::ext_identifier},
    {"Connector", &SfpInfo::connector, SfpWordsOf(kSfpConnectors)},
    {"Wave length nm", &SfpInfo::wavelength_nm},
    {"Monitoring type", &SfpInfo::monitoring_type, SfpWordsOf(kSfpMonitoringTypes)},
    {"SFF8472 compliance", &SfpInfo::sff8472_compliance, SfpWordsOf(kSfpCompliances)},
    {"Fibre 9/125um length", &SfpInfo::length_smf},
    {"OM2 Fibre 50/125um length", &SfpInfo::length_om2},
    {"OM1 Fibre 62.5/125um length", &SfpInfo::length_om1},
    {"Copper/Active cable length", &SfpInfo::length_copper},
    {"Fibre 50/125um length", &SfpInfo::length_om3},
};

struct SfpQuantity {
  const char* measured;   // the label of the measurement
  const char* threshold;  // what follows the name of a threshold
  float SfpQuantities::*field;
};

inline constexpr SfpQuantity kSfpQuantities[] = {
    {"Temperature (C)", "temperature (C)", &SfpQuantities::temperature},
    {"Voltage (V)", "voltage (V)", &SfpQuantities::voltage},
    {"TX bias (mA)", "TX bias (mA)", &SfpQuantities::tx_bias},
    {"TX power (mW)", "TX power (mW)", &SfpQuantities::tx_power},
    {"RX power (mW)", "RX power (mW)", &SfpQuantities::rx_power},
};

struct SfpFlag {
  uint32_t bit;
  const char* text;
};

inline constexpr SfpFlag kSfpAlarms[] = {
    {0x1, " Temperature,"}, {0x2, " Voltage,"},   {0x4, " TX bias,"},
    {0x8, " TX power,"},    {0x10, " RX power,"},
};

// The second blank before TX power is part of the report.
inline constexpr SfpFlag kSfpWarnings[] = {
    {0x20, " Temperature,"}, {0x40, " Voltage,"},   {0x80, " TX bias,"},
    {0x100, "  TX power,"},  {0x200, " RX power,"},
};

inline constexpr SfpFlag kSfpStatusBits[] = {
    {0x400, " TX_DISABLE Implementation,"},
    {0x800, " TX_FAULT Implementation,"},
    {0x1000, " Soft RX_LOS monitoring,"},
};

int SfpStatus(const CommandNode& leaf);

}  // namespace corvane
