#include "configuration/keys.h"

#include <cstdio>

namespace simulator {

bool RefuseValue(Where node, const std::string& reason, ConfigurationError& error) {
  error = {node.source().begin.line, reason};
  return false;
}

bool ReadInteger(Where node, int64_t low, int64_t high, int64_t& value, ConfigurationError& error) {
  const auto* integer = node.as_integer();
  if (integer == nullptr || integer->get() < low || integer->get() > high) {
    return RefuseValue(node,
                       "a whole number from " + std::to_string(low) + " to " +
                           std::to_string(high) + " is expected here",
                       error);
  }
  value = integer->get();
  return true;
}

bool ReadValue(Where node, bool& value, ConfigurationError& error) {
  const auto* truth = node.as_boolean();
  if (truth == nullptr) return RefuseValue(node, "true or false is expected here", error);
  value = truth->get();
  return true;
}

bool ReadValue(Where node, std::string& value, ConfigurationError& error) {
  const auto* text = node.as_string();
  if (text == nullptr) return RefuseValue(node, "a text is expected here", error);
  value = text->get();
  return true;
}

bool ReadReal(Where node, double low, double high, double& value, ConfigurationError& error) {
  const auto number = node.value<double>();
  if (!number || !(*number >= low && *number <= high)) {
    return RefuseValue(node,
                       "a number from " + std::to_string(low) + " to " + std::to_string(high) +
                           " is expected here",
                       error);
  }
  value = *number;
  return true;
}

bool ReadValue(Where node, uint8_t (&version)[4], ConfigurationError& error) {
  std::string text;
  unsigned n[4];
  char rest = 0;
  if (!ReadValue(node, text, error)) return false;
  if (text.find_first_not_of("0123456789.") != std::string::npos ||
      sscanf(text.c_str(), "%3u.%3u.%3u.%3u%c", &n[0], &n[1], &n[2], &n[3], &rest) != 4 ||
      n[0] > 255 || n[1] > 255 || n[2] > 255 || n[3] > 255) {
    return RefuseValue(node, "a version like \"1.2.3.4\" is expected here", error);
  }
  for (int i = 0; i < 4; ++i) version[i] = static_cast<uint8_t>(n[i]);
  return true;
}

}  // namespace simulator
