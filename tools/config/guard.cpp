#include "guard.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace config {

namespace {

// Signals that do no harm, or that must end the process.
constexpr int kLeftAlone[] = {SIGCHLD, SIGCONT, SIGURG,  SIGWINCH, SIGPIPE, SIGABRT, SIGBUS,
                              SIGFPE,  SIGILL,  SIGSEGV, SIGSYS,   SIGTRAP, SIGKILL, SIGSTOP};
constexpr int kLockWaitMs = 10;
constexpr int kWorthSayingMs = 1000;  // an apply takes less

int signals = -1;  // a descriptor that can be read when a signal came

// Everybody locks the same file, so it is only read: what another user made cannot be written, and
// in a folder like this not even be opened with O_CREAT.
int OpenLock(const std::string& path) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    const int flags = O_RDONLY | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
    int file = open(path.c_str(), flags);
    if (file >= 0 || errno != ENOENT) return file;
    file = open(path.c_str(), flags | O_CREAT | O_EXCL, 0644);
    if (file >= 0) fchmod(file, 0644);  // whatever the umask
    if (file >= 0 || errno != EEXIST) return file;
  }
  return -1;
}

int OpenLockOf(const std::string& device) {
  std::string name = "/corvane-config-" + device + ".lock";
  std::ranges::replace(name, ' ', '-');
  const int file = OpenLock("/run/lock" + name);
  const char* runtime = getenv("XDG_RUNTIME_DIR");
  if (file >= 0 || runtime == nullptr || *runtime == '\0') return file;
  return OpenLock(runtime + name);
}

int64_t NowMs() {
  timespec now = {};
  clock_gettime(CLOCK_BOOTTIME, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

// Adds what can be read to the text; false at the end of the input.
bool ReadSome(std::string& text) {
  char part[256];
  const ssize_t count = read(STDIN_FILENO, part, sizeof part);
  if (count > 0) text.append(part, static_cast<size_t>(count));
  return count > 0 || (count < 0 && errno == EINTR);
}

}  // namespace

std::string LockDevices(std::vector<std::string> names, bool quiet) {
  std::ranges::sort(names);  // so that two with several devices do not wait for each other
  for (const std::string& name : names) {
    const int file = OpenLockOf(name);
    if (file < 0) return name + " cannot be locked: " + strerror(errno);
    for (int ms = 0; flock(file, LOCK_EX | LOCK_NB) != 0; ms += kLockWaitMs) {
      if (errno != EWOULDBLOCK) return name + " cannot be locked: " + strerror(errno);
      if (ms == kWorthSayingMs && !quiet) {
        fprintf(stderr, "%s: waiting for another corvane-config\n", name.c_str());
      }
      if (SignalCame(kLockWaitMs)) return "interrupted";
    }
  }
  return "";
}

void HoldSignals() {
  sigset_t set;
  sigemptyset(&set);
  for (int number = 1; number <= SIGRTMAX; ++number) {
    struct sigaction present = {};
    const bool ends = sigaction(number, nullptr, &present) == 0 && present.sa_handler == SIG_DFL;
    if (ends && std::ranges::count(kLeftAlone, number) == 0) sigaddset(&set, number);
  }
  sigprocmask(SIG_BLOCK, &set, nullptr);
  signals = signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

bool SignalCame(int wait_ms) {
  pollfd came = {signals, POLLIN, 0};
  return poll(&came, 1, wait_ms) > 0;
}

const char* AskFor(const std::string& word, int seconds) {
  tcflush(STDIN_FILENO, TCIFLUSH);  // what was typed before the question is no answer
  const int64_t end = NowMs() + int64_t{seconds} * 1000;
  std::string text;
  while (true) {
    const int64_t left = end - NowMs();
    if (left <= 0) return "no answer in time";
    pollfd files[] = {{signals, POLLIN, 0}, {STDIN_FILENO, POLLIN, 0}};
    if (poll(files, 2, static_cast<int>(left)) < 0 && errno != EINTR) return "the input has ended";
    if (files[0].revents != 0) return "a signal came";
    if (files[1].revents == 0) continue;
    if (!ReadSome(text)) return "the input has ended";
    const size_t line = text.find('\n');
    if (line != std::string::npos) {
      return text.substr(0, line) == word ? nullptr : "another answer";
    }
    if (text.size() > word.size()) return "another answer";
  }
}

}  // namespace config
