#include "support/simulation.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

struct Pipe {
  int ends[2] = {-1, -1};
  Pipe() {
    if (pipe2(ends, O_CLOEXEC) != 0) abort();
  }
};

[[noreturn]] void Execute(const std::string& folder, std::vector<std::string>& words) {
  setenv("CORVANE_SIM_CONFIG", (folder + "/sim.toml").c_str(), 1);
  setenv("CORVANE_SIM_STATE", (folder + "/state").c_str(), 1);
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  argv.push_back(nullptr);
  execv(CORVANE_EXECUTABLE, argv.data());
  _exit(127);
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

// Appends what is there to read; false at the end of the stream.
bool Drain(int descriptor, std::string& text) {
  char buffer[4096];
  const ssize_t count = read(descriptor, buffer, sizeof buffer);
  if (count > 0) text.append(buffer, static_cast<size_t>(count));
  return count > 0;
}

using Clock = std::chrono::steady_clock;

// Reads both streams to their ends; sends SIGINT when the time is up.
void Collect(pid_t child, int out, int err, int limit_ms, Result& result) {
  const auto deadline = Clock::now() + std::chrono::milliseconds(limit_ms);
  pollfd streams[2] = {{out, POLLIN, 0}, {err, POLLIN, 0}};
  std::string* const texts[2] = {&result.out, &result.err};
  while (streams[0].fd >= 0 || streams[1].fd >= 0) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (poll(streams, 2, left > 0 ? static_cast<int>(left) : 0) == 0) {
      kill(child, SIGINT);
      if (left <= -5000) kill(child, SIGKILL);
      usleep(1000);
    }
    for (int i = 0; i < 2; ++i) {
      if (streams[i].revents != 0 && !Drain(streams[i].fd, *texts[i])) streams[i].fd = -1;
    }
  }
}

}  // namespace

std::string DeviceToml(int type, const std::string& mac, uint32_t capabilities,
                       const std::string& more) {
  return "[[device]]\ntype = " + std::to_string(type) + "\nmac = \"" + mac +
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
  Pipe out;
  Pipe err;
  const pid_t child = fork();
  if (child == 0) {
    dup2(out.ends[1], STDOUT_FILENO);
    dup2(err.ends[1], STDERR_FILENO);
    Execute(folder_, words);
  }
  close(out.ends[1]);
  close(err.ends[1]);
  Result result;
  Collect(child, out.ends[0], err.ends[0], limit_ms, result);
  close(out.ends[0]);
  close(err.ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
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

std::vector<uint8_t> Simulation::LastRecord(const std::string& function) const {
  const auto lines = Lines(function);
  std::vector<uint8_t> bytes;
  const size_t at = lines.empty() ? std::string::npos : lines.back().find(" record=");
  if (at == std::string::npos) {
    ADD_FAILURE() << "no record of " << function << " in the journal";
    return bytes;
  }
  const std::string& line = lines.back();
  for (size_t i = at + 8; i + 1 < line.size() && line[i] != ' '; i += 2) {
    bytes.push_back(static_cast<uint8_t>(std::stoul(line.substr(i, 2), nullptr, 16)));
  }
  return bytes;
}

std::string ReadFile(const std::string& path) {
  std::string text;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  while (file >= 0 && Drain(file, text)) {
  }
  if (file >= 0) close(file);
  return text;
}

void WriteFile(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

std::vector<std::string> Split(const std::string& words) {
  std::istringstream stream(words);
  return {std::istream_iterator<std::string>(stream), {}};
}
