#include "fields.h"

#include <cctype>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace lab {

namespace {

using simulator::Field;
using simulator::FieldKind;

#define NUMBER(record, name) \
  { #name, offsetof(record, name), sizeof(record::name), FieldKind::kInteger }
#define BYTES(record, name) \
  { #name, offsetof(record, name), sizeof(record::name), FieldKind::kBytes }

// Those that the simulator's configuration does not have by field.
constexpr Field kVersions[] = {BYTES(VersionRecord, sw_firmware), BYTES(VersionRecord, driver),
                               NUMBER(VersionRecord, hw_firmware)};
constexpr Field kName[] = {{"name", 0, CORVANE_HW_FIRMWARE_NAME_SIZE, FieldKind::kText}};
constexpr Field kFirmwares[] = {
    NUMBER(HwFirmwaresDesc, count),
    {"names", offsetof(HwFirmwaresDesc, names), CORVANE_HW_FIRMWARE_NAME_SIZE, FieldKind::kGroup,
     kName, CORVANE_HW_FIRMWARES}};

struct OwnFields {
  const char* reading;
  std::span<const Field> fields;
};
constexpr OwnFields kOwn[] = {{"versions", kVersions}, {"hw_firmwares", kFirmwares}};

// The values of a record's fields; an empty name is all others. The first row that fits counts.
struct Range {
  std::string_view reading;
  std::string_view field;
  int64_t least;
  int64_t most;
};
constexpr Range kRanges[] = {
    {"hw_firmwares", "count", 0, CORVANE_HW_FIRMWARES},
    {"features", "tssource", CORVANE_TIME_SYSTEM, CORVANE_TIME_SNTP},
    {"features", "ppscomp", 0, 215},
    {"features", "portAts", 0, 2},
    {"features", "portBts", 0, 2},
    {"features", "slicing_size", 0, UINT16_MAX},
    {"features", "firmware_index", 0, CORVANE_HW_FIRMWARES - 1},
    {"features", "", 0, 1},
    {"ports_speed", "", 0, 1},
    {"packet_filter", "enable", 0, 1},
    {"packet_filter", "match_flags", 0, 0xFF},
    {"packet_filter", "either_flags", 0, 7},
    {"packet_filter", "mac_masks", 0, 0xFFF},
    {"packet_filter", "port_masks", 0, 0xF},
    {"packet_filter", "vlan_id", 0, 0xFFF},
    {"packet_filter", "", 0, UINT16_MAX},
    {"packet_type_filter", "", 0, UINT8_MAX},
    {"dpi_filter", "enabled", 0, 1},
    {"dpi_filter", "mask", 0, UINT32_MAX},
    {"counters_v2", "size", 0, INT32_MAX},
    {"counters_v2", "size_mode", CORVANE_IGNORE, 2},
    {"counters_v2", "porta", 0, 1},
    {"counters_v2", "portb", 0, 1},
    {"counters_v2", "mode", 0, 1},
    {"counters_v2", "", CORVANE_IGNORE, CORVANE_COUNT_IF_TRUE},
    {"link_status", "link_valid", 0, 1},
    {"link_status", "sfp_valid", 0, 1},
    {"link_status", "phy_valid", 0, 1},
    {"link_status", "sfp_count", 0, CORVANE_PORTS},
    {"link_status", "phy_count", 0, CORVANE_PORTS},
    {"link_status", "speed", 0, 5},
    {"timing_status", "timestamp_source", CORVANE_TIME_SYSTEM, CORVANE_TIME_SNTP},
    {"timing_status", "rtc_hour", 0, 23},
    {"timing_status", "rtc_minute", 0, 59},
    {"timing_status", "rtc_second", 0, 60},
    {"timing_status", "rtc_year", 1970, 2200},
    {"timing_status", "rtc_month", 1, 12},
    {"timing_status", "rtc_day", 1, 31},
    {"timing_status", "", 0, 255},
    {"statistics", "version", 1, 2},
};

void AddPlaces(std::span<const Field> fields, const std::string& prefix, size_t base,
               std::vector<Place>& places) {
  for (const Field& field : fields) {
    if (std::string_view(field.name).starts_with("reserved_")) continue;
    if (field.kind != FieldKind::kGroup) {
      places.push_back({prefix + field.name, field, base + field.offset});
      continue;
    }
    for (uint32_t i = 0; i < field.count; ++i) {
      const std::string index = field.count == 1 ? "" : "[" + std::to_string(i) + "]";
      AddPlaces(field.fields, std::string(prefix).append(field.name).append(index).append("."),
                base + field.offset + size_t{i} * field.width, places);
    }
  }
}

std::string FloatText(const Place& place, const Bytes& record) {
  float single = 0;
  double value = 0;
  if (place.field.width == sizeof single) {
    memcpy(&single, &record[place.offset], sizeof single);
    value = single;
  } else {
    memcpy(&value, &record[place.offset], sizeof value);
  }
  char text[40];
  snprintf(text, sizeof text, "%g", value);
  return text;
}

}  // namespace

std::span<const Field> FieldsOf(const Reading& reading) {
  for (const OwnFields& own : kOwn) {
    if (std::string_view(own.reading) == reading.name) return own.fields;
  }
  const std::span<const Field> fields = simulator::FindLayout(reading.name)->fields;
  return reading.count == 1 ? fields : fields[0].fields;
}

std::vector<Place> PlacesOf(const Reading& reading) {
  std::vector<Place> places;
  AddPlaces(FieldsOf(reading), "", 0, places);
  return places;
}

int64_t NumberAt(const Place& place, const Bytes& record) {
  int64_t number = 0;
  memcpy(&number, &record[place.offset], place.field.width);
  // Only these tell a negative number apart: -1 is an ignored condition.
  return place.field.width == 4 && number == UINT32_MAX ? -1 : number;
}

std::string TextOf(const Place& place, const Bytes& record) {
  if (place.field.kind == FieldKind::kInteger) return std::to_string(NumberAt(place, record));
  if (place.field.kind == FieldKind::kFloat) return FloatText(place, record);
  std::string text;
  for (size_t i = place.offset; i < place.offset + place.field.width; ++i) {
    char digits[3];
    snprintf(digits, sizeof digits, "%02x", record[i]);
    const bool letters = place.field.kind == FieldKind::kText;
    if (letters && record[i] == 0) break;
    text += letters ? std::string(1, isprint(record[i]) != 0 ? static_cast<char>(record[i]) : '?')
                    : digits;
  }
  return place.field.kind == FieldKind::kText ? "'" + text + "'" : text;
}

bool FindRange(const Reading& reading, const Place& place, int64_t& least, int64_t& most) {
  if (place.field.kind != FieldKind::kInteger) return false;
  for (const Range& range : kRanges) {
    if (range.reading != reading.name) continue;
    if (!range.field.empty() && range.field != place.field.name) continue;
    least = range.least;
    most = range.most;
    return true;
  }
  return false;
}

}  // namespace lab
