/*
 * The GPS output of a device library, for measuring how it is read. The rest comes from
 * stub_library.c, whose own sleep and GPS output are compiled under other names.
 *
 * NMEA_SOURCE says what a read finds:
 *   sentences  a sentence every 10 ms, with the time at which it is returned
 *   idle       nothing
 *   endless    as much as the buffer holds
 * After NMEA_READS reads it fails, which ends the reading program, and writes to standard error the
 * cost since the first: "cpu" and the processor time, "wall" and the time, in seconds.
 */
#define _GNU_SOURCE
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "device/corvane_api.h"

enum { kSentenceSize = 72, kFailure = -1 };

static const int64_t kSecond = 1000000000; /* ns */
static const int64_t kInterval = 10000000; /* ns */

typedef struct Source {
  char kind; /* the first letter of its name */
  long reads_left;
  int64_t started;
  int64_t started_cpu;
  int64_t due; /* time of the next sentence */
} Source;

static Source source;

static int64_t Now(clockid_t clock) {
  struct timespec now;
  clock_gettime(clock, &now);
  return now.tv_sec * kSecond + now.tv_nsec;
}

static void Start(void) {
  source.kind = *getenv("NMEA_SOURCE");
  source.reads_left = atol(getenv("NMEA_READS"));
  source.started_cpu = Now(CLOCK_PROCESS_CPUTIME_ID);
  source.started = source.due = Now(CLOCK_MONOTONIC);
}

static int32_t End(void) {
  const double cpu = (double)(Now(CLOCK_PROCESS_CPUTIME_ID) - source.started_cpu);
  const double wall = (double)(Now(CLOCK_MONOTONIC) - source.started);
  fprintf(stderr, "cpu %.9f wall %.9f\n", cpu / (double)kSecond, wall / (double)kSecond);
  return kFailure;
}

static int32_t Sentence(char* buffer) {
  if (Now(CLOCK_MONOTONIC) < source.due) return 0;
  source.due += kInterval;
  snprintf(buffer, kSentenceSize + 1, "$BENCH,%019lld,%*s\r\n", (long long)Now(CLOCK_MONOTONIC),
           kSentenceSize - 29, "");
  return kSentenceSize;
}

static int32_t Fill(char* buffer, int32_t capacity) {
  if (source.kind == 's') return Sentence(buffer);
  if (source.kind == 'i') return 0;
  memset(buffer, '$', (size_t)capacity);
  return capacity;
}

void CorvaneApiSleepMs(uint32_t milliseconds) {
  const struct timespec time = {milliseconds / 1000, milliseconds % 1000 * 1000000L};
  nanosleep(&time, NULL);
}

int32_t CorvaneAPIGPSOutputFlush(DeviceHandle device) {
  (void)device;
  Start();
  return CORVANE_OK;
}

int32_t CorvaneAPIGPSOutputRead(DeviceHandle device, char* buffer, int32_t capacity,
                                int32_t* count) {
  (void)device;
  if (source.reads_left-- == 0) return End();
  *count = Fill(buffer, capacity);
  return CORVANE_OK;
}
