#include "model/firmware_file.h"

#include <charconv>
#include <cstdio>
#include <memory>

#include "device/corvane_api.h"

namespace simulator {
namespace {

constexpr std::string_view kFirstLine = "CORVANE-FIRMWARE 1";
constexpr size_t kLongestHeader = 4096;  // bytes

struct FileCloser {
  void operator()(FILE* file) const { fclose(file); }
};

template <class Number>
bool ReadNumber(std::string_view text, Number& number) {
  const char* end = text.data() + text.size();
  const auto [stop, failure] = std::from_chars(text.data(), end, number);
  return failure == std::errc() && stop == end;
}

// Takes the text up to the separator, and the separator, off the text; all of it when there is
// none.
std::string_view TakeUntil(char separator, std::string_view& text) {
  const size_t length = text.find(separator);
  const std::string_view taken = text.substr(0, length);
  text.remove_prefix(length == std::string_view::npos ? text.size() : length + 1);
  return taken;
}

// ---- The header's keys

bool ReadType(std::string_view value, FirmwareFile& firmware) {
  return ReadNumber(value, firmware.type_code);
}

bool ReadSwFirmware(std::string_view value, FirmwareFile& firmware) {
  auto& numbers = firmware.sw_firmware;
  return ReadNumber(TakeUntil('.', value), numbers[0]) &&
         ReadNumber(TakeUntil('.', value), numbers[1]) &&
         ReadNumber(TakeUntil('.', value), numbers[2]) && ReadNumber(value, numbers[3]);
}

bool ReadHwFirmware(std::string_view value, FirmwareFile& firmware) {
  return ReadNumber(value, firmware.hw_firmware.emplace());
}

struct HeaderKey {
  std::string_view start;  // of the line
  bool (*read)(std::string_view value, FirmwareFile& firmware);
  bool required;
};

constexpr HeaderKey kHeaderKeys[] = {
    {"type = ", ReadType, true},
    {"sw_firmware = ", ReadSwFirmware, true},
    {"hw_firmware = ", ReadHwFirmware, false},
};

}  // namespace

bool ReadFirmwareHeader(std::string_view text, FirmwareFile& firmware) {
  const size_t end = text.find("\n\n");
  if (end == std::string_view::npos) return false;
  text = text.substr(0, end);
  if (TakeUntil('\n', text) != kFirstLine) return false;
  for (const HeaderKey& key : kHeaderKeys) {
    if (text.starts_with(key.start)) {
      const std::string_view value = TakeUntil('\n', text).substr(key.start.size());
      if (!key.read(value, firmware)) return false;
    } else if (key.required) {
      return false;
    }
  }
  return text.empty();
}

FirmwareFile ReadFirmwareFile(const std::string& path) {
  FirmwareFile firmware = {};
  firmware.status = CORVANE_UPDATE_FILE_UNREADABLE;
  const std::unique_ptr<FILE, FileCloser> file(fopen(path.c_str(), "re"));
  if (file == nullptr) return firmware;
  char text[kLongestHeader];
  const size_t size = fread(text, 1, sizeof text, file.get());
  if (ferror(file.get()) != 0) return firmware;
  const bool valid = ReadFirmwareHeader({text, size}, firmware);
  firmware.status = valid ? CORVANE_OK : CORVANE_UPDATE_FILE_INVALID;
  return firmware;
}

}  // namespace simulator
