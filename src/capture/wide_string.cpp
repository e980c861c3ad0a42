#include "capture/wide_string.h"

#include <cstdlib>

// The buffer starts out as zeroes, terminator included, so that it ends even when mbstowcs gives
// up.
std::wstring ToWideString(const std::string& text) {
  std::wstring wide(text.size() + 1, L'\0');
  mbstowcs(wide.data(), text.c_str(), wide.size());
  return wide;
}
