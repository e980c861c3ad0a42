// The --device of the leaves: for one device, or for all of them.
#pragma once

#include "line/node.h"

namespace corvane {

inline constexpr ParameterSpec kOneDevice = {
    .key = "device",
    .short_option = "d",
    .long_option = "device",
    .kind = ParameterKind::kText,
    .datatype = "<MAC|n>",
    .glossary = "Specify to which corvane device the command applies. (defaults to the first one)"};

inline constexpr ParameterSpec kOneDeviceOrAll = {
    .key = "device",
    .short_option = "d",
    .long_option = "device",
    .kind = ParameterKind::kText,
    .datatype = "<MAC|n|all>",
    .glossary =
        "Specify to which corvane device the command applies. (defaults to the first one, 'all' to "
        "apply to all connected Corvanes)"};

// What the leaf's --device says; nothing when it was not given.
inline std::optional<std::string> DeviceText(const CommandNode& leaf) {
  return Text(leaf, "device", nullptr);
}

}  // namespace corvane
