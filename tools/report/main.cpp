// corvane-report: reports of the utility on standard input become JSON or metrics on standard
// output.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "output.h"
#include "parser.h"

namespace {

constexpr int kUnreadable = 1;
constexpr int kUsageError = 2;
constexpr int kReportedFailure = 3;
constexpr size_t kLongestLine = 65536;
constexpr size_t kLongestQuote = 60;

constexpr const char* kUsage =
    "Usage: corvane ... | corvane-report [--json | --lines | --prometheus] [--label NAME=VALUE]\n"
    "Reads reports of corvane on standard input.\n"
    "  --json              JSON, an object for each report (default)\n"
    "  --lines             an object without inner ones on a line for each report, with the time\n"
    "  --prometheus        Prometheus text format, at the end of the input\n"
    "  --label NAME=VALUE  a label for every metric; may be repeated\n"
    "  --help              this text\n"
    "Exit status: 0 all was read; 1 a line could not be read, standard error names it;\n"
    "2 wrong command line; 3 all was read, and a report says that something failed.\n";

enum class Format { kJson, kLines, kPrometheus };

struct Options {
  Format format = Format::kJson;
  std::string labels;
  bool help = false;
};

struct FormatOption {
  const char* word;
  Format format;
};

constexpr FormatOption kFormats[] = {
    {"--json", Format::kJson}, {"--lines", Format::kLines}, {"--prometheus", Format::kPrometheus}};

bool AddLabel(const std::string& text, std::string& labels) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos) return false;
  const std::string label = MetricLabel(text.substr(0, equals), text.substr(equals + 1));
  if (label.empty()) return false;
  labels += (labels.empty() ? "" : ",") + label;
  return true;
}

bool ReadFormat(const char* word, Format& format) {
  for (const FormatOption& option : kFormats) {
    if (strcmp(word, option.word) != 0) continue;
    format = option.format;
    return true;
  }
  return false;
}

bool ReadOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    if (strcmp(argv[i], "--help") == 0) {
      options.help = true;
    } else if (strcmp(argv[i], "--label") == 0) {
      if (++i == argc || !AddLabel(argv[i], options.labels)) return false;
    } else if (!ReadFormat(argv[i], options.format)) {
      return false;
    }
  }
  return true;
}

// Reads a line without its end; of a longer one than may be only the beginning, and too_long is
// set. False at the end of the input.
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

// Says so when it cannot be written.
void Write(const std::string& text) {
  if (ferror(stdout) != 0) return;
  fwrite(text.data(), 1, text.size(), stdout);
  if (fflush(stdout) == 0) return;
  fprintf(stderr, "corvane-report: cannot write to standard output: %s\n", strerror(errno));
}

// The exit status.
int Convert(const Options& options) {
  Metrics metrics(options.labels);
  ReportParser parser([&](const Json& report) {
    if (options.format == Format::kPrometheus) return metrics.Add(report);
    Write(options.format == Format::kLines ? ToLine(report, TimeStamp()) : ToJson(report));
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
  if (options.format == Format::kPrometheus) Write(metrics.Text());
  if (!all_read || ferror(stdout) != 0) return kUnreadable;
  return parser.failed() ? kReportedFailure : 0;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ReadOptions(argc, argv, options)) {
    fputs(kUsage, stderr);
    return kUsageError;
  }
  if (options.help) {
    fputs(kUsage, stdout);
    return 0;
  }
  return Convert(options);
}
