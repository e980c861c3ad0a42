#include "device/wait.h"

#include "console/output.h"
#include "device/corvane_api.h"

namespace corvane {

void Wait(uint32_t milliseconds) {
  FlushOutput();
  CorvaneApiSleepMs(milliseconds);
}

}  // namespace corvane
