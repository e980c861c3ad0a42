#include "copy.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "device/capabilities.h"
#include "device/mac_text.h"
#include "fields.h"

namespace lab {

namespace {

constexpr int32_t kSimulatorRefuses = -21;  // what its devices answer that lack the capability
constexpr size_t kCommentWidth = 100;

std::string HexOf(const Bytes& bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    char digits[3];
    snprintf(digits, sizeof digits, "%02x", byte);
    text += digits;
  }
  return text;
}

// ---- Anonymous

// New names for old ones, byte by byte: each byte by the bytes before it.
class Aliases {
 public:
  // The address in the order of its text; its first byte becomes `first` or one above.
  void Replace(uint8_t* address, size_t size, bool reversed, uint8_t first) {
    if (std::all_of(address, address + size, [](uint8_t byte) { return byte == 0; })) return;
    Bytes prefix = {static_cast<uint8_t>(size)};
    for (size_t i = 0; i < size; ++i) {
      uint8_t& byte = address[reversed ? size - 1 - i : i];
      const bool of_maker = i == 0 && size == CORVANE_MAC_SIZE;  // most begin with 0
      if (byte == 0 && !of_maker) continue;
      const Bytes before = prefix;
      prefix.push_back(byte);
      const auto [known, added] = bytes_.try_emplace(prefix, uint8_t{0});
      if (added) known->second = static_cast<uint8_t>((i == 0 ? first : 1) + next_[before]++);
      byte = known->second;
    }
  }

  std::string NumberOf(const std::string& text) {
    const auto [known, added] = texts_.try_emplace(text, texts_.size() + 1);
    return "SERIAL" + std::to_string(known->second);
  }

 private:
  std::map<Bytes, uint8_t> bytes_;
  std::map<Bytes, uint8_t> next_;
  std::map<std::string, size_t> texts_;
};

constexpr uint8_t kLocalMac = 0x02;
constexpr uint8_t kPrivateIpv4 = 10;
constexpr uint8_t kPrivateIpv6 = 0xFD;

// IPv4 addresses take 4 of the 16 bytes, at either end.
void ReplaceIp(uint8_t* address, Aliases& aliases) {
  const auto none = [](uint8_t byte) { return byte == 0; };
  constexpr size_t kV4 = 4;
  constexpr size_t kV6 = 16;
  if (std::all_of(address + kV4, address + kV6, none)) {
    aliases.Replace(address, kV4, true, kPrivateIpv4);
  } else if (std::all_of(address, address + kV6 - kV4, none)) {
    aliases.Replace(address + kV6 - kV4, kV4, true, kPrivateIpv4);
  } else {
    aliases.Replace(address, kV6, true, kPrivateIpv6);
  }
}

void ReplaceIn(const Place& place, Bytes& record, Aliases& aliases) {
  const std::string_view name = place.field.name;
  uint8_t* at = &record[place.offset];
  if (name.ends_with("_mac")) aliases.Replace(at, CORVANE_MAC_SIZE, true, kLocalMac);
  if (name.ends_with("_ip") || name == "address") ReplaceIp(at, aliases);
  if (name != "serial_no" || *at == 0) return;
  const auto* text = reinterpret_cast<const char*>(at);
  const std::string alias = aliases.NumberOf(std::string(text, strnlen(text, place.field.width)));
  memset(at, 0, place.field.width);
  memcpy(at, alias.data(), std::min<size_t>(alias.size(), place.field.width - 1));
}

// ---- As text

class Writer {
 public:
  explicit Writer(const Answers& answers) : answers_(answers) {
    if (const Answer* mask = Find("CorvaneAPIGetDeviceCapabilitiesEx")) {
      memcpy(&capabilities_, mask->bytes.data(),
             std::min(mask->bytes.size(), sizeof capabilities_));
    }
  }

  std::string Text() {
    text_ = "\n[[device]]\nmac = \"" + answers_.device + "\"\n";
    WriteIdentity();
    for (const Reading& reading : AllReadings()) WriteReading(reading);
    NoteFailure("CorvaneAPIGetDeviceType", 0);
    NoteFailure("CorvaneAPIGPSOutputRead", CORVANE_CAP_GPS);
    return text_ + faults_;
  }

 private:
  const Answer* Find(const std::string& key) const {
    const auto found = answers_.of.find(key);
    return found == answers_.of.end() ? nullptr : &found->second;
  }

  // A record of the size that it must have; null and a comment when there is none.
  const Bytes* FindRecord(const Reading& reading, const std::string& key) {
    const Answer* answer = Find(key);
    if (answer == nullptr) {
      text_ += "# " + std::string(reading.name) + ": no " + key + " was seen\n";
    } else if (answer->status != CORVANE_OK) {
      text_ += "# " + std::string(reading.name) + ": " + key + " failed with status " +
               std::to_string(answer->status) + "\n";
    } else if (answer->bytes.size() != reading.size) {
      text_ += "# " + std::string(reading.name) + ": " + key + " has " +
               std::to_string(answer->bytes.size()) + " bytes\n";
    } else {
      return &answer->bytes;
    }
    return nullptr;
  }

  void WriteIdentity() {
    const Answer* type = Find("CorvaneAPIGetDeviceType");
    int32_t code = 0;
    if (type != nullptr && type->bytes.size() == sizeof code) {
      memcpy(&code, type->bytes.data(), sizeof code);
      text_ += "type = " + std::to_string(code) + "\n";
    } else {
      text_ += "# type: CorvaneAPIGetDeviceType was not seen\n";
    }
    if (Find("CorvaneAPIGetDeviceCapabilitiesEx") == nullptr) {
      text_ += "# capabilities: CorvaneAPIGetDeviceCapabilitiesEx was not seen\n";
      return;
    }
    char mask[16];
    snprintf(mask, sizeof mask, "0x%x", capabilities_);
    text_ += std::string("capabilities = ") + mask + "  #";
    for (const corvane::Capability& each : corvane::kCapabilities) {
      if ((capabilities_ & each.bit) != 0) text_ += std::string(" ") + each.label + ",";
    }
    text_.back() = '\n';
  }

  // The fields, several in a line, each behind the groups that it is in.
  void Comment(const Reading& reading, const Bytes& record, const std::string& before) {
    std::string line;
    std::string group;
    const auto flush = [&] {
      if (!line.empty()) text_ += "#   " + before + line + "\n";
      line.clear();
    };
    for (const Place& place : PlacesOf(reading)) {
      const size_t dot = place.path.rfind('.');
      const std::string path = dot == std::string::npos ? "" : place.path.substr(0, dot) + ": ";
      if (path != group || line.size() > kCommentWidth) flush();
      group = path;
      line += (line.empty() ? path : ", ") + place.field.name + " " + TextOf(place, record);
    }
    flush();
  }

  void WriteReading(const Reading& reading) {
    Bytes whole;
    for (uint32_t index = 0; index < reading.count; ++index) {
      const auto indexed = reading.count == 1 ? std::nullopt : std::optional(index);
      const Bytes* record = FindRecord(reading, KeyOf(reading.get_function, indexed));
      if (record == nullptr && index == 0) break;
      const Bytes& bytes = record == nullptr ? Bytes(reading.size) : *record;
      whole.insert(whole.end(), bytes.begin(), bytes.end());
      Comment(reading, bytes, indexed ? std::to_string(index) + ": " : "");
    }
    if (!whole.empty()) text_ += std::string(reading.name) + " = \"" + HexOf(whole) + "\"\n";
    const bool counts = reading.count > 1;
    NoteFailure(KeyOf(reading.get_function, counts ? std::optional(0U) : std::nullopt),
                reading.needs);
  }

  // A call that failed fails in the twin too; the simulator refuses by itself what a device lacks.
  void NoteFailure(const std::string& key, uint32_t needs) {
    const Answer* answer = Find(key);
    if (answer == nullptr || answer->status == CORVANE_OK) return;
    const bool lacks = needs != 0 && (capabilities_ & needs) == 0;
    const bool gps = key == "CorvaneAPIGPSOutputRead";
    if (lacks && answer->status == (gps ? CORVANE_GPS_OUTPUT_NOT_SUPPORTED : kSimulatorRefuses))
      return;
    faults_ += "[[fault]]\nfunction = \"" + key.substr(0, key.find(' ')) + "\"\ndevice = \"" +
               answers_.device + "\"\nstatus = " + std::to_string(answer->status) + "\n";
  }

  const Answers& answers_;
  uint32_t capabilities_ = 0;
  std::string text_;
  std::string faults_;
};

}  // namespace

void Anonymize(Source& source) {
  Aliases aliases;
  for (Answers& answers : source.devices) {
    unsigned bytes[CORVANE_MAC_SIZE] = {};
    sscanf(answers.device.c_str(), "%x:%x:%x:%x:%x:%x", &bytes[0], &bytes[1], &bytes[2], &bytes[3],
           &bytes[4], &bytes[5]);
    uint8_t mac[CORVANE_MAC_SIZE];
    std::copy(std::begin(bytes), std::end(bytes), mac);
    aliases.Replace(mac, sizeof mac, false, kLocalMac);
    answers.device = corvane::MacText(mac);
    for (const Reading& reading : AllReadings()) {
      for (uint32_t index = 0; index < reading.count; ++index) {
        const auto indexed = reading.count == 1 ? std::nullopt : std::optional(index);
        const auto found = answers.of.find(KeyOf(reading.get_function, indexed));
        if (found == answers.of.end() || found->second.bytes.size() != reading.size) continue;
        for (const Place& place : PlacesOf(reading)) ReplaceIn(place, found->second.bytes, aliases);
      }
    }
  }
}

std::string ToToml(const Source& source) {
  std::string text = "# Devices copied by corvane-lab " CORVANE_VERSION ".\n";
  if (source.library_version) {
    const uint32_t version = *source.library_version;
    text += "library_version = \"";
    for (const unsigned shift : {0U, 8U, 16U, 24U}) {
      text += std::to_string(version >> shift & 0xFF) + (shift == 24 ? "\"\n" : ".");
    }
  }
  for (const Answers& answers : source.devices) text += Writer(answers).Text();
  return text;
}

}  // namespace lab
