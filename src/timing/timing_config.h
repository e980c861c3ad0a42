// Where the timestamp clock gets its time and how it is kept.
#pragma once

#include <cstddef>

#include "device/corvane_api.h"
#include "line/settings.h"

namespace corvane {

inline constexpr const char* kTimingCommand = "timing";

inline constexpr Choice kInitializationChoices[] = {
    {"system", CORVANE_TIME_SYSTEM, "Initialize from system time"},
    {"rtc", CORVANE_TIME_RTC, "Initialize from RTC"},
    {"gps", CORVANE_TIME_GPS, "Initialize from GPS"},
    {"none", CORVANE_TIME_NONE, "Do not initialize"},
    {nullptr, CORVANE_TIME_MANUAL, "Initialize manually"},
};

inline constexpr Choice kPlaceChoices[] = {
    {"capture", 0, "Capture"}, {"ingress", 1, "Ingress"}, {"egress", 2, "Egress"}};

using TimingChoice = ChoiceRow<FeaturesRecord>;

inline constexpr TimingChoice kTimestampInitialization = {
    PatternSpec("tssource", "tssource", "^none|system|gps|rtc$", "<none|system|gps|rtc>", 3,
                "Timestamp source\n"),
    "Timestamp initialization", &FeaturesRecord::tssource, kInitializationChoices};

inline constexpr SwitchRow<FeaturesRecord> kTimingSwitches[] = {
    {SwitchSpec("waitforsync", "Wait for sync\n"), "Wait for sync", &FeaturesRecord::waitforsync},
    {SwitchSpec("forcepps", "Force PPS generation\n"), "Force PPS generation",
     &FeaturesRecord::forcepps},
    {SwitchSpec("ppsoutput", "Set PPS port as output\n"), "PPS port output",
     &FeaturesRecord::ppsoutput},
};

// By the code of the source in use.
inline constexpr const char* kTimestampSources[] = {
    "System clock", "RTC", "GPS", "Not initialized", "Manual timestamp", "SNTP"};

// In ns.
std::optional<Value> ShowCompensation(const FeaturesRecord& features);
std::string StoreCompensation(const Value& value, const DeviceKind& device,
                              FeaturesRecord& features);

inline constexpr CodecRow<FeaturesRecord> kPpsCompensation = {
    RealSpec("ppscomp", "<value>", "PPS compensation in ns. [-50;0]\n"),
    ShowCompensation,
    StoreCompensation,
    {{{offsetof(FeaturesRecord, ppscomp), sizeof FeaturesRecord::ppscomp}}}};

constexpr ParameterSpec TimestampPlaceSpec(const char* name, const char* glossary) {
  return PatternSpec(name, name, "^capture|ingress|egress$", "<capture|ingress|egress>", 3,
                     glossary);
}

// In the order of the ports.
inline constexpr TimingChoice kPortTimestampPlaces[] = {
    {TimestampPlaceSpec("portAts", "Port A timestamp generation place\n"), "Port A",
     &FeaturesRecord::portAts, kPlaceChoices},
    {TimestampPlaceSpec("portBts", "Port B timestamp generation place\n"), "Port B",
     &FeaturesRecord::portBts, kPlaceChoices},
};

inline constexpr auto kTimingRows =
    std::tie(kTimestampInitialization, kTimingSwitches, kPpsCompensation, kPortTimestampPlaces);
inline constexpr auto kTimingConfigParameters = ParametersOf(kTimingRows);

inline constexpr const char* kTimingUnsupported =
    "Your device does not support timing information and configuration";

int TimingConfig(const CommandNode& leaf);
int TimingSave(const CommandNode& leaf);
int TimingStatus(const CommandNode& leaf);

}  // namespace corvane
