#include "check.h"

#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstring>
#include <new>

namespace lab {

namespace {

constexpr int kAllAsAssumed = 0;
constexpr int kSomeDiffer = 1;
constexpr int kTrouble = 2;
constexpr useconds_t kPollUs = 2'000;
constexpr int kPatienceMs = 3000;  // for one call of the library

constexpr int kEndings[] = {SIGINT, SIGTERM, SIGHUP, SIGQUIT};

volatile sig_atomic_t interrupted = 0;
Shared* shared = nullptr;

void Note(size_t row, Verdict verdict, const std::string& seen) {
  snprintf(shared->rows[row].seen, kMostText, "%s", seen.c_str());
  shared->rows[row].verdict = verdict;
}

// In the child: the row ends here when the library lacks the function.
void CountCall(const char* function, bool found) {
  ++shared->calls;
  if (found) return;
  Note(static_cast<size_t>(shared->row), Verdict::kNotTried,
       std::string("the library has no ") + function);
  _exit(0);
}

// The word of the library's standard output is not ours to print.
void BecomeChild() {
  for (const int number : kEndings) signal(number, SIG_IGN);
  dup2(STDERR_FILENO, STDOUT_FILENO);
  SetBeforeCall(CountCall);
}

Outcome Try(const Assumption& row, Subject& subject, bool write) {
  if (row.needs == Needs::kWriting && !write)
    return {Verdict::kNotTried, "it writes to the device: --write"};
  if (row.needs != Needs::kNothing && !OpenSubject(subject)) {
    if (subject.open_status != CORVANE_OK) return {Verdict::kNotTried, "the library does not open"};
    return {Verdict::kNotTried, "no such device is attached"};
  }
  if (row.needs == Needs::kWriting) NoteOriginals(subject);
  Outcome outcome = row.check(subject);
  if (row.needs == Needs::kWriting && shared->stop) return {Verdict::kNotTried, "interrupted"};
  return outcome;
}

// Tries the rows from this one on; the others follow in another process when this one ends.
void TryRows(size_t first, Subject subject, bool write) {
  for (size_t row = first; row < AllAssumptions().size() && !shared->stop; ++row) {
    shared->row = static_cast<int>(row);
    const Outcome outcome = Try(AllAssumptions()[row], subject, write);
    Note(row, outcome.verdict, outcome.seen);
  }
  if (subject.opened && subject.open_status == CORVANE_OK) LIBRARY(CorvaneAPIUninitialize)();
}

// What became of the process, which is killed when a call takes too long. `print` is called while
// it runs.
template <class Print>
std::string WaitFor(pid_t child, Print print) {
  int calls = shared->calls;
  int idle_ms = 0;
  int status = 0;
  bool hangs = false;
  while (waitpid(child, &status, WNOHANG) == 0) {
    usleep(kPollUs);
    idle_ms = calls == shared->calls ? idle_ms + static_cast<int>(kPollUs) / 1000 : 0;
    calls = shared->calls;
    if (interrupted != 0) shared->stop = true;
    print();
    if (idle_ms < kPatienceMs) continue;
    hangs = true;
    kill(child, SIGKILL);
    idle_ms = 0;
  }
  print();
  if (hangs) return "no answer in 3 s";
  if (WIFSIGNALED(status)) return "ended by signal " + std::to_string(WTERMSIG(status));
  if (WEXITSTATUS(status) != 0) return "ended with status " + std::to_string(WEXITSTATUS(status));
  return "";
}

template <class Work>
pid_t StartChild(Work work) {
  fflush(stdout);
  const pid_t child = fork();
  if (child != 0) return child;
  BecomeChild();
  work();
  _exit(0);
}

void Print(const char* name, const char* sentence, Verdict verdict, const char* seen) {
  static constexpr const char* kWords[] = {"not tried", "OK", "differs", "not tried"};
  printf("%-9s  %-12s  %s: %s\n", kWords[static_cast<int>(verdict)], name, sentence, seen);
  fflush(stdout);
}

// Prints the rows that are known, from the first that is not printed.
void PrintRows(size_t& printed) {
  for (; printed < AllAssumptions().size(); ++printed) {
    const auto& row = shared->rows[printed];
    if (row.verdict == Verdict::kNone) return;
    const Assumption& assumption = AllAssumptions()[printed];
    Print(assumption.name, assumption.sentence, row.verdict, row.seen);
  }
}

void TryAll(const Subject& subject, bool write) {
  size_t printed = 0;
  const size_t count = AllAssumptions().size();
  for (size_t row = 0; row < count && interrupted == 0;) {
    shared->row = static_cast<int>(row);
    const pid_t child = StartChild([&] { TryRows(row, subject, write); });
    const std::string end =
        child < 0 ? strerror(errno) : WaitFor(child, [&] { PrintRows(printed); });
    const auto last = static_cast<size_t>(shared->row);
    if (shared->rows[last].verdict == Verdict::kNone && interrupted == 0) {
      Note(last, Verdict::kDiffers, end.empty() ? "the library ended the process" : end);
    }
    row = last + 1;
  }
  for (size_t row = 0; row < count; ++row) {
    if (shared->rows[row].verdict == Verdict::kNone) Note(row, Verdict::kNotTried, "interrupted");
  }
  PrintRows(printed);
}

// In a process of its own, as everything before may have ended in a crash. The settings were not
// made permanent, so a restart of the device brings back those that could not be put back here.
bool Restore(const Subject& subject) {
  bool any = shared->clock.changed;
  for (const auto& original : shared->originals) any = any || original.valid;
  if (!any) return true;
  const size_t row = AllAssumptions().size();
  shared->row = static_cast<int>(row);
  const pid_t child = StartChild([&] {
    Subject again = subject;
    const bool found = OpenSubject(again);
    const std::string faults = found ? RestoreOriginals(again) : "the device is not there; ";
    Note(row, faults.empty() ? Verdict::kOk : Verdict::kDiffers,
         faults.empty() ? "everything" : faults.substr(0, faults.size() - 2));
    LIBRARY(CorvaneAPIUninitialize)();
  });
  const std::string end = child < 0 ? strerror(errno) : WaitFor(child, [] {});
  auto& restored = shared->rows[row];
  if (restored.verdict == Verdict::kNone) Note(row, Verdict::kDiffers, end);
  Print("restored", "The settings are as they were", restored.verdict, restored.seen);
  return restored.verdict == Verdict::kOk;
}

void CatchSignals() {
  struct sigaction action = {};
  action.sa_handler = [](int) { interrupted = 1; };
  for (const int number : kEndings) sigaction(number, &action, nullptr);
  signal(SIGPIPE, SIG_IGN);  // who reads the lines may go away; what was changed is put back
}

}  // namespace

int Check(const std::string& device, bool write) {
  void* memory =
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return kTrouble;
  shared = new (memory) Shared();
  CatchSignals();
  const Subject subject = {*shared, device};
  TryAll(subject, write);
  const bool restored = Restore(subject);
  bool differs = !restored;
  bool looked = false;
  for (size_t row = 0; row < AllAssumptions().size(); ++row) {
    const Verdict verdict = shared->rows[row].verdict;
    differs = differs || verdict == Verdict::kDiffers;
    const bool of_device = AllAssumptions()[row].needs == Needs::kDevice;
    looked = looked || (of_device && verdict == Verdict::kOk);
  }
  if (interrupted != 0) return kTrouble;
  if (differs) return kSomeDiffer;
  return looked ? kAllAsAssumed : kTrouble;
}

}  // namespace lab
