// What a file changes on the attached devices.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "file.h"

namespace config {

// A record that the file is about.
struct Change {
  size_t record;  // in AllRecords()
  Bytes old;
  Bytes wanted;  // equal to old where nothing is to be written
};

struct Plan {
  Device device = {};
  bool named = false;  // by a table of its own
  std::vector<const Wish*> wishes = {};
  std::vector<Change> changes = {};
};

// One setting that differs: its value before and after, null where it has none.
struct Difference {
  std::string setting;
  nlohmann::ordered_json before;
  nlohmann::ordered_json after;
};

// The devices of that text: an index, a MAC address or "all". Empty when there is none.
std::vector<Device> SelectDevices(const std::vector<Device>& devices, const std::string& text);

// Which of the devices gets which wishes. Wishes for others are mistakes unless `lenient`. The
// wishes must outlive the plans.
std::vector<Plan> AssignWishes(const std::vector<DeviceWishes>& file,
                               const std::vector<Device>& devices, bool lenient,
                               Mistakes& mistakes);

// Reads the device and sets the plan's changes. Returns what failed; empty when nothing did.
std::string MakePlan(Plan& plan, Mistakes& mistakes);

// True for port B's section when inline mode is on and its settings are not port A's: only bytes
// say that. The records are in the order of AllRecords(); those not read are empty.
bool IsUnjoined(const Section& section, const std::vector<Bytes>& records);

// The settings in which the two versions of a record differ.
std::vector<Difference> Compare(const corvane::DeviceKind& kind, size_t record, const Bytes& before,
                                const Bytes& after);
std::vector<Difference> DifferencesOf(const Plan& plan);

// The sections of a record, for messages.
std::string NameOf(size_t record);

nlohmann::ordered_json JsonOf(const corvane::Value& value);
// The whole wish: an object, or the text of its bytes.
nlohmann::ordered_json JsonOf(const Wish& wish);

}  // namespace config
