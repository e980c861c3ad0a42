// Firmware files of the simulator: a header of text lines, an empty line, and then anything.
//
//   CORVANE-FIRMWARE 1
//   type = 11
//   sw_firmware = 1.9.0.0
//   hw_firmware = 213
//
// The lines stand in this order and end in line feeds; the last one may be left out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace simulator {

struct FirmwareFile {
  int32_t status;     // 0, CORVANE_UPDATE_FILE_UNREADABLE or CORVANE_UPDATE_FILE_INVALID
  int32_t type_code;  // of the devices that it is for
  uint8_t sw_firmware[4];
  std::optional<uint32_t> hw_firmware;
};

// Reads the file of that name. When status is not 0, the other fields mean nothing.
FirmwareFile ReadFirmwareFile(const std::string& path);

// Reads the header at the beginning of the text. False when it is wrong, or longer than the text.
bool ReadFirmwareHeader(std::string_view text, FirmwareFile& firmware);

}  // namespace simulator
