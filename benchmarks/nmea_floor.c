/*
 * The plainest program that copies a device's GPS output: the same reads, waits and flushes as
 * `corvane nmea`, and nothing else.
 */
#include <stdio.h>

#include "device/corvane_api.h"

enum { kCapacity = 128 };

int main(void) {
  char buffer[kCapacity + 1];
  int32_t count = 0;
  CorvaneAPIInitialize();
  const DeviceHandle device = CorvaneAPIGetDevicesList()->first->handle;
  CorvaneAPIGPSOutputFlush(device);
  while (CorvaneAPIGPSOutputRead(device, buffer, kCapacity, &count) == CORVANE_OK) {
    if (count == 0) {
      CorvaneApiSleepMs(1);
      continue;
    }
    buffer[count] = '\0';
    fputs(buffer, stdout);
    fflush(stdout);
  }
  CorvaneAPIUninitialize();
  return 0;
}
