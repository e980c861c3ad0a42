// The [[event]] tables: what happens around a device.
#include "configuration/records.h"
#include "configuration/tables.h"
#include "records/factory_records.h"

namespace simulator {
namespace {

// The records of what is around a device, and of what it measures there.
constexpr std::string_view kRecords[] = {"surroundings", "timing_status", "link_status",
                                         "poe_measures"};

// The record of that name, or the one with a field of that name; null for none.
const RecordLayout* FindRecord(std::string_view name, bool& is_field) {
  for (const std::string_view record : kRecords) {
    const RecordLayout* layout = FindLayout(record);
    is_field = record != name;
    if (!is_field) return layout;
    for (const Field& field : layout->fields) {
      if (name == field.name) return layout;
    }
  }
  return nullptr;
}

bool ReadSet(Where node, Event& event, ConfigurationError& error) {
  const toml::table* table = node.as_table();
  if (table == nullptr) return RefuseValue(node, "a table of fields is expected here", error);
  for (const auto& [key, value] : *table) {
    bool is_field = false;
    const RecordLayout* layout = FindRecord(key.str(), is_field);
    if (layout == nullptr || (!is_field && value.is_string())) {
      return RefuseValue(value, "no event can set \"" + std::string(key.str()) + "\"", error);
    }
    toml::table fields;
    if (is_field) fields.insert(key.str(), value);
    if (!is_field && value.is_table()) fields = *value.as_table();
    Bytes record = FactoryRecord(layout->name, 0);
    if (!ReadRecord(*layout, is_field ? fields : value, record, error)) {
      error.line = static_cast<uint32_t>(value.source().begin.line);  // the copied node has none
      return false;
    }
    event.changes.push_back({layout->name, [layout, fields](Bytes& bytes) {
                               ConfigurationError none;
                               ReadRecord(*layout, fields, bytes, none);
                             }});
  }
  return true;
}

constexpr Key<Event> kEventKeys[] = {
    {"at_s", ReadSeconds<&Event::at_ms>},
    {"device", ReadMember<&Event::device>},
    {"set", ReadSet},
};

}  // namespace

bool AddEvent(Where node, Configuration& configuration, ConfigurationError& error) {
  Event event;
  if (!ReadTable(node, "event wants [[event]] tables", kEventKeys, event, error)) return false;
  if (event.changes.empty()) return RefuseValue(node, "an event needs something to set", error);
  if (!FindDevice(node, configuration, event.device, error)) return false;
  configuration.events.push_back(std::move(event));
  return true;
}

std::optional<Event> ReadEvent(std::string_view text, ConfigurationError& error) {
  Event event;
  const toml::parse_result parsed = toml::parse(text);
  if (!parsed) error.reason = parsed.error().description();
  if (!parsed || !ReadSet(parsed.table(), event, error)) return std::nullopt;
  if (event.changes.empty()) error.reason = "an event needs something to set";
  return event.changes.empty() ? std::nullopt : std::optional(event);
}

}  // namespace simulator
