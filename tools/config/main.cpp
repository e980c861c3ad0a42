// corvane-config: the settings of devices as a file that can be compared, applied, tried and rolled
// back.
#include <getopt.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <string>

#include "apply.h"
#include "console/output.h"
#include "device/corvane_api_layout.h"  // for its assertions
#include "guard.h"
#include "output.h"

using namespace config;

namespace {

constexpr int kDone = 0;
constexpr int kDifferent = 1;
constexpr int kNotKept = 1;
constexpr int kTrouble = 2;
constexpr const char* kKeepWord = "keep";
constexpr int kMostSeconds = 86400;

constexpr const char* kUsage =
    "Usage: corvane-config show    [--device MAC|n|all] [--toml | --json]\n"
    "       corvane-config diff    [--device MAC|n|all] [--json] FILE\n"
    "       corvane-config apply   [--device MAC|n|all] [--dry-run] [--save] FILE\n"
    "       corvane-config try     [--device MAC|n|all] [--seconds N] [--save] FILE\n"
    "       corvane-config example\n"
    "The settings of Corvane devices as a file; - is standard input.\n"
    "  --device MAC|n|all  only this device (show: the first by default, else all in FILE)\n"
    "  --toml              show: TOML (default)\n"
    "  --json              show, diff: JSON\n"
    "  --dry-run           apply: print what would change and write nothing\n"
    "  --save              apply, try: make it permanent\n"
    "  --seconds N         try: how long to wait for an answer (60)\n"
    "  --quiet             print no progress\n"
    "  --verbose           print every call of the device library on standard error\n"
    "  --version           the version\n"
    "  --help              this text\n"
    "Exit status: 0 done, or no difference; 1 different, or tried and not kept; 2 trouble:\n"
    "standard error has the reason.\n";

struct Options {
  std::string command;
  std::string file;
  std::string device;
  std::string given;  // letters of the options
  int seconds = 60;
  FILE* out = nullptr;

  bool Has(char letter) const { return given.find(letter) != std::string::npos; }
};

constexpr option kOptions[] = {
    {"device", required_argument, nullptr, 'd'},
    {"toml", no_argument, nullptr, 't'},
    {"json", no_argument, nullptr, 'j'},
    {"dry-run", no_argument, nullptr, 'n'},
    {"save", no_argument, nullptr, 's'},
    {"seconds", required_argument, nullptr, 'w'},
    {"quiet", no_argument, nullptr, 'q'},
    {"verbose", no_argument, nullptr, 'v'},
    {"version", no_argument, nullptr, 'V'},
    {"help", no_argument, nullptr, 'h'},
    {},
};

int Show(const Options& options);
int Diff(const Options& options);
int Apply(const Options& options);
int Example(const Options& options);

struct Command {
  const char* name;
  bool takes_file;
  const char* options;  // beside --quiet and --verbose
  int (*run)(const Options& options);
};

constexpr Command kCommands[] = {
    {"show", false, "dtj", Show}, {"diff", true, "dj", Diff},      {"apply", true, "dns", Apply},
    {"try", true, "dsw", Apply},  {"example", false, "", Example},
};

int Fail(const std::string& text) {
  fprintf(stderr, "corvane-config: %s\n", text.c_str());
  return kTrouble;
}

int FailUsage(const std::string& text) {
  Fail(text);
  fputs("Try 'corvane-config --help'.\n", stderr);
  return kTrouble;
}

// The library opened, to the end of the command.
class Library {
 public:
  Library() : status_(CorvaneAPIInitialize()) {}
  ~Library() {
    if (status_ == CORVANE_OK) CorvaneAPIUninitialize();
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  int status() const { return status_; }

 private:
  int status_;
};

// The attached devices and those of --device, or of the text in its place.
int FindSelected(const Library& library, const std::string& text, std::vector<Device>& devices,
                 std::vector<Device>& selected) {
  if (library.status() != CORVANE_OK) {
    return Fail("the device library cannot be opened: status " + std::to_string(library.status()));
  }
  devices = FindDevices();
  if (devices.empty()) return Fail("no device is attached");
  selected = SelectDevices(devices, text);
  return selected.empty() ? Fail("no such device: " + text) : kDone;
}

// ---- show

int ShowDevice(Device& device, Shown& shown) {
  std::string failure = ReadKind(device);
  if (!failure.empty()) return Fail(device.name + ": " + failure);
  shown.device = device.name.starts_with("device ") ? std::to_string(device.position) : device.name;
  std::vector<Bytes> records(AllRecords().size());
  for (const Section& section : AllSections()) {
    const Record& record = AllRecords()[section.record];
    Bytes& bytes = records[section.record];
    if ((device.kind.capabilities & record.needs) != record.needs) continue;
    if (bytes.empty()) failure = Read(device, record, bytes);
    if (!failure.empty()) return Fail(device.name + ": " + failure);
    const auto wish = Describe(section, device.kind, bytes, IsUnjoined(section, records));
    if (wish) shown.sections.push_back(*wish);
  }
  return kDone;
}

int Show(const Options& options) {
  const Library library;
  std::vector<Device> devices;
  std::vector<Device> selected;
  const std::string first = options.Has('d') ? options.device : "0";
  if (FindSelected(library, first, devices, selected) != kDone) return kTrouble;
  std::vector<Shown> shown;
  for (Device& device : selected) {
    if (ShowDevice(device, shown.emplace_back()) != kDone) return kTrouble;
  }
  fputs((options.Has('j') ? ToJson(shown) : ToToml(shown)).c_str(), options.out);
  return kDone;
}

int Example(const Options& options) {
  fputs(ExampleFile().c_str(), options.out);
  return kDone;
}

// ---- diff, apply and try

int FailMistakes(const Options& options, const Mistakes& mistakes) {
  fputs(ToText(options.file, mistakes).c_str(), stderr);
  return kTrouble;
}

int MakePlans(const Options& options, std::vector<Plan>& plans) {
  Mistakes mistakes;
  for (Plan& plan : plans) {
    const std::string failure = MakePlan(plan, mistakes);
    if (!failure.empty()) return Fail(failure);
  }
  return mistakes.empty() ? kDone : FailMistakes(options, mistakes);
}

// Opens the devices that the file is about and plans what changes.
int Prepare(const Options& options, const std::vector<DeviceWishes>& file, const Library& library,
            std::vector<Plan>& plans) {
  std::vector<Device> devices;
  std::vector<Device> selected;
  const std::string text = options.Has('d') ? options.device : "all";
  if (FindSelected(library, text, devices, selected) != kDone) return kTrouble;
  Mistakes mistakes;
  plans = AssignWishes(file, selected, selected.size() < devices.size(), mistakes);
  if (!mistakes.empty()) return FailMistakes(options, mistakes);
  if (plans.empty()) {
    return Fail((options.file == "-" ? "standard input" : options.file) + " has nothing for " +
                (options.Has('d') ? "device " + text : "any attached device"));
  }
  return MakePlans(options, plans);
}

int Diff(const Options& options) {
  Mistakes mistakes;
  const auto file = ReadFile(options.file, mistakes);
  if (!mistakes.empty()) return FailMistakes(options, mistakes);
  const Library library;
  std::vector<Plan> plans;
  if (Prepare(options, file, library, plans) != kDone) return kTrouble;
  const std::string text = DifferencesAsText(plans);
  if (!options.Has('q')) {
    fputs((options.Has('j') ? DifferencesAsJson(plans) : text).c_str(), options.out);
  }
  return text.empty() ? kDone : kDifferent;
}

void Say(const Options& options, const std::string& text) {
  if (!options.Has('q')) fprintf(options.out, "%s\n", text.c_str());
  fflush(options.out);
}

// What `apply` and `try` have done so far.
struct Work {
  std::vector<Plan> plans;
  std::vector<Written> written;
  std::vector<Saved> saved;
};

// Puts the old settings back and says whether they are. Returns the status if so, else kTrouble.
int GiveUp(const std::string& reason, const Work& work, int status) {
  Fail(reason);
  const auto lost = PutBack(work.written, work.saved);
  for (const std::string& line : lost) Fail(line);
  if (!lost.empty()) return kTrouble;
  Fail(work.written.empty() ? "nothing was written" : "the old settings are back");
  return status;
}

void SayWritten(const Options& options, const std::vector<Plan>& plans, const char* more) {
  for (const Plan& plan : plans) {
    const size_t count = DifferencesOf(plan).size();
    const std::string settings = std::to_string(count) + (count == 1 ? " setting" : " settings");
    Say(options,
        plan.device.name + ": " + (count == 0 ? "nothing to write" : settings + " written") + more);
  }
}

// Null when what was written is to be kept, else why not.
const char* Ask(const Options& options) {
  fprintf(stderr, "Type %s and Enter within %d seconds, or the old settings come back: ", kKeepWord,
          options.seconds);
  const char* reason = AskFor(kKeepWord, options.seconds);
  if (isatty(STDIN_FILENO) == 0 || reason != nullptr) fputc('\n', stderr);
  return reason;
}

// From here on something may be written.
int WriteAndSave(const Options& options, Work& work) {
  std::string failure = WritePlans(work.plans, work.written);
  if (!failure.empty()) return GiveUp(failure, work, kTrouble);
  const bool asks = options.command == "try" && !work.written.empty();
  bool saves = options.Has('s');
  if (options.command == "try") {
    SayWritten(options, work.plans, "");
    const char* reason = asks ? Ask(options) : nullptr;
    if (reason != nullptr) return GiveUp(reason, work, kNotKept);
    saves = saves && asks;
  }
  std::vector<std::string> left;
  if (saves) failure = SavePlans(work.plans, work.saved, left);
  if (!failure.empty()) return GiveUp(failure, work, kTrouble);
  for (const std::string& line : left) Fail(line + " is set, but this device cannot save it");
  if (options.command == "apply") SayWritten(options, work.plans, saves ? ", saved" : "");
  if (asks) Say(options, saves ? "kept and saved" : "kept");
  return kDone;
}

int Apply(const Options& options) {
  Mistakes mistakes;
  const auto file = ReadFile(options.file, mistakes);
  if (!mistakes.empty()) return FailMistakes(options, mistakes);
  if (!options.Has('n')) HoldSignals();
  const Library library;
  Work work;
  if (Prepare(options, file, library, work.plans) != kDone) return kTrouble;
  if (options.Has('n')) {
    if (!options.Has('q')) fputs(DifferencesAsText(work.plans).c_str(), options.out);
    return kDone;
  }
  std::vector<std::string> names;
  for (const Plan& plan : work.plans) names.push_back(plan.device.name);
  const std::string failure = LockDevices(names, options.Has('q'));
  if (!failure.empty()) return Fail(failure);
  // What another one wrote meanwhile is there now.
  if (MakePlans(options, work.plans) != kDone) return kTrouble;
  return WriteAndSave(options, work);
}

// ---- The command line

// When it is wrong, says why and returns false.
bool ReadOptions(int argc, char** argv, Options& options) {
  for (int letter; (letter = getopt_long(argc, argv, "d:", kOptions, nullptr)) != -1;) {
    if (letter == '?') return false;
    options.given += static_cast<char>(letter);
    if (letter == 'd') options.device = optarg;
    if (letter != 'w') continue;
    char* end = nullptr;
    const long seconds = strtol(optarg, &end, 10);
    if (*optarg == '\0' || *end != '\0' || seconds < 1 || seconds > kMostSeconds) {
      Fail(std::string("--seconds ") + optarg + " is no number from 1 to 86400");
      return false;
    }
    options.seconds = static_cast<int>(seconds);
  }
  if (optind < argc) options.command = argv[optind++];
  if (optind < argc) options.file = argv[optind++];
  if (optind == argc) return true;
  Fail(std::string("too many files: ") + argv[optind]);
  return false;
}

// What is wrong with the command's words; empty when nothing is.
std::string WhatIsWrong(const Command& command, const Options& options) {
  if (command.takes_file && options.file.empty()) return "the file is missing";
  if (!command.takes_file && !options.file.empty()) return "no file is read: " + options.file;
  if (options.command == "try" && options.file == "-") {
    return "try reads the answer from standard input, not the file";
  }
  if (options.Has('t') && options.Has('j')) return "--toml or --json, not both";
  for (const char letter : options.given) {
    const std::string known = std::string(command.options) + "qv";
    const auto* named = std::ranges::find(kOptions, letter, &option::val);
    if (known.find(letter) == std::string::npos) {
      return "--" + std::string(named->name) + " is not for " + command.name;
    }
  }
  return "";
}

int Run(const Options& options) {
  if (options.Has('h') || options.Has('V')) {
    fputs(options.Has('h') ? kUsage : "corvane-config " CORVANE_VERSION "\n", options.out);
    return kDone;
  }
  const auto* command = std::ranges::find(kCommands, options.command, &Command::name);
  if (command == std::end(kCommands)) {
    return FailUsage(options.command.empty() ? "no command"
                                             : "no such command: " + options.command);
  }
  const std::string wrong = WhatIsWrong(*command, options);
  if (!wrong.empty()) return FailUsage(wrong);
  if (options.Has('v')) ShowCalls();
  return command->run(options);
}

}  // namespace

int main(int argc, char** argv) {
  corvane::PrepareOutput();
  signal(SIGPIPE, SIG_IGN);  // a reader that went away must not end a write half way
  Options options;
  if (!ReadOptions(argc, argv, options)) {
    fputs("Try 'corvane-config --help'.\n", stderr);
    return kTrouble;
  }
  options.out = corvane::PartAnswers();
  const int status = options.out == nullptr ? kTrouble : Run(options);
  const bool lost = options.out == nullptr || ferror(options.out) != 0;
  if (!lost && fclose(options.out) == 0) return status;
  return Fail(std::string("cannot write to standard output: ") + strerror(errno));
}
