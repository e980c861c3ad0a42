// Preloaded before the device library: a device that says that all is well and takes 128 as the
// only length of slices.
#include <dlfcn.h>

#include "device/corvane_api.h"

extern "C" int32_t CorvaneAPISetDeviceFeatures(DeviceHandle device, FeaturesRecord features) {
  features.slicing_size = 128;
  void* const next = dlsym(RTLD_NEXT, __func__);
  return reinterpret_cast<decltype(&CorvaneAPISetDeviceFeatures)>(next)(device, features);
}
