// Paths as the device library wants them.
#pragma once

#include <string>

// The text as a wide-character string, converted in the current locale ("C": the utility sets
// none). A text that the locale cannot convert ends where the conversion stopped.
std::wstring ToWideString(const std::string& text);
