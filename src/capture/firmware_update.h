// Writing firmware into a device.
#pragma once

#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kFirmwareFile = {.key = "firmware",
                                                .long_option = "firmware",
                                                .kind = ParameterKind::kRequiredFile,
                                                .datatype = "<fw_file>",
                                                .glossary = "Name of the firmware file."};

inline constexpr auto kUpdateParameters = Parameters(kFirmwareFile);

int FirmwareUpdate(const CommandNode& leaf);

}  // namespace corvane
