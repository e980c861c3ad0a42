#include "device/wait.h"

#include <cstdio>

#include "device/corvane_api.h"

void Wait(uint32_t milliseconds) {
  fflush(stdout);
  CorvaneApiSleepMs(milliseconds);
}
