#include "folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace extcap {

namespace {

constexpr std::string_view kPrefix = "corvane-extcap-";
constexpr size_t kMacLength = 17;
constexpr int kAttempts = 10;
constexpr std::string_view kRandom = "-XXXXXX";

std::string ParentFolder() {
  const char* folder = getenv("TMPDIR");
  return folder != nullptr && *folder != '\0' ? folder : "/tmp";
}

// Calls visit with the name of every entry but the two dots.
void ForEachEntry(int folder, const std::function<void(const char* name)>& visit) {
  DIR* entries = fdopendir(openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (entries == nullptr) return;
  while (const dirent* entry = readdir(entries)) {
    if (strcmp(entry->d_name, ".") != 0 && strcmp(entry->d_name, "..") != 0) visit(entry->d_name);
  }
  closedir(entries);
}

// True when somebody has the file open for writing: then nobody else gets a lease to read it.
bool IsWritten(int folder, const char* name) {
  const int file = openat(folder, name, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
  if (file < 0) return false;
  const bool written = fcntl(file, F_SETLEASE, F_RDLCK) != 0 && errno == EAGAIN;
  close(file);  // gives the lease back
  return written;
}

void RemoveFolder(int folder, const std::string& path) {
  ForEachEntry(folder, [folder](const char* name) { unlinkat(folder, name, 0); });
  rmdir(path.c_str());
}

// Opens a folder of this user and locks it as flock does; -1 when that fails or it is gone.
int OpenLocked(const std::string& path, int operation) {
  const int folder = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  struct stat facts;
  if (folder < 0) return -1;
  if (flock(folder, operation) == 0 && fstat(folder, &facts) == 0 && facts.st_nlink > 0 &&
      facts.st_uid == geteuid()) {
    return folder;
  }
  close(folder);
  return -1;
}

}  // namespace

void RemoveLeftovers(const std::function<void(const std::string& mac)>& stop) {
  const std::string parent = ParentFolder();
  const int parent_descriptor = open(parent.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (parent_descriptor < 0) return;
  ForEachEntry(parent_descriptor, [&](const std::string& name) {
    if (!name.starts_with(kPrefix) || name.size() != kPrefix.size() + kMacLength + kRandom.size()) {
      return;
    }
    const std::string path = parent + "/" + name;
    const int folder = OpenLocked(path, LOCK_EX | LOCK_NB);
    if (folder < 0) return;
    bool written = false;
    ForEachEntry(folder, [&](const char* file) { written = written || IsWritten(folder, file); });
    std::string mac = name.substr(kPrefix.size(), kMacLength);
    std::ranges::replace(mac, '-', ':');
    if (written) stop(mac);
    RemoveFolder(folder, path);
    close(folder);
  });
  close(parent_descriptor);
}

CaptureFolder::~CaptureFolder() {
  if (descriptor_ < 0) return;
  RemoveFolder(descriptor_, path_);
  close(descriptor_);
}

bool CaptureFolder::Make(const std::string& mac, std::string& reason) {
  std::string name = mac;
  std::ranges::replace(name, ':', '-');
  const std::string stem = ParentFolder() + "/" + std::string(kPrefix) + name;
  // Until it is locked, another program may take it for a leftover.
  for (int attempt = 0; descriptor_ < 0 && attempt < kAttempts; ++attempt) {
    path_ = stem + std::string(kRandom);
    const bool made = mkdtemp(path_.data()) != nullptr;
    if (made) descriptor_ = OpenLocked(path_, LOCK_EX);
    if (descriptor_ < 0) reason = path_ + ": " + strerror(errno);
    if (!made) break;
  }
  return descriptor_ >= 0;
}

}  // namespace extcap
