#include "model/firmware_file.h"

#include <charconv>
#include <fstream>
#include <regex>

#include "device/corvane_api.h"

namespace simulator {
namespace {

constexpr size_t kLongestHeader = 4096;  // bytes

// False when the number is too large.
template <class Number>
bool ReadNumber(const std::csub_match& digits, Number& number) {
  return std::from_chars(digits.first, digits.second, number).ec == std::errc();
}

}  // namespace

bool ReadFirmwareHeader(std::string_view text, FirmwareFile& firmware) {
  static const std::regex kHeader(
      "CORVANE-FIRMWARE 1\ntype = (-?\\d{1,20})\n"
      "sw_firmware = (\\d{1,20})\\.(\\d{1,20})\\.(\\d{1,20})\\.(\\d{1,20})\n"
      "(?:hw_firmware = (\\d{1,20})\n)?\n");
  std::cmatch match;
  const char* end = text.data() + text.size();
  if (!std::regex_search(text.data(), end, match, kHeader,
                         std::regex_constants::match_continuous)) {
    return false;
  }
  for (size_t i = 0; i < std::size(firmware.sw_firmware); ++i) {
    if (!ReadNumber(match[i + 2], firmware.sw_firmware[i])) return false;
  }
  return ReadNumber(match[1], firmware.type_code) &&
         (!match[6].matched || ReadNumber(match[6], firmware.hw_firmware.emplace()));
}

FirmwareFile ReadFirmwareFile(const std::string& path) {
  FirmwareFile firmware = {};
  firmware.status = CORVANE_UPDATE_FILE_UNREADABLE;
  std::ifstream file(path, std::ios::binary);
  char text[kLongestHeader];
  file.read(text, sizeof text);
  if (!file.is_open() || file.bad()) return firmware;
  const bool valid = ReadFirmwareHeader({text, static_cast<size_t>(file.gcount())}, firmware);
  firmware.status = valid ? CORVANE_OK : CORVANE_UPDATE_FILE_INVALID;
  return firmware;
}

}  // namespace simulator
