#include "plan.h"

#include <algorithm>
#include <cstring>

#include "config/port_control.h"

using namespace corvane;
using Json = nlohmann::ordered_json;

namespace config {

namespace {

bool IsCalled(const Device& device, const std::string& text) {
  return strcasecmp(device.name.c_str(), text.c_str()) == 0 ||
         std::to_string(device.position) == text;
}

Change* FindChange(Plan& plan, size_t record) {
  const auto found = std::ranges::find(plan.changes, record, &Change::record);
  return found == plan.changes.end() ? nullptr : &*found;
}

// Reads the record unless the plan has it.
std::string Need(Plan& plan, size_t record) {
  if (FindChange(plan, record) != nullptr) return "";
  Change change = {record, {}, {}};
  std::string failure = Read(plan.device, AllRecords()[record], change.old);
  change.wanted = change.old;
  if (failure.empty()) plan.changes.push_back(std::move(change));
  return failure;
}

bool IsInline(const Bytes& features) {
  FeaturesRecord record;
  memcpy(&record, features.data(), sizeof record);
  return record.inline_ == 1;
}

bool JoinedPorts(const Bytes& ports) {
  return memcmp(&ports[0], &ports[sizeof(PortControl)], sizeof(PortControl)) == 0;
}

const Wish* LastWish(const Plan& plan, const std::string& section) {
  const Wish* last = nullptr;
  for (const Wish* wish : plan.wishes) {
    if (wish->section->name == section) last = wish;
  }
  return last;
}

// In inline mode both ports form one link: port A's settings are port B's. Bytes are written as
// they are.
void JoinPorts(Plan& plan, Mistakes& mistakes) {
  Change* ports = FindChange(plan, kPorts);
  const Change* features = FindChange(plan, kFeatures);
  if (ports == nullptr || features == nullptr || !IsInline(features->wanted)) return;
  const std::string name = std::string(kPortControlCommand) + ".";
  const Wish* a = LastWish(plan, name + kPortWords[0]);
  const Wish* b = LastWish(plan, name + kPortWords[1]);
  uint8_t* const blocks = ports->wanted.data();
  if (b == nullptr && a != nullptr && !a->bytes) {
    memcpy(blocks + sizeof(PortControl), blocks, sizeof(PortControl));
  }
  if (b == nullptr || b->bytes || JoinedPorts(ports->wanted)) return;
  mistakes.push_back({b->line, b->section->name + ": expected the settings of " + name +
                                   kPortWords[0] + ", because inline mode is on"});
}

// The capabilities that the device lacks for the wish.
uint32_t Lacking(const Wish& wish, const DeviceKind& kind) {
  const uint32_t section = wish.bytes ? 0 : wish.section->needs;
  return (AllRecords()[wish.section->record].needs | section) & ~kind.capabilities;
}

std::string AddWish(Plan& plan, const Wish& wish, Mistakes& mistakes) {
  if (const uint32_t lacking = Lacking(wish, plan.device.kind); lacking != 0) {
    if (!wish.for_all) {
      mistakes.push_back(
          {wish.line, wish.section->name + ": the device lacks " + NamesOf(lacking)});
    }
    return "";
  }
  std::string failure = Need(plan, wish.section->record);
  if (failure.empty() && wish.section->record == kPorts) failure = Need(plan, kFeatures);
  if (!failure.empty()) return failure;
  Bytes& wanted = FindChange(plan, wish.section->record)->wanted;
  Fulfil(wish, plan.device.kind, true, wanted, mistakes);
  return "";
}

Json Setting(const std::optional<Wish>& wish, const std::string& key) {
  if (!wish) return nullptr;
  for (const Assignment& assignment : wish->settings) {
    if (assignment.key == key) return JsonOf(*assignment.value);
  }
  return nullptr;
}

void CompareSection(const Section& section, const std::optional<Wish>& before,
                    const std::optional<Wish>& after, std::vector<Difference>& differences) {
  if ((before && before->bytes) || (after && after->bytes)) {
    const Json old = before ? JsonOf(*before) : Json();
    const Json now = after ? JsonOf(*after) : Json();
    if (old != now) differences.push_back({section.name, old, now});
    return;
  }
  for (const auto& setting : *section.settings) {
    const std::string option = setting.parameter->long_option;
    const Json old = Setting(before, option);
    const Json now = Setting(after, option);
    if (old != now) differences.push_back({section.name + "." + option, old, now});
  }
}

// False when the entry is for another device.
bool AddEntry(const DeviceWishes& entry, Plan& plan, Mistakes& mistakes) {
  if (entry.device != kDefault) {
    if (!IsCalled(plan.device, entry.device)) return false;
    if (plan.named) {
      mistakes.push_back(
          {entry.line, "device " + entry.device + ": another table is for the same device"});
    }
    plan.named = true;
  }
  for (const Wish& wish : entry.wishes) plan.wishes.push_back(&wish);
  return true;
}

}  // namespace

std::vector<Device> SelectDevices(const std::vector<Device>& devices, const std::string& text) {
  if (strcasecmp(text.c_str(), "all") == 0) return devices;
  for (const Device& device : devices) {
    if (IsCalled(device, text)) return {device};
  }
  return {};
}

std::vector<Plan> AssignWishes(const std::vector<DeviceWishes>& file,
                               const std::vector<Device>& devices, bool lenient,
                               Mistakes& mistakes) {
  std::vector<Plan> plans(devices.size());
  for (size_t i = 0; i < devices.size(); ++i) plans[i].device = devices[i];
  for (const DeviceWishes& entry : file) {
    bool found = lenient || entry.device == kDefault;
    for (Plan& plan : plans) found = AddEntry(entry, plan, mistakes) || found;
    if (found) continue;
    mistakes.push_back({entry.line, "device " + entry.device + ": no such device is attached"});
  }
  std::erase_if(plans, [](const Plan& plan) { return plan.wishes.empty(); });
  return plans;
}

std::string MakePlan(Plan& plan, Mistakes& mistakes) {
  plan.changes.clear();
  std::string failure = ReadKind(plan.device);
  Mistakes found;
  for (const Wish* wish : plan.wishes) {
    if (failure.empty()) failure = AddWish(plan, *wish, found);
  }
  JoinPorts(plan, found);
  for (const Mistake& mistake : found) {
    mistakes.push_back({mistake.line, mistake.text + " (" + plan.device.name + ")"});
  }
  return failure.empty() ? "" : plan.device.name + ": " + failure;
}

bool IsUnjoined(const Section& section, const std::vector<Bytes>& records) {
  const Bytes& ports = records[kPorts];
  return section.record == kPorts && section.offset != 0 && IsInline(records[kFeatures]) &&
         !JoinedPorts(ports);
}

std::vector<Difference> Compare(const DeviceKind& kind, size_t record, const Bytes& before,
                                const Bytes& after) {
  std::vector<Difference> differences;
  if (before == after) return differences;
  for (const Section& section : AllSections()) {
    if (section.record != record) continue;
    CompareSection(section, Describe(section, kind, before, false),
                   Describe(section, kind, after, false), differences);
  }
  return differences;
}

std::vector<Difference> DifferencesOf(const Plan& plan) {
  std::vector<Difference> all;
  for (const Change& change : plan.changes) {
    const auto some = Compare(plan.device.kind, change.record, change.old, change.wanted);
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

std::string NameOf(size_t record) {
  std::string names;
  for (const Section& section : AllSections()) {
    if (section.record == record) names += (names.empty() ? "" : ", ") + section.name;
  }
  return names;
}

Json JsonOf(const Value& value) {
  return std::visit([](const auto& each) { return Json(each); }, value);
}

Json JsonOf(const Wish& wish) {
  if (wish.bytes) return *wish.bytes;
  Json object = Json::object();
  for (const Assignment& assignment : wish.settings) {
    object[assignment.key] = JsonOf(*assignment.value);
  }
  return object;
}

}  // namespace config
