#include "capture.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <initializer_list>

#include "capture/capture_start.h"
#include "capture/wide_string.h"
#include "console/report.h"
#include "console/status.h"
#include "device/mac_text.h"
#include "device/selection.h"
#include "device/session.h"
#include "folder.h"
#include "relay.h"

using namespace corvane;

namespace extcap {

namespace {

constexpr int kLookMs = 250;  // between two looks at the capture's status
constexpr int kRoomMs = 5;
constexpr int64_t kPatienceMs = 5000;  // with a reader that takes nothing, at the end
constexpr size_t kMostFiles = 2;       // on the disk: the one that is read, the one that is written
constexpr uint32_t kMegabyte = 20;     // bits

struct File {
  int descriptor = -1;
  ~File() {
    if (descriptor >= 0) close(descriptor);
  }
};

int64_t NowMs() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1'000'000;
}

int FailWith(int status, const std::string& reason) {
  return Fail(status, ("Failed: " + reason).c_str());
}

// From now on these signals wait in the descriptor.
int HoldSignals() {
  signal(SIGPIPE, SIG_IGN);
  sigset_t set;
  sigemptyset(&set);
  for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&set, number);
  sigprocmask(SIG_BLOCK, &set, nullptr);
  return signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

bool TakeSignal(int signals) {
  signalfd_siginfo taken;
  return read(signals, &taken, sizeof taken) > 0;
}

// Waits for a reader; nothing is to be undone yet then, and signals end the process. -1 with errno,
// ESPIPE when the file is something else: nobody would notice its end.
int OpenPipe(const std::string& path) {
  const int pipe = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  struct stat facts;
  if (pipe >= 0 && (fstat(pipe, &facts) != 0 || !S_ISFIFO(facts.st_mode))) {
    close(pipe);
    errno = ESPIPE;
    return -1;
  }
  if (pipe >= 0) fcntl(pipe, F_SETFL, O_NONBLOCK);
  return pipe;
}

// The program that started this one. The C library's pidfd_open cannot be called from C++.
int OpenViewer() {
  return static_cast<int>(syscall(SYS_pidfd_open, getppid(), 0));
}

std::string NameOf(DeviceHandle device) {
  uint8_t mac[CORVANE_MAC_SIZE] = {};
  return CorvaneAPIGetDeviceMAC(device, mac) == kSuccess ? MacText(mac) : "";
}

void StopLeftover(const std::string& mac) {
  const DeviceHandle device = ResolveDevice(mac.c_str());
  if (device != CORVANE_NO_DEVICE) CorvaneAPIDiskDumpStop(device);
}

// The library makes a file after the other, in the folder; the relay removes them.
DiskDumpConfigEx ConfigOf(const CaptureWish& wish, const std::string& folder) {
  DiskDumpConfigEx config = {};
  config.max_file_size = uint64_t{wish.file_size_mb} << kMegabyte;
  config.max_cache = uint64_t{wish.cache_mb} << kMegabyte;
  config.full_frames = wish.full_frames ? 1 : 0;
  config.directory = ToWideString(folder);
  config.pattern = ToWideString("%N_%Y%M%D%H%m%s.pcapng");
  return config;
}

// A capture that this program has started.
struct Running {
  DeviceHandle device;
  int pipe;
  int signals;
  int viewer;  // can be read when the program that started this one has ended
  Relay& relay;
};

enum class End : uint8_t {
  kAsked,  // by a signal
  kNoReader,
  kStopped,    // somebody else stopped the capture
  kError,      // of the capture
  kNoStatus,   // the device does not answer
  kUnreadable  // the files
};

// Waits until a file grows, a signal comes, the reader goes away, or for the time. A full pipe is
// given some time to empty: to fill every page that its reader has taken would cost much more. Who
// reads the pipe may notice only with the next frame that the viewer has ended. False when there is
// no reader.
bool Await(const Running& run, Relay::State state, int wait_ms) {
  if (state == Relay::State::kBusy) wait_ms = 0;
  if (state == Relay::State::kBlocked) wait_ms = kRoomMs;
  pollfd watched[] = {{run.pipe, 0, 0},
                      {run.viewer, POLLIN, 0},
                      {run.signals, POLLIN, 0},
                      {state == Relay::State::kIdle ? run.relay.watch() : -1, POLLIN, 0}};
  poll(watched, 4, wait_ms);
  return watched[0].revents == 0 && watched[1].revents == 0;
}

// Until there is a reason to end. library_status: why the device does not answer.
End Follow(const Running& run, int& library_status) {
  int64_t looked_ms = NowMs();
  Relay::State state = Relay::State::kIdle;
  while (true) {
    if (!Await(run, state, kLookMs)) return End::kNoReader;
    if (TakeSignal(run.signals)) return End::kAsked;
    state = run.relay.Move();
    if (state == Relay::State::kClosed) return End::kNoReader;
    if (state == Relay::State::kFailed) return End::kUnreadable;
    if (NowMs() - looked_ms < kLookMs) continue;
    looked_ms = NowMs();
    DiskDumpStatus capture = {};
    library_status = CorvaneAPIDiskDumpGetStatus(run.device, &capture);
    if (library_status != kSuccess) return End::kNoStatus;
    if (capture.error != 0) return End::kError;
    if (capture.enabled == 0) return End::kStopped;
  }
}

// Moves what the files still hold, unless nobody takes it or a signal comes again.
void Drain(const Running& run) {
  Relay::State state = Relay::State::kBusy;
  int64_t moved_ms = NowMs();
  while (state == Relay::State::kBusy || NowMs() - moved_ms < kPatienceMs) {
    if (!Await(run, state, 0) || TakeSignal(run.signals)) return;
    state = run.relay.Move();
    if (state == Relay::State::kBusy) moved_ms = NowMs();
    if (state != Relay::State::kBusy && state != Relay::State::kBlocked) return;
  }
}

int Report(End end, int library_status, const Relay& relay) {
  if (relay.files_passed_over() > 0) {
    FailWith(kSuccess,
             "the viewer was too slow, files lost: " + std::to_string(relay.files_passed_over()));
  }
  if (end == End::kNoStatus) return FailWith(library_status, "cannot get status");
  if (end == End::kError) return FailWith(kRejected, "the capture ended with an error");
  if (end == End::kUnreadable) return FailWith(kRejected, relay.failure());
  return kSuccess;
}

int Run(const CaptureWish& wish, DeviceHandle device, int pipe) {
  RemoveLeftovers(StopLeftover);
  const File signals = {HoldSignals()};
  const File viewer = {OpenViewer()};
  CaptureFolder folder;
  std::string reason;
  if (!folder.Make(NameOf(device), reason)) return FailWith(kRejected, reason);
  if (mbstowcs(nullptr, folder.path().c_str(), 0) == static_cast<size_t>(-1)) {
    return FailWith(kRejected, folder.path() + ": not UTF-8");
  }
  Relay relay(kMostFiles);
  if (!relay.Open(folder.path(), folder.descriptor(), pipe)) {
    return FailWith(kRejected, folder.path() + ": " + strerror(errno));
  }
  const CaptureStart start = StartCapture(device, ConfigOf(wish, folder.path()));
  if (start.status != kSuccess) return Fail(start.status, start.line);

  const Running run = {device, pipe, signals.descriptor, viewer.descriptor, relay};
  int library_status = kSuccess;
  const End end = Follow(run, library_status);
  if (end != End::kStopped && end != End::kError) CorvaneAPIDiskDumpStop(device);
  if (end != End::kNoReader) Drain(run);
  return Report(end, library_status, relay);
}

}  // namespace

int Capture(const CaptureWish& wish) {
  const File pipe = {OpenPipe(wish.fifo)};
  if (pipe.descriptor < 0) {
    const char* reason = errno == ESPIPE ? "is no named pipe" : strerror(errno);
    return FailWith(kRejected, wish.fifo + ": " + reason);
  }
  if (!wish.filter.empty()) return Fail(kBadValue, kNoFilter);
  const Session session;
  const DeviceHandle device = ResolveDevice(wish.device.c_str());
  if (device == CORVANE_NO_DEVICE) return FailSelection();
  return Run(wish, device, pipe.descriptor);
}

}  // namespace extcap
