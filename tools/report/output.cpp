#include "output.h"

#include <ctime>

#include "lines.h"

namespace report {

namespace {

std::string Dump(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string TextOf(const Json& value) {
  return value.is_string() ? value.get<std::string>() : Dump(value, -1);
}

std::string JoinItems(const Json& list) {
  std::string text;
  for (const Json& item : list) text += (text.empty() ? "" : ", ") + TextOf(item);
  return text;
}

void Flatten(const std::string& path, const Json& value, Json& flat);

void FlattenMembers(const std::string& path, const Json& object, bool skip_first, Json& flat) {
  for (auto member = object.begin(); member != object.end(); ++member) {
    if (skip_first && member == object.begin()) continue;
    Flatten(path.empty() ? member.key() : path + "." + member.key(), member.value(), flat);
  }
}

void Flatten(const std::string& path, const Json& value, Json& flat) {
  if (value.is_object()) {
    FlattenMembers(path, value, false, flat);
  } else if (value.is_array() && !value.empty() && value[0].is_object()) {
    for (const Json& item : value) {
      FlattenMembers(path + "." + TextOf(item.front()), item, true, flat);
    }
  } else {
    flat[path] = value.is_array() ? Json(JoinItems(value)) : value;
  }
}

}  // namespace

std::string ToJson(const Json& report) {
  Json object = {{kFormatKey, kFormatVersion}};
  object.update(report);
  return Dump(object, 2) + "\n";
}

std::string ToLine(const Json& report, const std::string& time) {
  Json flat = {{kFormatKey, kFormatVersion}, {"time", time}};
  Flatten("", report, flat);
  return Dump(flat, -1) + "\n";
}

std::string TimeStamp() {
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  tm utc = {};
  gmtime_r(&now.tv_sec, &utc);
  char seconds[32];
  strftime(seconds, sizeof seconds, "%Y-%m-%dT%H:%M:%S", &utc);
  char stamp[64];
  snprintf(stamp, sizeof stamp, "%s.%03dZ", seconds, static_cast<int>(now.tv_nsec / 1000000));
  return stamp;
}

}  // namespace report
