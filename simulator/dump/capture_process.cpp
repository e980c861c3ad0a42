#include "dump/capture_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <span>

namespace simulator {
namespace {

constexpr int kReportFile = 3;  // in the background: after the standard ones
constexpr int kStopLimitMs = 30'000;

volatile bool stop_wanted = false;

std::string PagePath(const CapturePlace& place) {
  std::string name = place.device;
  std::replace(name.begin(), name.end(), ':', '-');
  return place.folder + "/capture-" + name + ".status";
}

// ---- In the background

// Of the files of the program that started the capture only the pipe to it stays open. There may be
// any number of them, the database among them.
void Detach(int pipe_end) {
  dup2(pipe_end, kReportFile);
  close_range(kReportFile + 1, ~0U, 0);
  const int null = open("/dev/null", O_RDWR);
  for (int standard = 0; standard < kReportFile; ++standard) dup2(null, standard);
  if (null > kReportFile) close(null);
  prctl(PR_SET_NAME, "corvane-capture");
}

void SetSignals() {
  struct sigaction action = {};
  action.sa_handler = SIG_IGN;
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGXFSZ, SIGUSR1, SIGUSR2}) {
    sigaction(number, &action, nullptr);
  }
  action.sa_handler = [](int) { stop_wanted = true; };
  sigaction(SIGTERM, &action, nullptr);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
}

// The starting program reads 1 when the capture runs, else the reason. It reads until the pipe is
// closed, which the end of this process does at the latest.
void Tell(const std::string& text) {
  [[maybe_unused]] const ssize_t written = write(kReportFile, text.data(), text.size());
}

int Work(CapturePage& page, const std::string& page_path, const CaptureOrder& order) {
  CaptureRun run;
  std::string reason;
  if (!page.Hold(page_path, reason) || !run.Open(order, reason)) {
    Tell(reason);
    return 1;
  }
  page.shared().settings.Store(order.settings);
  page.shared().report.Store(run.Report(CaptureState::kRunning, 0));
  Tell("1");
  close(kReportFile);
  run.Run(page, stop_wanted);
  return 0;
}

// Ends without the starting program's clean-up, which this process must not do. The page is held to
// the end.
[[noreturn]] void RunInBackground(int pipe_end, const CapturePlace& place,
                                  const CaptureOrder& order) {
  SetSignals();
  setsid();
  if (fork() != 0) _exit(0);
  Detach(pipe_end);
  CapturePage page;
  _exit(Work(page, PagePath(place), order));
}

// ---- In the programs

std::string ReadToEnd(int file) {
  std::string text;
  char buffer[512];
  for (;;) {
    const ssize_t count = read(file, buffer, sizeof buffer);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return text;
    text.append(buffer, static_cast<size_t>(count));
  }
}

}  // namespace

bool StartCapture(const CapturePlace& place, const CaptureOrder& order, std::string& reason) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    reason = strerror(errno);
    return false;
  }
  const pid_t child = fork();
  if (child == 0) RunInBackground(ends[1], place, order);
  reason = child < 0 ? strerror(errno) : "the capture ended at once";
  close(ends[1]);
  const std::string told = ReadToEnd(ends[0]);
  close(ends[0]);
  while (child > 0 && waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
  if (!told.empty()) reason = told;
  return told == "1";
}

bool CaptureIsRunning(const CapturePlace& place) {
  CapturePage page;
  return page.Open(PagePath(place)) && page.Holder() != 0;
}

CaptureReport ReadCapture(const CapturePlace& place) {
  CapturePage page;
  if (!page.Open(PagePath(place))) return {};
  const bool runs = page.Holder() != 0;
  CaptureReport report = page.shared().report.Load();
  if (runs) return report;
  if (report.state > CaptureState::kFailed) return {};  // damaged
  report.status.enabled = 0;
  report.status.cache_used = 0;
  if (report.state != CaptureState::kRunning) return report;
  report.state = CaptureState::kFailed;
  report.status.error = 1;
  return report;
}

void ChangeCapture(const CapturePlace& place, const CaptureSettings& settings) {
  CapturePage page;
  if (page.Open(PagePath(place)) && page.Holder() != 0) page.shared().settings.Store(settings);
}

bool CaptureFollows(const CapturePlace& place, const CaptureSettings& settings) {
  CapturePage page;
  if (!page.Open(PagePath(place)) || page.Holder() == 0) return true;
  const CaptureSettings given = page.shared().settings.Load();
  return std::ranges::equal(std::as_bytes(std::span(&given, 1)),
                            std::as_bytes(std::span(&settings, 1)));
}

bool StopCapture(const CapturePlace& place) {
  CapturePage page;
  if (!page.Open(PagePath(place))) return true;
  const pid_t holder = page.Holder();
  if (holder == 0) return true;
  if (holder < 0 || (kill(holder, SIGTERM) != 0 && errno != ESRCH)) return false;
  for (int waited_ms = 0; waited_ms < kStopLimitMs; ++waited_ms) {
    if (page.Holder() != holder) return true;
    usleep(1000);
  }
  return false;
}

bool ForgetCapture(const CapturePlace& place) {
  if (!StopCapture(place)) return false;
  return unlink(PagePath(place).c_str()) == 0 || errno == ENOENT;
}

}  // namespace simulator
