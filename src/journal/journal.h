// The file in which every call of the device library leaves a line: the function, "device=" and its
// MAC address, " name=value" for what went in and came out, " status=N". The simulator writes it,
// and what records the calls of other programs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace corvane {

// " name=00ff...".
std::string HexArgument(const char* name, const void* bytes, size_t size);

// " name="..."", with quotes, backslashes and control characters escaped.
std::string QuotedArgument(const char* name, std::string_view text);

// " time=1795431427.444639 pid=4711": nanoseconds since 1970, at least a second, and this process.
std::string TimeArgument(int64_t ns);

// Appends the line, which ends with a line feed, to the file, which is made when it is not there.
// False, with errno set, when that fails; then no part of the line stays in the file.
bool WriteJournal(const std::string& path, const std::string& line);

}  // namespace corvane
