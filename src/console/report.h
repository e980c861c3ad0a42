// Words and lines that the reports and messages of several commands share.
#pragma once

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace corvane {

// Prints the message as a line and returns the status: a failing step is one statement.
inline int Fail(int status, const char* message) {
  puts(message);
  return status;
}

inline const char* EnabledOrDisabled(bool enabled) {
  return enabled ? "Enabled" : "Disabled";
}
inline const char* YesOrNo(bool yes) {
  return yes ? "Yes" : "No";
}

// The length of a text that the library left in an array, which may lack its terminator: print it
// with "%.*s".
template <size_t kSize>
int TextLength(const char (&text)[kSize]) {
  return static_cast<int>(strnlen(text, kSize));
}

}  // namespace corvane
