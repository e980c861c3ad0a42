#include "dump/capture_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

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

// Opening the sources may take any time: until then the page says that a capture runs.
bool Begin(CapturePage& page, const CaptureOrder& order, CaptureRun& run, std::string& reason) {
  CaptureReport report = {.state = CaptureState::kRunning};
  report.status.enabled = 1;
  page.shared().settings.Store(order.settings);
  page.shared().report.Store(report);
  page.shared().told = 0;
  const bool open = run.Open(order, reason);
  page.shared().report.Store(open ? run.Report(CaptureState::kRunning, 0) : CaptureReport{});
  return open;
}

int Work(CapturePage& page, const std::string& page_path, const CaptureOrder& order) {
  CaptureRun run;
  std::string reason;
  if (!page.Hold(page_path, reason) || !Begin(page, order, run, reason)) {
    Tell(reason);
    return 1;
  }
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

// True once for each failure; every time for a user who cannot note that it was told.
bool IsNews(const std::string& page_path) {
  CapturePage page;
  return !page.Open(page_path, O_RDWR) || page.shared().told.exchange(1) == 0;
}

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
  return page.Open(PagePath(place), O_RDONLY) && page.Holder() != 0;
}

CaptureView ReadCapture(const CapturePlace& place) {
  const std::string path = PagePath(place);
  CapturePage page;
  if (!page.Open(path, O_RDONLY)) {
    return {.refusal = errno == EACCES ? path + ": " + strerror(EACCES) : ""};
  }
  CaptureView view = {.runs = page.Holder() != 0, .report = page.shared().report.Load()};
  CaptureReport& report = view.report;
  if (view.runs) {  // until its process has ended no other can begin, whatever it reports
    report.state = CaptureState::kRunning;
    report.status.enabled = 1;
    report.status.error = 0;
    return view;
  }
  if (report.state > CaptureState::kFailed) return {};  // damaged
  report.status.enabled = 0;
  report.status.cache_used = 0;
  const bool killed = report.state == CaptureState::kRunning;
  if (!killed && report.state != CaptureState::kFailed) return view;
  report.state = CaptureState::kFailed;
  report.status.error = 1;
  if (killed) strcpy(report.reason, "its process was killed");
  if (IsNews(path))
    view.failure.assign(report.reason, strnlen(report.reason, sizeof report.reason));
  return view;
}

bool OpenToChange(const CapturePlace& place, CapturePage& page) {
  return page.Open(PagePath(place), O_RDWR) && page.Holder() != 0;
}

int StopCapture(const CapturePlace& place) {
  CapturePage page;
  if (!page.Open(PagePath(place), O_RDONLY)) return errno == EACCES ? EACCES : 0;
  const pid_t holder = page.Holder();
  if (holder == 0) return 0;
  if (holder < 0) return ESRCH;
  for (int waited_ms = 0; waited_ms < kStopLimitMs; ++waited_ms) {
    // Again and again: one that came just before a read that waits did not interrupt it.
    if (waited_ms % 1000 == 0 && kill(holder, SIGTERM) != 0 && errno != ESRCH) return errno;
    if (page.Holder() != holder) return 0;
    usleep(1000);
  }
  return ETIME;
}

int ForgetCapture(const CapturePlace& place) {
  if (const int error = StopCapture(place); error != 0) return error;
  return unlink(PagePath(place).c_str()) == 0 || errno == ENOENT ? 0 : errno;
}

}  // namespace simulator
