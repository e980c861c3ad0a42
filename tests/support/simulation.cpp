#include "support/simulation.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

std::vector<char*> Pointers(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

// Spawned, not forked: a copy of this process could wait for ever for the allocator's lock, if
// another thread holds it just then.
pid_t Start(const std::string& folder, std::vector<std::string>& words, int out, int err) {
  // Of variables that stand there twice the first counts.
  std::vector<std::string> variables = {"CORVANE_SIM_CONFIG=" + folder + "/sim.toml",
                                        "CORVANE_SIM_STATE=" + folder + "/state"};
  for (char** each = environ; *each != nullptr; ++each) variables.emplace_back(*each);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, err, STDERR_FILENO);
  pid_t program = 0;
  const int failed = posix_spawn(&program, CORVANE_EXECUTABLE, &actions, nullptr,
                                 Pointers(words).data(), Pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  if (failed != 0) abort();
  return program;
}

// Signals that a shell or a supervisor left ignored or blocked would be so in every program that a
// test runs: undone before the first one.
const bool signals_are_reset = [] {
  for (const int number : {SIGHUP, SIGINT, SIGQUIT, SIGPIPE, SIGALRM, SIGTERM, SIGCHLD}) {
    signal(number, SIG_DFL);
  }
  sigset_t none;
  sigemptyset(&none);
  return sigprocmask(SIG_SETMASK, &none, nullptr) == 0;
}();

// The program's wait status. SIGINT is sent when the time is up, and SIGKILL five seconds later.
int WaitFor(pid_t program, int limit_ms) {
  int status = 0;
  for (int ms = 0; waitpid(program, &status, WNOHANG) == 0; ++ms) {
    if (ms >= limit_ms) kill(program, ms < limit_ms + 5000 ? SIGINT : SIGKILL);
    usleep(1000);
  }
  return status;
}

// What was written to the descriptor, which is closed.
std::string Written(int descriptor) {
  std::string text = ReadFile("/proc/self/fd/" + std::to_string(descriptor));
  close(descriptor);
  return text;
}

}  // namespace

std::string DeviceToml(const std::string& mac, uint32_t capabilities, const std::string& more) {
  return "[[device]]\ntype = 11\nmac = \"" + mac +
         "\"\ncapabilities = " + std::to_string(capabilities) + "\n" + more + "\n";
}

std::string FaultToml(const std::string& function, int status, int call) {
  const std::string nth = call == 0 ? "" : "call = " + std::to_string(call) + "\n";
  return "[[fault]]\nfunction = \"" + function + "\"\nstatus = " + std::to_string(status) + "\n" +
         nth;
}

Simulation::Simulation(const std::string& toml) {
  std::string pattern = (std::filesystem::temp_directory_path() / "corvane-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) abort();
  folder_ = pattern;
  Configure(toml);
}

Simulation::~Simulation() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

void Simulation::Configure(const std::string& toml) {
  WriteFile(folder_ + "/sim.toml", "journal = \"journal\"\n" + toml);
  EmptyJournal();
}

void Simulation::EmptyJournal() const {
  std::filesystem::remove(folder_ + "/journal");
}

Result Simulation::Run(const std::string& words, int limit_ms) const {
  return Run(Split(words), limit_ms);
}

Result Simulation::Run(std::vector<std::string> words, int limit_ms) const {
  words.insert(words.begin(), "corvane");
  const int out = memfd_create("out", MFD_CLOEXEC);
  const int err = memfd_create("err", MFD_CLOEXEC);
  const int status = WaitFor(Start(folder_, words, out, err), limit_ms);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), Written(out),
          Written(err)};
}

std::vector<std::string> Simulation::Lines(const std::string& function) const {
  std::vector<std::string> lines;
  std::istringstream journal(ReadFile(folder_ + "/journal"));
  for (std::string line; std::getline(journal, line);) {
    if (function.empty() || line.starts_with(function + " ")) lines.push_back(line);
  }
  return lines;
}

std::vector<std::string> Simulation::Calls() const {
  std::vector<std::string> calls;
  for (const std::string& line : Lines("")) calls.push_back(line.substr(0, line.find(' ')));
  return calls;
}

int Simulation::CallsOf(const std::string& function) const {
  return static_cast<int>(Lines(function).size());
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> Split(const std::string& words) {
  std::istringstream stream(words);
  return {std::istream_iterator<std::string>(stream), {}};
}
