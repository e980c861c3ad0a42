// corvane-lab: what to do with a real device that nobody has seen before: record what programs and
// the library say to each other, copy it as a simulated one, and check what is assumed about it.
#include <fcntl.h>
#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

#include "check.h"
#include "console/output.h"
#include "copy.h"

using namespace lab;

namespace {

constexpr int kDone = 0;
constexpr int kTrouble = 2;
constexpr int kNotExecutable = 126;
constexpr int kNotFound = 127;

constexpr const char* kUsage =
    "Usage: corvane-lab record --output FILE -- COMMAND [ARGUMENT...]\n"
    "       corvane-lab copy   [--device MAC|n|all] [--from FILE] [--anonymize]\n"
    "       corvane-lab check  [--device MAC|n] [--write]\n"
    "Looks at a Corvane device and its library: records the calls of a program, copies\n"
    "devices into a configuration of the simulator, checks what corvane assumes.\n"
    "  --output FILE       record: where the calls go; -o for short\n"
    "  --device MAC|n|all  only this device (the first by default)\n"
    "  --from FILE         copy: from recorded calls, not from an attached device\n"
    "  --anonymize         copy: other MAC and IP addresses and serial numbers\n"
    "  --write             check: try settings too, and put them back\n"
    "  --version           the version\n"
    "  --help              this text\n"
    "Exit status: record: that of the command; copy: 0 done, 2 trouble; check: 0 all as\n"
    "assumed, 1 something differs, 2 nothing to look at, or interrupted.\n";

struct Options {
  std::string command;
  std::string output;
  std::string device;
  std::string from;
  std::string given;  // letters of the options
  char** words = nullptr;

  bool Has(char letter) const { return given.find(letter) != std::string::npos; }
};

constexpr option kOptions[] = {
    {"output", required_argument, nullptr, 'o'}, {"device", required_argument, nullptr, 'd'},
    {"from", required_argument, nullptr, 'f'},   {"anonymize", no_argument, nullptr, 'a'},
    {"write", no_argument, nullptr, 'w'},        {"version", no_argument, nullptr, 'V'},
    {"help", no_argument, nullptr, 'h'},         {},
};

int Fail(const std::string& text) {
  fprintf(stderr, "corvane-lab: %s\n", text.c_str());
  return kTrouble;
}

int FailOutput() {
  return Fail(std::string("cannot write to standard output: ") + strerror(errno));
}

int FailUsage(const std::string& text) {
  Fail(text);
  fputs("Try 'corvane-lab --help'.\n", stderr);
  return kTrouble;
}

void EndWithout(const char* function, bool found) {
  if (!found) exit(Fail(std::string("the device library has no ") + function));
}

// ---- record

// The program takes this one's place: its output, status and signals are its own. The loader splits
// its list of what to preload at blanks and colons.
int Record(const Options& options) {
  if (*options.words == nullptr) return FailUsage("record wants -- and a command");
  if (!options.Has('o')) return FailUsage("record wants --output FILE");
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::string recorder =
      std::filesystem::weakly_canonical(program.parent_path() / RECORDER, error);
  if (access(recorder.c_str(), R_OK) != 0) return Fail(recorder + ": " + strerror(errno));
  if (recorder.find_first_of(" :") != std::string::npos)
    return Fail(recorder + " cannot be preloaded: there is a blank or a colon in its name");
  const std::string journal = std::filesystem::absolute(options.output, error);
  const int file = open(journal.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) return Fail(options.output + ": " + strerror(errno));
  close(file);
  const char* others = getenv("LD_PRELOAD");
  const bool alone = others == nullptr || *others == '\0';
  setenv("LD_PRELOAD", (alone ? recorder : recorder + ":" + others).c_str(), 1);
  setenv("CORVANE_LAB_JOURNAL", journal.c_str(), 1);
  execvp(options.words[0], options.words);
  const int reason = errno;
  Fail(std::string(options.words[0]) + ": " + strerror(reason));
  return reason == ENOENT ? kNotFound : kNotExecutable;
}

// ---- copy

int AskDevices(const Options& options, Source& source) {
  const std::string failure = LoadLibrary();
  if (!failure.empty()) return Fail("the device library cannot be loaded: " + failure);
  SetBeforeCall(EndWithout);
  const int32_t status = LIBRARY(CorvaneAPIInitialize)();
  if (status != CORVANE_OK)
    return Fail("the device library cannot be opened: status " + std::to_string(status));
  source.library_version = LIBRARY(CorvaneAPIGetVersion)();
  const std::vector<Device> devices = FindDevices();
  const auto selected = SelectDevices(devices, options.Has('d') ? options.device : "0");
  for (const Device& device : selected) source.devices.push_back(Ask(device));
  LIBRARY(CorvaneAPIUninitialize)();
  if (devices.empty()) return Fail("no device is attached");
  return selected.empty() ? Fail("no such device: " + options.device) : kDone;
}

// All that are in the recording by default: who recorded them chose them.
int ReadRecording(const Options& options, Source& source) {
  const std::string failure = ReadCalls(options.from, source);
  if (!failure.empty()) return Fail(failure);
  std::vector<Device> devices;
  for (const Answers& answers : source.devices) devices.push_back({0, answers.device});
  const auto selected = SelectDevices(devices, options.Has('d') ? options.device : "all");
  std::erase_if(source.devices, [&](const Answers& answers) {
    return std::ranges::none_of(
        selected, [&](const Device& device) { return device.name == answers.device; });
  });
  return selected.empty() ? Fail("no such device: " + options.device) : kDone;
}

int Copy(const Options& options) {
  corvane::PrepareOutput();
  FILE* const out = corvane::PartAnswers();
  if (out == nullptr) return FailOutput();
  Source source;
  const int status =
      options.Has('f') ? ReadRecording(options, source) : AskDevices(options, source);
  if (status != kDone) return status;
  if (options.Has('a')) Anonymize(source);
  fputs(ToToml(source).c_str(), out);
  if (ferror(out) == 0 && fclose(out) == 0) return kDone;
  return FailOutput();
}

// ---- check

int CheckLibrary(const Options& options) {
  corvane::PrepareOutput();
  const std::string failure = LoadLibrary();
  if (!failure.empty()) return Fail("the device library cannot be loaded: " + failure);
  return Check(options.Has('d') ? options.device : "0", options.Has('w'));
}

struct Command {
  const char* name;
  const char* options;
  int (*run)(const Options& options);
};
constexpr Command kCommands[] = {
    {"record", "o", Record}, {"copy", "dfa", Copy}, {"check", "dw", CheckLibrary}};

bool ReadOptions(int argc, char** argv, Options& options) {
  // Only in front of a command's words are the options ours.
  for (int letter; (letter = getopt_long(argc, argv, "+o:d:", kOptions, nullptr)) != -1;) {
    if (letter == '?') return false;
    options.given += static_cast<char>(letter);
    if (letter == 'o') options.output = optarg;
    if (letter == 'd') options.device = optarg;
    if (letter == 'f') options.from = optarg;
  }
  options.words = argv + optind;
  return true;
}

int Run(const Options& options) {
  if (options.Has('h')) return fputs(kUsage, stdout) < 0 ? kTrouble : kDone;
  if (options.Has('V')) return puts("corvane-lab " CORVANE_VERSION) < 0 ? kTrouble : kDone;
  if (options.command.empty()) return FailUsage("a command is missing");
  const auto* command = std::ranges::find_if(
      kCommands, [&](const Command& each) { return options.command == each.name; });
  if (command == std::end(kCommands)) return FailUsage("no such command: " + options.command);
  for (const char letter : options.given) {
    if (strchr(command->options, letter) != nullptr) continue;
    const auto* found =
        std::ranges::find_if(kOptions, [=](const option& each) { return each.val == letter; });
    return FailUsage(std::string("--") + found->name + " does not go with " + command->name);
  }
  if (command->run != Record && *options.words != nullptr)
    return FailUsage(std::string("too many arguments: ") + *options.words);
  return command->run(options);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (argc > 1 && *argv[1] != '-') {
    options.command = argv[1];
    argv[1] = argv[0];
    --argc;
    ++argv;
  }
  if (!ReadOptions(argc, argv, options)) {
    fputs("Try 'corvane-lab --help'.\n", stderr);
    return kTrouble;
  }
  const int status = Run(options);
  return fflush(stdout) == 0 && ferror(stdout) == 0 ? status : FailOutput();
}
