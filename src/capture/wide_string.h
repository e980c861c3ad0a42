// Paths as the device library wants them.
#pragma once

#include <string>

namespace corvane {

// The text as a wide-character string, converted in the current locale ("C": the utility sets
// none). A text that the locale cannot convert ends where the conversion stopped.
//
// The string lives until the process ends: the library may keep the pointer and read the text at
// any later call, or in a thread of its own.
const wchar_t* ToWideString(const std::string& text);

}  // namespace corvane
