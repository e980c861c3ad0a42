#include "state/folder.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>

namespace simulator {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kFolderMode = 0775;  // whatever the umask is, not everyone may write in it
constexpr mode_t kFileMode = 0664;

const char* NamedFolder() {
  const char* folder = getenv("CORVANE_SIM_STATE");
  return folder == nullptr || *folder == '\0' ? nullptr : folder;
}

// The folder that the variable names; empty when it names none, or a relative one.
std::string FolderIn(const char* variable) {
  const char* folder = getenv(variable);
  return folder == nullptr || *folder != '/' ? "" : folder;
}

// The user's home folder in the password database; empty when it has none.
std::string HomeOfUser() {
  char texts[16384];
  passwd entry;
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, texts, sizeof texts, &found) != 0) return "";
  return found == nullptr || *found->pw_dir != '/' ? "" : found->pw_dir;
}

std::string FindFolder() {
  if (const char* named = NamedFolder()) return named;
  if (const std::string state = FolderIn("XDG_STATE_HOME"); !state.empty()) {
    return state + "/corvane-simulator";
  }
  std::string home = FolderIn("HOME");
  if (home.empty()) home = HomeOfUser();
  return home.empty() ? "" : home + "/.local/state/corvane-simulator";
}

bool MakeFolder(const fs::path& folder, std::string& reason) {
  std::error_code failure;
  if (folder.has_parent_path()) fs::create_directories(folder.parent_path(), failure);
  if (!failure && mkdir(folder.c_str(), kFolderMode) != 0) {
    failure.assign(errno, std::generic_category());
    std::error_code ignored;
    if (fs::is_directory(folder, ignored)) return true;
  }
  if (failure)
    reason = "cannot make the state folder " + folder.string() + ": " + failure.message();
  return !failure;
}

// Someone who names a folder trusts everyone who can write in it.
bool IsTrusted(uid_t owner) {
  return owner == geteuid() || owner == 0 || NamedFolder() != nullptr;
}

// Why the folder must not be used; null when it may be.
const char* Objection(const std::string& folder) {
  struct stat facts;
  if (stat(folder.c_str(), &facts) != 0) return strerror(errno);
  if ((facts.st_mode & S_IWOTH) != 0) return "everyone can write in it";
  if (!IsTrusted(facts.st_uid)) return "it belongs to another user; CORVANE_SIM_STATE can name one";
  return nullptr;
}

}  // namespace

std::optional<std::string> UseStateFolder(std::string& reason) {
  const std::string folder = FindFolder();
  if (folder.empty()) {
    reason = "there is no home folder for the device state: CORVANE_SIM_STATE can name a folder";
    return std::nullopt;
  }
  if (!MakeFolder(folder, reason)) return std::nullopt;
  std::error_code failure;
  const fs::path whole = fs::canonical(folder, failure);
  const char* objection = Objection(whole);
  if (objection == nullptr) return whole;
  reason = "cannot use the state folder " + folder + ": " + objection;
  return std::nullopt;
}

bool IsStateFile(const struct stat& facts) {
  return S_ISREG(facts.st_mode) && facts.st_nlink <= 1 && IsTrusted(facts.st_uid);
}

int OpenStateFile(const std::string& path, int flags, std::string& reason) {
  // A pipe that somebody put there must not keep the program waiting.
  const int file = open(path.c_str(), O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | flags, kFileMode);
  const int error = errno;
  struct stat facts;
  const bool there = (file >= 0 ? fstat(file, &facts) : lstat(path.c_str(), &facts)) == 0;
  if (file >= 0 && there && IsStateFile(facts)) return file;
  if (file >= 0) close(file);
  errno = there && !IsStateFile(facts) ? ELOOP : error;
  reason = errno == ELOOP ? kForeignFile : strerror(errno);
  return -1;
}

}  // namespace simulator
