#include "capture/wide_string.h"

#include <cstdlib>
#include <forward_list>

namespace corvane {

// The buffer starts out as zeroes, terminator included, so that it ends even when mbstowcs gives
// up. It has no destructor: the library may still be at work when the process ends.
const wchar_t* ToWideString(const std::string& text) {
  static auto& kept = *new std::forward_list<std::wstring>;
  std::wstring& wide = kept.emplace_front(text.size() + 1, L'\0');
  mbstowcs(wide.data(), text.c_str(), wide.size());
  return wide.c_str();
}

}  // namespace corvane
