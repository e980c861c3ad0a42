// The folder into which a capture for a viewer writes: one of its own in $TMPDIR, with the device's
// name in its name. It is locked, and the kernel frees the lock however the program ends: so what a
// killed program has left can be told from what another program uses.
#pragma once

#include <functional>
#include <string>

namespace extcap {

// Removes the folders that killed programs of this user have left. A folder into which a capture
// still writes is given to stop first, with the MAC address of its device.
void RemoveLeftovers(const std::function<void(const std::string& mac)>& stop);

class CaptureFolder {
 public:
  CaptureFolder() = default;
  ~CaptureFolder();  // removes the folder with its files
  CaptureFolder(const CaptureFolder&) = delete;
  CaptureFolder& operator=(const CaptureFolder&) = delete;

  // Makes the folder for the device with that MAC address. False with the reason. Once.
  bool Make(const std::string& mac, std::string& reason);

  const std::string& path() const { return path_; }
  int descriptor() const { return descriptor_; }

 private:
  std::string path_;
  int descriptor_ = -1;
};

}  // namespace extcap
