#include "api/wide_text.h"

#include <cstdint>

namespace simulator {
namespace {

constexpr uint32_t kReplacement = 0xFFFD;

bool IsCharacter(uint32_t code) {
  return code <= 0x10FFFF && (code < 0xD800 || code > 0xDFFF);
}

// RFC 3629: the leading byte says how many bytes of six bits each follow.
void AppendUtf8(uint32_t code, std::string& text) {
  int following = 0;
  uint32_t lead = 0;
  if (code >= 0x10000) {
    following = 3;
    lead = 0xF0;
  } else if (code >= 0x800) {
    following = 2;
    lead = 0xE0;
  } else if (code >= 0x80) {
    following = 1;
    lead = 0xC0;
  }
  text += static_cast<char>(lead | code >> (6 * following));
  while (following-- > 0) text += static_cast<char>(0x80 | (code >> (6 * following) & 0x3F));
}

}  // namespace

std::string Utf8Of(const wchar_t* text) {
  std::string utf8;
  for (; *text != L'\0'; ++text) {
    const auto code = static_cast<char32_t>(*text);
    AppendUtf8(IsCharacter(code) ? code : kReplacement, utf8);
  }
  return utf8;
}

std::string TextArgument(const char* name, const wchar_t* text) {
  static constexpr char kDigits[] = "0123456789abcdef";
  const std::string start = std::string(" ") + name + "=";
  if (text == nullptr) return start + "null";
  std::string quoted;
  for (const char character : Utf8Of(text)) {
    const auto byte = static_cast<uint8_t>(character);
    if (character == '"' || character == '\\') quoted += '\\';
    if (byte >= 0x20 && byte != 0x7F) {
      quoted += character;
    } else {
      quoted += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xF]};
    }
  }
  return start + '"' + quoted + '"';
}

}  // namespace simulator
