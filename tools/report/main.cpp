// corvane-report: reports of the utility on standard input become JSON or metrics on standard
// output.
#include <getopt.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "metrics.h"
#include "output.h"
#include "parser.h"

using namespace report;

namespace {

constexpr int kUnreadable = 1;
constexpr int kUsageError = 2;
constexpr int kReportedFailure = 3;
constexpr size_t kLongestLine = 65536;
constexpr size_t kLongestQuote = 60;

constexpr const char* kUsage =
    "Usage: corvane ... | corvane-report [--json | --lines | --prometheus] [--label NAME=VALUE]\n"
    "Reads reports of corvane on standard input.\n"
    "  --json              JSON, one object for each report (default)\n"
    "  --lines             a line for each report: one flat object, with the time\n"
    "  --prometheus        Prometheus text format, at the end of the input\n"
    "  --label NAME=VALUE  a label for every metric; may be repeated with other names\n"
    "  --version           the version\n"
    "  --help              this text\n"
    "Exit status: 0 everything was read; 1 a line could not be read, standard error names it;\n"
    "2 wrong command line; 3 everything was read, and a report says that something failed.\n";

enum class Task { kJson, kLines, kPrometheus, kLabel, kVersion, kHelp };

constexpr option kOptions[] = {
    {"json", no_argument, nullptr, static_cast<int>(Task::kJson)},
    {"lines", no_argument, nullptr, static_cast<int>(Task::kLines)},
    {"prometheus", no_argument, nullptr, static_cast<int>(Task::kPrometheus)},
    {"label", required_argument, nullptr, static_cast<int>(Task::kLabel)},
    {"version", no_argument, nullptr, static_cast<int>(Task::kVersion)},
    {"help", no_argument, nullptr, static_cast<int>(Task::kHelp)},
    {},
};

struct Options {
  Task task = Task::kJson;
  Labels labels;
};

// When it cannot be added, says why and returns false.
bool AddLabel(const std::string& text, Labels& labels) {
  const size_t equals = text.find('=');
  const std::string name = text.substr(0, equals);
  const char* problem = nullptr;
  if (equals == std::string::npos || !IsLabelName(name)) problem = "is not NAME=VALUE";
  if (FindLabel(labels, name) != nullptr) problem = "gives a label for the second time";
  if (problem == nullptr) {
    labels.emplace_back(name, text.substr(equals + 1));
    return true;
  }
  fprintf(stderr, "corvane-report: --label %s %s\n", text.c_str(), problem);
  return false;
}

// When the command line is wrong, says why and returns false.
bool ReadOptions(int argc, char** argv, Options& options) {
  for (int word; (word = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    if (word == '?') return false;
    const Task task = static_cast<Task>(word);
    if (task == Task::kLabel && !AddLabel(optarg, options.labels)) return false;
    if (task != Task::kLabel) options.task = task;
    if (task == Task::kVersion || task == Task::kHelp) return true;
  }
  if (optind == argc) return true;
  fprintf(stderr, "corvane-report: no file is read, only standard input: %s\n", argv[optind]);
  return false;
}

// Reads a line without its end. Of a line that is too long it keeps the beginning and sets
// too_long. False at the end of the input.
bool ReadInputLine(std::string& line, bool& too_long) {
  line.clear();
  too_long = false;
  int c = getchar_unlocked();
  if (c == EOF) return false;
  for (; c != EOF && c != '\n'; c = getchar_unlocked()) {
    too_long = line.size() == kLongestLine;
    if (!too_long) line += static_cast<char>(c);
  }
  return true;
}

void Complain(size_t number, const char* problem, const std::string& line) {
  std::string quote = line.substr(0, kLongestQuote);
  for (char& c : quote) {
    if (c < ' ' || c == '\x7f') c = '?';
  }
  fprintf(stderr, "corvane-report: line %zu %s: %s%s\n", number, problem, quote.c_str(),
          line.size() > kLongestQuote ? "..." : "");
}

// Complains when the text cannot be written.
void Write(const std::string& text) {
  if (ferror(stdout) != 0) return;
  fwrite(text.data(), 1, text.size(), stdout);
  if (fflush(stdout) == 0) return;
  fprintf(stderr, "corvane-report: cannot write to standard output: %s\n", strerror(errno));
}

// Returns the exit status.
int Convert(const Options& options) {
  Metrics metrics(options.labels);
  ReportParser parser([&](const Json& report) {
    if (options.task == Task::kPrometheus) return metrics.Add(report);
    Write(options.task == Task::kLines ? ToLine(report, TimeStamp()) : ToJson(report));
  });
  bool all_read = true;
  bool too_long = false;
  std::string line;
  for (size_t number = 1; ferror(stdout) == 0 && ReadInputLine(line, too_long); ++number) {
    const char* problem = too_long ? "is too long" : parser.ReadLine(line);
    if (problem == nullptr) continue;
    Complain(number, problem, line);
    all_read = false;
  }
  parser.Finish();
  if (options.task == Task::kPrometheus) Write(metrics.Text());
  if (!all_read || ferror(stdout) != 0) return kUnreadable;
  return parser.failed() ? kReportedFailure : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ReadOptions(argc, argv, options)) {
    fputs("Try 'corvane-report --help'.\n", stderr);
    return kUsageError;
  }
  if (options.task == Task::kVersion) {
    Write("corvane-report " CORVANE_VERSION "\n");
  } else if (options.task == Task::kHelp) {
    Write(kUsage);
  } else {
    return Convert(options);
  }
  return ferror(stdout) != 0 ? kUnreadable : 0;
}
