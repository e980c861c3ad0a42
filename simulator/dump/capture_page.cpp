#include "dump/capture_page.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "state/folder.h"

namespace simulator {
namespace {

constexpr struct flock kWholeFile = {.l_type = F_WRLCK, .l_whence = SEEK_SET};

}  // namespace

CapturePage::~CapturePage() {
  if (shared_ != nullptr) munmap(shared_, sizeof *shared_);
  if (file_ >= 0) close(file_);
}

bool CapturePage::Map(int protection) {
  void* memory = mmap(nullptr, sizeof *shared_, protection, MAP_SHARED, file_, 0);
  if (memory == MAP_FAILED) return false;
  shared_ = static_cast<SharedCapture*>(memory);
  return true;
}

// The room on the disk is taken now: writing to a page without room would end the process.
bool CapturePage::Hold(const std::string& path, std::string& reason) {
  file_ = OpenStateFile(path, O_RDWR | O_CREAT, reason);
  struct flock lock = kWholeFile;
  if (file_ >= 0 && fcntl(file_, F_SETLK, &lock) == 0) {
    const int failure = posix_fallocate(file_, 0, sizeof *shared_);
    if (failure == 0 && Map(PROT_READ | PROT_WRITE)) return true;
    if (failure != 0) errno = failure;
  }
  if (file_ >= 0) reason = errno == EAGAIN ? kAnotherRuns : strerror(errno);
  reason = "cannot use " + path + ": " + reason;
  return false;
}

bool CapturePage::Open(const std::string& path, int access) {
  std::string unused;
  file_ = OpenStateFile(path, access, unused);
  struct stat facts;
  if (file_ < 0 || fstat(file_, &facts) != 0) return false;
  errno = 0;
  return facts.st_size >= static_cast<off_t>(sizeof *shared_) &&
         Map(access == O_RDWR ? PROT_READ | PROT_WRITE : PROT_READ);
}

pid_t CapturePage::Holder() const {
  struct flock lock = kWholeFile;
  if (fcntl(file_, F_GETLK, &lock) != 0 || lock.l_type == F_UNLCK) return 0;
  return lock.l_pid > 0 ? lock.l_pid : -1;
}

bool CapturePage::is_there() const {
  struct stat facts;
  return fstat(file_, &facts) == 0 && facts.st_nlink > 0;
}

}  // namespace simulator
