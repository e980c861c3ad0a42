// Paths and other texts as the library's callers give them.
#pragma once

#include <cwchar>
#include <string>

namespace corvane {

// The text in UTF-8. A wide character that is no Unicode character becomes U+FFFD.
std::string Utf8Of(const wchar_t* text);

// ` name="text"` for the journal, in UTF-8 and on one line: quotes and backslashes have a backslash
// before them, control characters are written \xNN. A null text is written without quotes: null.
std::string TextArgument(const char* name, const wchar_t* text);

}  // namespace corvane
