#include "console/output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "console/status.h"

namespace corvane {

namespace {

constexpr size_t kBufferSize = 16384;  // the longest report has about 6 kB

int failure = 0;  // errno of the first write that failed

}  // namespace

void PrepareOutput() {
  pollfd streams[] = {{STDIN_FILENO, 0, 0}, {STDOUT_FILENO, 0, 0}, {STDERR_FILENO, 0, 0}};
  poll(streams, 3, 0);
  for (const pollfd& stream : streams) {
    // The closed stream has the lowest free number, so it is the one that is opened. It is opened
    // for reading, so writing fails.
    if ((stream.revents & POLLNVAL) != 0) open("/dev/null", O_RDONLY);
  }
  static char buffer[kBufferSize];
  if (isatty(STDOUT_FILENO) == 0) setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}

FILE* PartAnswers() {
  const int answers = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  return fdopen(answers, "w");
}

bool FlushOutput() {
  if (fflush(stdout) != 0 && failure == 0) failure = errno;
  return failure == 0 && ferror(stdout) == 0;
}

int FinishOutput(int result) {
  if (FlushOutput()) return result;
  fprintf(stderr, "corvane: cannot write to standard output: %s\n",
          strerror(failure == 0 ? EIO : failure));
  return result == kSuccess ? kOutputLost : result;
}

}  // namespace corvane
