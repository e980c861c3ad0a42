#include "device/session.h"

#include <cstdio>
#include <cstdlib>

#include "console/output.h"
#include "console/status.h"
#include "device/corvane_api_layout.h"  // for its assertions
#include "device/selection.h"

namespace corvane {

Session::Session() {
  if (CorvaneAPIInitialize() == kSuccess) return;
  puts("Failed to initialize Corvane API");
  exit(FinishOutput(kRejected));
}

Session::Session(const std::optional<std::string>& device_text) : Session() {
  device_ = SelectDevice(device_text);
}

Session::~Session() {
  if (close_) CorvaneAPIUninitialize();
}

}  // namespace corvane
