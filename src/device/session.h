// The device library opened for one command.
#pragma once

#include <optional>
#include <string>

#include "device/corvane_api.h"

namespace corvane {

// Opens the library when made and closes it when it goes out of scope. When the library cannot be
// opened it says so and ends the process with status -1: no handler works without it.
class Session {
 public:
  // Opens the library and selects no device.
  Session();
  // Opens the library and selects the device that the text names, or the first when there is no
  // text; prints one line either way.
  explicit Session(const std::optional<std::string>& device_text);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  bool has_device() const { return device_ != CORVANE_NO_DEVICE; }
  // CORVANE_NO_DEVICE when none was found.
  DeviceHandle device() const { return device_; }

  // The library stays open when the session ends.
  void LeaveOpen() { close_ = false; }

 private:
  DeviceHandle device_ = CORVANE_NO_DEVICE;
  bool close_ = true;
};

}  // namespace corvane
