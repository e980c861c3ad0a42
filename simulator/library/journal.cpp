#include "library/journal.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace simulator {
namespace {

// Removes the bytes just written from the end, unless another program's bytes follow them.
bool TakeBack(int file, size_t size) {
  struct stat facts;
  const off_t end = lseek(file, 0, SEEK_CUR);
  return fstat(file, &facts) == 0 && facts.st_size == end &&
         ftruncate(file, end - static_cast<off_t>(size)) == 0;
}

// One write for each line, so that lines of concurrent programs do not mix; more writes only when
// the disk has no room for the whole line.
bool Append(int file, const std::string& line) {
  size_t done = 0;
  while (done < line.size()) {
    const ssize_t written = write(file, &line[done], line.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) break;
    done += static_cast<size_t>(written);
  }
  if (done == line.size()) return true;
  const int error = errno;
  if (done > 0) TakeBack(file, done);
  errno = error;
  return false;
}

}  // namespace

bool WriteJournal(const std::string& path, const std::string& line) {
  const int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC;
  const int file = open(path.c_str(), flags, 0666);
  if (file < 0) return false;
  const bool ok = Append(file, line);
  const int error = errno;
  close(file);
  errno = error;
  return ok;
}

}  // namespace simulator
