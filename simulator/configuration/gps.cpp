#include "configuration/records.h"
#include "configuration/tables.h"

namespace simulator {
namespace {

constexpr Key<GpsPosition> kGpsKeys[] = {
    {"latitude", ReadRange<-90, 90, &GpsPosition::latitude>},
    {"longitude", ReadRange<-180, 180, &GpsPosition::longitude>},
    {"altitude", ReadRange<-1000, 100'000, &GpsPosition::altitude>},
};

constexpr size_t kMostOutput = 128;  // bytes of a read

bool ReadOutputText(Where node, GivenGpsOutput& output, ConfigurationError& error) {
  std::string digits;
  Bytes bytes;
  if (!ReadValue(node, digits, error)) return false;
  if (!ReadHex(digits, bytes) || bytes.size() > kMostOutput) {
    return RefuseValue(node, "at most 128 bytes in hexadecimal digits are expected here", error);
  }
  output.text.assign(bytes.begin(), bytes.end());
  return true;
}

constexpr Key<GivenGpsOutput> kOutputKeys[] = {
    {"count", ReadNumber<INT32_MIN, INT32_MAX, &GivenGpsOutput::count>}, {"text", ReadOutputText}};

}  // namespace

bool ReadGps(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadTable(node, "gps wants a [device.gps] table", kGpsKeys, device.position, error);
}

bool ReadGpsOutput(Where node, DeviceConfiguration& device, ConfigurationError& error) {
  return ReadTable(node, "gps_output wants a table", kOutputKeys, device.gps_output.emplace(),
                   error);
}

}  // namespace simulator
