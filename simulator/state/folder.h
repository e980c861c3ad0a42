// The folder in which the simulated devices keep what they remember. A program may run with more
// rights than others who can reach the folder, so it neither writes through links nor uses what
// strangers may have put there.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace simulator {

// Finds the folder and makes it when it is not there. CORVANE_SIM_STATE names it; else it is below
// XDG_STATE_HOME or the home folder, and then it must belong to the user or to root. Returns its
// path without links, or nothing with a reason for people when no variable and no home folder says
// where it is, or when it cannot be made, is another user's or can be written by everyone.
std::optional<std::string> UseStateFolder(std::string& reason);

// The reason for a file of the folder that must not be used: it is a link or no plain file, has
// other names, or is another user's in a folder that CORVANE_SIM_STATE does not name.
inline constexpr const char* kForeignFile = "it is a link or belongs to another user";

// True when the file may be used. The facts are those of lstat or fstat.
bool IsStateFile(const struct stat& facts);

// Opens a file of the folder; flags are those of open(). Returns the descriptor, or -1 with a
// reason for people; errno is ELOOP for a file that must not be used, and EACCES for one that this
// user may not open so.
int OpenStateFile(const std::string& path, int flags, std::string& reason);

}  // namespace simulator
