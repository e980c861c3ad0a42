#include "device/wait.h"

#include "device/corvane_api.h"
#include "device/output.h"

void Wait(uint32_t milliseconds) {
  FlushOutput();
  CorvaneApiSleepMs(milliseconds);
}
