// Preloaded in front of the simulator, this makes of it a library that is hard to live with, as a
// C++ library is allowed to be: it throws inside of itself, out of itself too when CORVANE_UNCAUGHT
// is set, and it reads what it was handed late.
#include <dlfcn.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "device/corvane_api.h"

namespace {

template <class Function>
Function* Next(Function*, const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

// The texts as the process ends.
struct Texts {
  const wchar_t* texts[3] = {};
  ~Texts() {
    for (const wchar_t* text : texts) {
      if (text != nullptr) fprintf(stderr, "late: %ls\n", text);
    }
  }
};
Texts kept;

}  // namespace

extern "C" {

int32_t CorvaneAPIInitialize(void) {
  try {
    throw std::runtime_error("a library throws");
  } catch (const std::runtime_error& error) {
    fprintf(stderr, "%s\n", error.what());
    if (getenv("CORVANE_UNCAUGHT") != nullptr) throw;
  }
  return Next(CorvaneAPIInitialize, __func__)();
}

int32_t CorvaneAPIDiskDumpSetConfig(DeviceHandle device, DiskDumpConfig config) {
  kept.texts[0] = config.file_name;
  return Next(CorvaneAPIDiskDumpSetConfig, __func__)(device, config);
}

int32_t CorvaneAPIDiskDumpSetConfigEx(DeviceHandle device, DiskDumpConfigEx config) {
  kept.texts[0] = config.directory;
  kept.texts[1] = config.pattern;
  return Next(CorvaneAPIDiskDumpSetConfigEx, __func__)(device, config);
}

int32_t CorvaneAPIFirmwareUpdateStart(DeviceHandle device, const wchar_t* path) {
  kept.texts[2] = path;
  return Next(CorvaneAPIFirmwareUpdateStart, __func__)(device, path);
}

}  // extern "C"
