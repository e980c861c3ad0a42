// What the simulator simulates: the devices, the faults to inject and the journal, read from a TOML
// file (docs/simulator.md describes it for users).
#pragma once

#include <cstdint>
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
  uint8_t mac[CORVANE_MAC_SIZE] = {};
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

// Calls of the function that fail: only that call in a process, or any when call is 0, but none
// before the call from; for one device or for all.
struct Fault {
  std::string function;
  std::optional<std::string> device;  // its name
  int64_t call = 0;
  int64_t from = 1;
  int32_t status = 0;
};

struct Configuration {
  uint32_t library_version = 0;   // packed, lowest byte first
  std::string journal;            // path; empty for none
  int64_t lock_wait_ms = 20'000;  // for other programs that use the state: hundreds may queue
  std::vector<DeviceConfiguration> devices;
  std::optional<int32_t> device_count;  // what the device list claims instead of its own
  std::vector<Fault> faults;
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

// The configuration when no file is named: three devices of different models whose
// capabilities together reach every command.
extern const char kBuiltinConfiguration[];

}  // namespace simulator
