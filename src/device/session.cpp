#include "device/session.h"

#include <cstdio>
#include <cstdlib>

#include "device/output.h"
#include "device/selection.h"
#include "device/status.h"

Session::Session() {
  if (CorvaneAPIInitialize() == kSuccess) return;
  puts("Failed to initialize Corvane API");
  exit(FinishOutput(kRejected));
}

Session::Session(const CommandNode& leaf) : Session() {
  device_ = SelectDevice(leaf);
}

Session::~Session() {
  if (close_) CorvaneAPIUninitialize();
}
