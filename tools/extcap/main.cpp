// corvane-extcap: the devices as interfaces of Wireshark, which starts it for every question and
// for every capture (extcap(4)).
#include <getopt.h>
#include <unistd.h>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "capture.h"
#include "console/output.h"
#include "console/report.h"
#include "console/status.h"
#include "device/device_list.h"
#include "device/mac_text.h"
#include "device/model.h"
#include "device/session.h"

using namespace corvane;

namespace {

constexpr int kUsageError = 2;
constexpr int kListAttempts = 10;  // at the devices, 100 ms apart: the viewer's start waits for it
constexpr long kMostMegabytes = 65536;

constexpr const char* kUsage =
    "Usage: corvane-extcap --extcap-interfaces\n"
    "       corvane-extcap --extcap-interface=DEVICE --extcap-dlts | --extcap-config\n"
    "       corvane-extcap --extcap-interface=DEVICE --capture --fifo=FIFO [--size=MB]\n"
    "                      [--maxcache=MB] [--fullframes]\n"
    "Shows Corvane devices to Wireshark, which starts it; DEVICE is a MAC address or an index.\n"
    "  --size MB       size of each file in $TMPDIR on the way to the viewer (default 64);\n"
    "                  there are two at most: a viewer slower than that loses frames\n"
    "  --maxcache MB   what may wait in memory (default 100)\n"
    "  --fullframes    capture full frames\n"
    "  --version       the version\n"
    "  --help          this text\n"
    "Exit status: 0 done; 2 wrong command line; else that of corvane directcapture start.\n";

constexpr const char* kSettings =
    "arg {number=0}{call=--size}{display=File size (MB)}{tooltip=Of each of the two files in the "
    "folder for temporary files; what they cannot hold for a slow viewer is lost}{type=unsigned}"
    "{range=1,65536}{default=64}\n"
    "arg {number=1}{call=--maxcache}{display=Cache (MB)}{tooltip=What may wait in memory to "
    "be written to the files}{type=unsigned}{range=0,65536}{default=100}\n"
    "arg {number=2}{call=--fullframes}{display=Full frames}{tooltip=Capture frames in full, "
    "whatever the slicing}{type=boolflag}{default=false}\n";

enum class Word {
  kNone,
  kInterfaces,
  kDlts,
  kConfig,
  kCapture,
  kVersion,
  kHelp,
  kInterface,
  kFifo,
  kFilter,
  kSize,
  kMaxCache,
  kFullFrames,
  kIgnored
};

constexpr option Option(const char* name, int argument, Word word) {
  return {name, argument, nullptr, static_cast<int>(word)};
}

constexpr option kOptions[] = {
    Option("extcap-interfaces", no_argument, Word::kInterfaces),
    Option("extcap-dlts", no_argument, Word::kDlts),
    Option("extcap-config", no_argument, Word::kConfig),
    Option("capture", no_argument, Word::kCapture),
    Option("version", no_argument, Word::kVersion),
    Option("help", no_argument, Word::kHelp),
    Option("extcap-interface", required_argument, Word::kInterface),
    Option("fifo", required_argument, Word::kFifo),
    Option("extcap-capture-filter", required_argument, Word::kFilter),
    Option("size", required_argument, Word::kSize),
    Option("maxcache", required_argument, Word::kMaxCache),
    Option("fullframes", no_argument, Word::kFullFrames),
    Option("extcap-version", optional_argument, Word::kIgnored),
    {},
};

struct Options {
  Word task = Word::kNone;
  extcap::CaptureWish wish;
};

bool ReadMegabytes(const char* name, const char* text, long least, uint32_t& megabytes) {
  char* end = nullptr;
  errno = 0;
  const long value = strtol(text, &end, 10);
  megabytes = static_cast<uint32_t>(value);
  if (errno == 0 && end != text && *end == '\0' && value >= least && value <= kMostMegabytes) {
    return true;
  }
  fprintf(stderr, "corvane-extcap: %s %s is not a number from %ld to %ld\n", name, text, least,
          kMostMegabytes);
  return false;
}

// When the option is wrong, says why and returns false.
bool ReadOption(Word word, Options& options) {
  switch (word) {
    case Word::kInterface:
      options.wish.device = optarg;
      return true;
    case Word::kFifo:
      options.wish.fifo = optarg;
      return true;
    case Word::kFilter:
      options.wish.filter = optarg;
      return true;
    case Word::kSize:
      return ReadMegabytes("--size", optarg, 1, options.wish.file_size_mb);
    case Word::kMaxCache:
      return ReadMegabytes("--maxcache", optarg, 0, options.wish.cache_mb);
    case Word::kFullFrames:
      options.wish.full_frames = true;
      return true;
    case Word::kIgnored:
      return true;
    default:
      options.task = word;
      return true;
  }
}

bool Complain(const char* problem) {
  fprintf(stderr, "corvane-extcap: %s\n", problem);
  return false;
}

// When the command line is wrong, says why and returns false.
bool ReadOptions(int argc, char** argv, Options& options) {
  for (int word; (word = getopt_long(argc, argv, "", kOptions, nullptr)) != -1;) {
    if (word == '?' || !ReadOption(static_cast<Word>(word), options)) return false;
  }
  if (optind < argc) return Complain("only options are understood");
  // With a filter alone the viewer asks what is wrong with it.
  if (options.task == Word::kNone && !options.wish.filter.empty()) options.task = Word::kFilter;
  if (options.task == Word::kNone) return Complain("nothing to do");
  if (options.task != Word::kCapture) return true;
  if (options.wish.device.empty()) return Complain("--capture needs --extcap-interface");
  return !options.wish.fifo.empty() || Complain("--capture needs --fifo");
}

// A device without a name to ask for it is left out.
void ListDevice(DeviceHandle device, FILE* answers) {
  int32_t type_code = 0;
  uint8_t mac[CORVANE_MAC_SIZE] = {};
  if (CorvaneAPIGetDeviceMAC(device, mac) != kSuccess) return;
  const bool typed = CorvaneAPIGetDeviceType(device, &type_code) == kSuccess;
  const char* model = typed ? ModelName(type_code) : nullptr;
  fprintf(answers, "interface {value=%s}{display=%s}\n", MacText(mac).c_str(),
          model != nullptr ? model : "Corvane");
}

int ListInterfaces(FILE* answers) {
  const Session session;
  fputs("extcap {version=" CORVANE_VERSION "}{help=file://" CORVANE_HELP "}{display=Corvane}\n",
        answers);
  const DeviceList* devices = AttachedDevices(kListAttempts);
  const DeviceNode* node = devices == nullptr ? nullptr : devices->first;
  for (; node != nullptr; node = node->next) ListDevice(node->handle, answers);
  return kSuccess;
}

int Do(const Options& options, FILE* answers) {
  switch (options.task) {
    case Word::kInterfaces:
      return ListInterfaces(answers);
    case Word::kDlts:
      fputs("dlt {number=1}{name=EN10MB}{display=Ethernet}\n", answers);
      break;
    case Word::kConfig:
      fputs(kSettings, answers);
      break;
    case Word::kCapture:
      return extcap::Capture(options.wish);
    case Word::kFilter:
      fprintf(answers, "%s\n", extcap::kNoFilter);
      break;
    case Word::kVersion:
      fputs("corvane-extcap " CORVANE_VERSION "\n", answers);
      break;
    default:
      fputs(kUsage, answers);
  }
  return kSuccess;
}

}  // namespace

int main(int argc, char** argv) {
  PrepareOutput();
  setlocale(LC_CTYPE, "C.UTF-8");  // of paths
  Options options;
  if (!ReadOptions(argc, argv, options)) {
    fputs("Try 'corvane-extcap --help'.\n", stderr);
    return kUsageError;
  }
  FILE* const answers = PartAnswers();
  int status = answers != nullptr ? Do(options, answers) : kOutputLost;
  if (answers != nullptr && fclose(answers) != 0 && status == kSuccess) status = kOutputLost;
  if (status == kOutputLost) Complain("standard output could not be written");
  return FinishOutput(status);
}
