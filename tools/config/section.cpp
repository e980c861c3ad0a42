#include "section.h"

#include <algorithm>
#include <cstring>
#include <nlohmann/json.hpp>

#include "capture/counters_v2.h"
#include "config/dpi_filter.h"
#include "config/features.h"
#include "config/port_control.h"
#include "device/capabilities.h"
#include "filter/packet_filter.h"
#include "filter/packet_type_filter.h"
#include "timing/timing_config.h"

using namespace corvane;

namespace config {

namespace {

constexpr const char* kBytesWord = "bytes ";

template <class Type, const char* (*kCheck)(Type& block)>
const char* Check(void* block) {
  return kCheck(*static_cast<Type*>(block));
}

const char* CheckPortBlock(PortControl& port) {
  return CheckPort(port);
}

// The bytes of a whole are all but those kept; of other sections, those of their settings.
Bytes MaskOf(const Section& section) {
  Bytes mask(section.size, section.whole != nullptr ? 0xFF : 0);
  for (const Extent& extent : section.kept) memset(&mask[extent.offset], 0, extent.size);
  if (section.whole != nullptr) return mask;
  for (const Setting& setting : *section.settings) {
    for (const Extent& extent : setting.extents) memset(&mask[extent.offset], 0xFF, extent.size);
  }
  return mask;
}

void AddPorts(std::vector<Section>& sections) {
  static const auto settings = SettingsOf<PortControl>(std::tie(kPortSwitches));
  for (size_t port = 0; port < CORVANE_PORTS; ++port) {
    sections.push_back({.name = std::string(kPortControlCommand) + "." + kPortWords[port],
                        .record = kPorts,
                        .offset = port * sizeof(PortControl),
                        .size = sizeof(PortControl),
                        .settings = &settings,
                        .check = Check<PortControl, CheckPortBlock>});
  }
}

// The last counter is the capture's.
void AddCounters(std::vector<Section>& sections) {
  static const auto settings = SettingsOf<CounterV2Config>(kCounterRows);
  for (size_t index = 0; index < kReservedCounter; ++index) {
    sections.push_back(
        {.name = std::string(kCountersCommand) + "." + std::to_string(index),
         .record = kCounters + index,
         .size = sizeof(CounterV2Config),
         .settings = &settings,
         .whole = &kCounterWhole,
         .kept = {ExtentOf(&CounterV2Config::index), ExtentOf(&CounterV2Config::reserved_24)},
         .check = Check<CounterV2Config, CompleteCounter>});
  }
}

std::vector<Section> MakeSections() {
  static const auto features = SettingsOf<FeaturesRecord>(kFeatureRows);
  static const auto timing = SettingsOf<FeaturesRecord>(kTimingRows);
  static const auto types = SettingsOf<PacketTypeFilterRecord>(kPacketTypeRows);
  static const auto filter = SettingsOf<PacketFilterRecord>(kFilterRows);
  static const auto dpi = SettingsOf<DpiFilterRecord>(kDpiRows);
  std::vector<Section> sections = {
      {kFeaturesCommand, kFeatures, 0, sizeof(FeaturesRecord), 0, &features},
      {kTimingCommand, kFeatures, 0, sizeof(FeaturesRecord), CORVANE_CAP_GPS, &timing},
      {kFilterCommand,
       kPacketFilter,
       0,
       sizeof(PacketFilterRecord),
       0,
       &filter,
       &kFilterWhole,
       {ExtentOf(&PacketFilterRecord::reserved_65), ExtentOf(&PacketFilterRecord::reserved_70)}},
      {kPacketTypesCommand, kPacketTypes, 0, sizeof(PacketTypeFilterRecord), 0, &types},
      {kDpiCommand,
       kDpiFilter,
       0,
       sizeof(DpiFilterRecord),
       0,
       &dpi,
       &kDpiWhole,
       {ExtentOf(&DpiFilterRecord::reserved_20)}}};
  AddPorts(sections);
  AddCounters(sections);
  for (Section& section : sections) section.mask = MaskOf(section);
  return sections;
}

// ---- Bytes as text: the word, then their hexadecimal digits.

std::string TextOfBytes(const Bytes& bytes) {
  std::string text = kBytesWord;
  for (const uint8_t byte : bytes) {
    for (const int digit : {byte >> 4, byte & 0xF}) text += "0123456789abcdef"[digit];
  }
  return text;
}

// Nothing unless there are that many.
std::optional<Bytes> BytesOf(const std::string& text, size_t size) {
  const std::string digits = text.substr(strlen(kBytesWord));
  if (digits.size() != 2 * size ||
      digits.find_first_not_of("0123456789abcdefABCDEF") != digits.npos) {
    return std::nullopt;
  }
  Bytes bytes;
  for (size_t i = 0; i < size; ++i) {
    bytes.push_back(static_cast<uint8_t>(std::stoi(digits.substr(2 * i, 2), nullptr, 16)));
  }
  return bytes;
}

std::string ExpectedBytes(size_t size) {
  return "\"" + std::string(kBytesWord) + "\" and " + std::to_string(2 * size) +
         " hexadecimal digits";
}

size_t SizeOf(const Setting& setting) {
  size_t size = 0;
  for (const Extent& extent : setting.extents) size += extent.size;
  return size;
}

Bytes Extract(const Setting& setting, const uint8_t* block) {
  Bytes bytes;
  for (const Extent& extent : setting.extents) {
    bytes.insert(bytes.end(), block + extent.offset, block + extent.offset + extent.size);
  }
  return bytes;
}

void Replace(const Setting& setting, const uint8_t* bytes, uint8_t* block) {
  for (const Extent& extent : setting.extents) {
    memcpy(block + extent.offset, bytes, extent.size);
    bytes += extent.size;
  }
}

// ---- Wishes

// A device that lacks the capability takes only what it does anyhow.
bool Takes(const Setting& setting, const DeviceKind& kind, const Bytes& block) {
  if ((kind.capabilities & setting.needs) == setting.needs) return true;
  if (setting.without == Without::kAnything) return true;
  Bytes bytes = Extract(setting, block.data());
  if (bytes.empty()) return false;
  if (setting.without == Without::kOne && bytes[0]-- != 1) return false;
  return std::ranges::all_of(bytes, [](uint8_t byte) { return byte == 0; });
}

// What is expected instead; empty when the value is stored.
std::string StoreOne(const Setting& setting, const Value& value, const DeviceKind& kind,
                     Bytes& block) {
  if (!IsBytes(value) || setting.extents.empty()) {
    return setting.store(value, kind, block.data());
  }
  const auto bytes = BytesOf(std::get<std::string>(value), SizeOf(setting));
  if (!bytes) return ExpectedBytes(SizeOf(setting));
  Replace(setting, bytes->data(), block.data());
  return "";
}

std::string Quote(const Wish& wish, const Assignment& assignment) {
  return wish.section->name + "." + assignment.key +
         (assignment.value ? " = " + TextOf(*assignment.value) : "");
}

// False when the wish is for all devices and this one cannot do the whole of it.
bool StoreSetting(const Wish& wish, const Setting& setting, const Assignment& assignment,
                  const DeviceKind& kind, Bytes& block, Mistakes& mistakes) {
  const Bytes before = block;
  const std::string expected = assignment.value ? StoreOne(setting, *assignment.value, kind, block)
                                                : "a switch, a number or a text";
  if (!expected.empty()) {
    mistakes.push_back({assignment.line, Quote(wish, assignment) + ": expected " + expected});
    return true;
  }
  if (IsBytes(*assignment.value) || Takes(setting, kind, block)) return true;
  if (wish.for_all && wish.section->whole != nullptr) return false;
  block = before;
  if (!wish.for_all) {
    mistakes.push_back({assignment.line, Quote(wish, assignment) + ": the device lacks " +
                                             NamesOf(setting.needs & ~kind.capabilities)});
  }
  return true;
}

bool StoreSettings(const Wish& wish, const DeviceKind& kind, Bytes& block, Mistakes& mistakes) {
  for (const Setting& setting : *wish.section->settings) {
    for (const Assignment& assignment : wish.settings) {
      if (assignment.key != setting.parameter->long_option) continue;
      if (!StoreSetting(wish, setting, assignment, kind, block, mistakes)) return false;
    }
  }
  return true;
}

Bytes BlockOf(const Section& section, const Bytes& record) {
  const auto start = record.begin() + static_cast<long>(section.offset);
  return {start, start + static_cast<long>(section.size)};
}

void Merge(const Section& section, const Bytes& block, Bytes& record) {
  for (size_t i = 0; i < section.size; ++i) {
    if (section.mask[i] != 0) record[section.offset + i] = block[i];
  }
}

// True when the wish alone gives the block, whatever was there before.
bool Gives(const Wish& wish, const DeviceKind& kind, const Setting* only, const Bytes& record) {
  const Section& section = *wish.section;
  Bytes other = record;
  if (only != nullptr) Replace(*only, Bytes(SizeOf(*only)).data(), &other[section.offset]);
  Mistakes mistakes;
  Fulfil(wish, kind, only == nullptr, other, mistakes);
  return mistakes.empty() && other == record;
}

// Each setting in words when they give the same bytes.
void DescribeSettings(const DeviceKind& kind, const Bytes& record, Wish& wish) {
  const uint8_t* block = &record[wish.section->offset];
  for (const Setting& setting : *wish.section->settings) {
    Assignment assignment = {setting.parameter->long_option, setting.show(block), 0};
    if (wish.section->whole != nullptr) {
      if (assignment.value) wish.settings.push_back(assignment);
      continue;
    }
    const Wish alone = {.section = wish.section, .settings = {assignment}, .bytes = {}};
    if (!assignment.value || !Gives(alone, kind, &setting, record)) {
      assignment.value = TextOfBytes(Extract(setting, block));
    }
    wish.settings.push_back(assignment);
  }
}

}  // namespace

bool IsBytes(const Value& value) {
  const auto* text = std::get_if<std::string>(&value);
  return text != nullptr && text->starts_with(kBytesWord);
}

const std::vector<Section>& AllSections() {
  static const std::vector<Section> sections = MakeSections();
  return sections;
}

const Section* FindSection(const std::string& name) {
  const auto found = std::ranges::find(AllSections(), name, &Section::name);
  return found == AllSections().end() ? nullptr : &*found;
}

void Fulfil(const Wish& wish, const DeviceKind& kind, bool checked, Bytes& record,
            Mistakes& mistakes) {
  const Section& section = *wish.section;
  if (wish.bytes) {
    const auto bytes = BytesOf(*wish.bytes, section.size);
    if (bytes) return Merge(section, *bytes, record);
    mistakes.push_back({wish.line, section.name + ": expected " + ExpectedBytes(section.size)});
    return;
  }
  Bytes block = BlockOf(section, record);
  if (section.whole != nullptr) memcpy(block.data(), section.whole, section.size);
  const size_t earlier = mistakes.size();
  if (!StoreSettings(wish, kind, block, mistakes)) return;
  const bool complete = section.check != nullptr && (checked || section.whole != nullptr);
  const char* wrong =
      complete && mistakes.size() == earlier ? section.check(block.data()) : nullptr;
  if (wrong != nullptr) mistakes.push_back({wish.line, section.name + ": " + wrong});
  Merge(section, block, record);
}

std::optional<Wish> Describe(const Section& section, const DeviceKind& kind, const Bytes& record,
                             bool as_bytes) {
  const bool lacks = (kind.capabilities & section.needs) != section.needs;
  Bytes block = BlockOf(section, record);
  for (size_t i = 0; i < section.size; ++i) block[i] &= section.mask[i];
  const bool zero = std::ranges::all_of(block, [](uint8_t byte) { return byte == 0; });
  if (lacks && zero) return std::nullopt;
  Wish wish = {.section = &section, .settings = {}, .bytes = {}};
  if (!lacks && !as_bytes) DescribeSettings(kind, record, wish);
  if (lacks || as_bytes || !Gives(wish, kind, nullptr, record)) {
    wish.settings.clear();
    wish.bytes = TextOfBytes(block);
  }
  return wish;
}

std::string TextOf(const Value& value) {
  return std::visit(
      [](const auto& each) {
        return nlohmann::json(each).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
      },
      value);
}

std::string NamesOf(uint32_t capabilities) {
  std::string names;
  const auto add = [&](uint32_t bit, const char* name) {
    if ((capabilities & bit) != 0) names += (names.empty() ? "" : ", ") + std::string(name);
  };
  for (const Capability& capability : kCapabilities) add(capability.bit, capability.label);
  add(CORVANE_CAP_VLAN_FILTER, "VLAN filter");  // which has no label
  return names;
}

}  // namespace config
