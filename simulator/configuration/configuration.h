// What the simulator simulates: the devices, the faults to inject and the journal, read from a TOML
// file (docs/simulator.md describes it for users).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "configuration/gps_position.h"
#include "configuration/port_source.h"
#include "device/corvane_api.h"
#include "records/record_fields.h"

namespace simulator {

// A record as the configuration file gives it.
struct GivenRecord {
  Bytes bytes;
  bool raw;  // given as a whole, in hexadecimal: served as it is, whatever the device has
};

// What every read of the GPS output gives, whatever the receiver would say.
struct GivenGpsOutput {
  int32_t count = 0;  // of bytes, as the library claims it
  std::string text;   // at most a read's 128 bytes
};

struct DeviceConfiguration {
  int32_t type_code = 0;
  std::array<uint8_t, CORVANE_MAC_SIZE> mac = {};
  std::string name;  // the MAC as text: names the device in the journal and in the state
  uint32_t capabilities = 0;
  VersionRecord versions = {};
  std::vector<std::string> hw_firmwares;
  std::optional<HwFirmwaresDesc> hw_firmwares_record;  // given as a whole: replaces the names
  int64_t boot_ms = 0;          // how long the device is away after a restart
  GpsPosition position;         // of its GPS antenna
  int64_t traffic_rate = 1000;  // frames per second, both ports together
  int64_t update_ms = 3000;     // how long a firmware update takes
  PortSource ports[CORVANE_PORTS];
  std::optional<GivenGpsOutput> gps_output;
  std::map<std::string, GivenRecord, std::less<>> records;  // by the layout's name
};

// Calls of the function, or of every function when it is empty, that fail or are late: only that
// call in a process, or any when call is 0, but none before the call from and only that many times;
// for one device or for all.
struct Fault {
  std::string function;
  std::optional<std::string> device;  // its name
  int64_t call = 0;
  int64_t from = 1;
  int64_t times = INT64_MAX;
  bool persistent = false;     // calls are counted in the state folder
  int32_t status = 0;          // 0: the call works, but late
  bool away = false;           // the device is not in the list
  int64_t delay_ms = 0;        // before the answer
  int64_t after_ms = 0;        // since the first use of the state folder
  int64_t for_ms = INT64_MAX;  // from then on
};

struct RecordChange {
  const char* record;  // the layout's name
  std::function<void(Bytes& record)> apply;
};

// What happens around one device, or around all.
struct Event {
  int64_t at_ms = 0;  // since the first use of the state
  std::optional<std::string> device;
  std::vector<RecordChange> changes;
};

struct Configuration {
  uint32_t library_version = 0;   // packed, lowest byte first
  std::string journal;            // path; empty for none
  bool journal_times = false;     // time and process of each call
  bool journal_quiet = false;     // calls that only poll leave no line
  int64_t lock_wait_ms = 20'000;  // for other programs that use the state: hundreds may queue
  std::vector<DeviceConfiguration> devices;
  std::optional<int32_t> device_count;  // what the device list claims instead of its own
  std::vector<Fault> faults;
  std::vector<Event> events;  // in the order of their times
  int64_t time_scale = 1;     // how much faster than the host's clock all time passes
};

// What is wrong with a configuration file, and where.
struct ConfigurationError {
  uint32_t line = 0;  // 0 when no line is to blame
  std::string reason;
};

// Reads the configuration in the named file. Nothing, with the error filled, when the file cannot
// be read or is wrong. Relative paths in it start at the file's folder.
std::optional<Configuration> ReadConfigurationFile(const std::string& path,
                                                   ConfigurationError& error);

// Reads the text of a configuration file. Relative paths in it start at the folder of path.
std::optional<Configuration> ReadConfiguration(std::string_view text, const std::string& path,
                                               ConfigurationError& error);

// Reads the fields that an event sets from the text of a TOML table. Nothing, with the reason, when
// it is wrong.
std::optional<Event> ReadEvent(std::string_view text, ConfigurationError& error);

// The configuration when no file is named: three devices of different models whose
// capabilities together reach every command.
extern const char kBuiltinConfiguration[];

}  // namespace simulator
