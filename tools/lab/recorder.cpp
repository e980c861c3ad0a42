// Preloaded before a program, this stands between it and the device library: every call goes on
// unchanged and leaves a line in the journal that CORVANE_LAB_JOURNAL names.
#include <dlfcn.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <type_traits>

#include "device/corvane_api_functions.h"
#include "device/mac_text.h"
#include "journal/journal.h"
#include "journal/wide_text.h"

namespace {

using corvane::HexArgument;
using corvane::TextArgument;

// The library's own function. Without one a program ends as it would have without the recorder.
template <class Function>
Function* Next(const char* name) {
  void* const found = dlsym(RTLD_NEXT, name);
  if (found == nullptr) {
    fprintf(stderr, "corvane-lab: the device library has no function %s\n", name);
    _exit(127);
  }
  return reinterpret_cast<Function*>(found);
}

// True while this thread is in the library. What the library calls of itself comes through here
// too: it goes on without a line, for it is not the program's call, and would wait for this
// thread's lock.
thread_local bool inside = false;

struct Inside {
  Inside() { inside = true; }
  ~Inside() { inside = false; }
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
};

// ---- Which device it is

std::mutex mutex;

// Never destroyed: a library may be called to the very end of a process.
std::map<DeviceHandle, std::string>& KnownNames() {
  static auto* const names = new std::map<DeviceHandle, std::string>;
  return *names;
}

// The device's MAC address. The library is asked for it when the device is first used.
std::string NameOf(DeviceHandle device) {
  const std::scoped_lock lock(mutex);
  const auto known = KnownNames().find(device);
  if (known != KnownNames().end()) return known->second;
  uint8_t mac[CORVANE_MAC_SIZE] = {};
  const auto get = Next<decltype(CorvaneAPIGetDeviceMAC)>("CorvaneAPIGetDeviceMAC");
  const Inside library;
  if (get(device, mac) != CORVANE_OK) return "none";
  return KnownNames()[device] = corvane::MacText(mac);
}

// After these calls the same handles may be those of other devices.
bool Ends(std::string_view function) {
  return function == "CorvaneApiDeviceListFree" || function == "CorvaneAPIUninitialize";
}
void ForgetNames() {
  const std::scoped_lock lock(mutex);
  KnownNames().clear();
}

// ---- The line of a call

struct Line {
  std::string text;
  const char* buffer = nullptr;  // of a read, until its count is known
  int32_t capacity = 0;
};

// What goes in. Pointers in a record mean nothing to a reader of the journal.
void AddIn(Line& line, const std::string& /*name*/, const wchar_t* text) {
  line.text += TextArgument("path", text);
}
void AddIn(Line& line, const std::string& /*name*/, DiskDumpConfig config) {
  const std::string text = TextArgument("file_name", config.file_name);
  config.file_name = nullptr;
  line.text += HexArgument("record", &config, sizeof config) + text;
}
void AddIn(Line& line, const std::string& /*name*/, DiskDumpConfigEx config) {
  const std::string directory = TextArgument("directory", config.directory);
  const std::string pattern = TextArgument("pattern", config.pattern);
  config.directory = config.pattern = nullptr;
  line.text += HexArgument("record", &config, sizeof config) + directory + pattern;
}
template <class In>
void AddIn(Line& line, const std::string& name, const In& in) {
  if constexpr (std::is_same_v<In, DeviceHandle>) {
    line.text += " device=" + NameOf(in);
  } else if constexpr (std::is_integral_v<In>) {
    line.text += " " + name + "=" + std::to_string(in);
    line.capacity = static_cast<int32_t>(in);
  } else if constexpr (std::is_class_v<In>) {
    line.text += HexArgument("record", &in, sizeof in);
  } else if constexpr (std::is_same_v<In, char*>) {
    line.buffer = in;
  }
}

// What a read counted, and the buffer that it filled; or a number that is known while a call runs.
void AddNumber(Line& line, const std::string& name, int32_t number) {
  line.text += " " + name + "=" + std::to_string(number);
  const auto size = static_cast<size_t>(std::clamp(number, 0, std::max(line.capacity, 0)));
  if (line.buffer != nullptr) line.text += HexArgument("record", line.buffer, size);
}

// What comes out.
template <class Out>
void AddOut(Line& line, const std::string& name, int32_t status, const Out& out) {
  using Pointed = std::remove_pointer_t<Out>;
  const bool runs = status == CORVANE_UPDATE_IN_PROGRESS && name == "percent";
  if (status != CORVANE_OK && !runs) return;
  if constexpr (std::is_same_v<Out, int32_t*>) {
    if (out != nullptr && name != "record") return AddNumber(line, name, *out);
  }
  if constexpr (std::is_same_v<Out, uint8_t*>) {
    if (out != nullptr) line.text += HexArgument("record", out, CORVANE_MAC_SIZE);
  } else if constexpr (std::is_pointer_v<Out> && !std::is_const_v<Pointed> &&
                       !std::is_same_v<Out, DeviceList*> && !std::is_same_v<Out, char*>) {
    if (out != nullptr) line.text += HexArgument("record", out, sizeof *out);
  }
}

// A result that is no status. A list that is not there has none: -1 stands for it.
int32_t StatusOf(Line& /*line*/, int32_t status) {
  return status;
}
int32_t StatusOf(Line& line, uint32_t number) {
  line.text += HexArgument("record", &number, sizeof number);
  return CORVANE_OK;
}
int32_t StatusOf(Line& /*line*/, const DeviceList* list) {
  return list == nullptr ? -1 : CORVANE_OK;
}

void Write(const Line& line, int32_t status) {
  static bool complained = false;
  const char* path = getenv("CORVANE_LAB_JOURNAL");
  timespec now = {};
  clock_gettime(CLOCK_REALTIME, &now);
  const int64_t now_ns = int64_t{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
  const std::string text =
      line.text + " status=" + std::to_string(status) + corvane::TimeArgument(now_ns) + '\n';
  if (path == nullptr || corvane::WriteJournal(path, text) || complained) return;
  complained = true;
  fprintf(stderr, "corvane-lab: cannot write %s: %s\n", path, strerror(errno));
}

// ---- The functions

template <class Function>
struct Call;

// A call with its function's name and the names of its arguments, "(device, index, counter)".
template <class Result, class... In>
struct Call<Result(In...)> {
  const char* function;
  const char* names;

  Result operator()(In... in) {
    const auto next = Next<Result(In...)>(function);
    if (inside) return next(in...);
    Line line = {function};
    const int error_before = errno;
    EachName([&](const std::string& name, const auto& each) { AddIn(line, name, each); }, in...);
    if (Ends(function)) ForgetNames();
    errno = error_before;
    if constexpr (std::is_void_v<Result>) {
      Ask(next, in...);
      Finish(line, int32_t{CORVANE_OK}, in...);
    } else {
      const Result result = Ask(next, in...);
      Finish(line, result, in...);
      return result;
    }
  }

 private:
  static Result Ask(Result (*next)(In...), In... in) {
    const Inside library;
    return next(in...);
  }

  void Finish(Line& line, auto result, In... in) {
    const int error = errno;
    const int32_t status = StatusOf(line, result);
    EachName([&](const std::string& name, const auto& each) { AddOut(line, name, status, each); },
             in...);
    Write(line, status);
    errno = error;
  }

  template <class Work, class... Arguments>
  void EachName([[maybe_unused]] Work work, const Arguments&... arguments) {
    const char* rest = names + 1;
    [[maybe_unused]] const auto next_name = [&rest] {
      const size_t size = strcspn(rest, ",)");
      std::string name(rest, size);
      rest += size + strspn(rest + size, ", ");
      return name;
    };
    (work(next_name(), arguments), ...);
  }
};

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-macro-parentheses): types and lists of arguments
#define OTHER(result, name, parameters, arguments)            \
  result name parameters {                                    \
    return Call<decltype(name)>{#name, #arguments} arguments; \
  }
#define GET(name, Record) \
  OTHER(int32_t, name, (DeviceHandle device, std::add_pointer_t<Record> record), (device, record))
#define SET(name, Record) \
  OTHER(int32_t, name, (DeviceHandle device, Record record), (device, record))
#define DO(name) OTHER(int32_t, name, (DeviceHandle device), (device))
// NOLINTEND(bugprone-macro-parentheses)
CORVANE_API_FUNCTIONS(GET, SET, DO, OTHER)

}  // extern "C"
