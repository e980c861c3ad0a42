#include "journal/wide_text.h"

#include <algorithm>
#include <filesystem>
#include <functional>

#include "journal/journal.h"

namespace corvane {
namespace {

bool IsCharacter(char32_t code) {
  return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

}  // namespace

std::string Utf8Of(const wchar_t* text) {
  std::u32string characters(text, text + wcslen(text));
  std::ranges::replace_if(characters, std::not_fn(IsCharacter), U'\uFFFD');
  return std::filesystem::path(characters).string();  // the conversion of the standard library
}

std::string TextArgument(const char* name, const wchar_t* text) {
  if (text == nullptr) return std::string(" ") + name + "=null";
  return QuotedArgument(name, Utf8Of(text));
}

}  // namespace corvane
