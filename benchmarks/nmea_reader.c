/*
 * Reads the sentences of nmea_library.c from standard input to its end, and prints how many
 * microseconds they took to arrive: the 50th and the 99th percentile, the most, and the number of
 * sentences. Ends with status 1 when there were none.
 */
#define _GNU_SOURCE
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

enum { kMost = 100000 };

static double delays[kMost]; /* us */

static long long Now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000000000LL + now.tv_nsec;
}

static int Ascending(const void* left, const void* right) {
  const double a = *(const double*)left;
  const double b = *(const double*)right;
  return (a > b) - (a < b);
}

/* Reads the sentences that are complete; returns the number of delays known then. */
static int Take(const char* text, long long now, int count) {
  while (count < kMost && (text = strstr(text, "$BENCH,")) != NULL) {
    text += strlen("$BENCH,");
    delays[count++] = (double)(now - atoll(text)) / 1000;
  }
  return count;
}

int main(void) {
  static char text[65536];
  int count = 0;
  ssize_t size;
  while ((size = read(STDIN_FILENO, text, sizeof text - 1)) > 0) {
    const long long now = Now();
    text[size] = '\0';
    count = Take(text, now, count);
  }
  if (count == 0) return 1;
  qsort(delays, (size_t)count, sizeof *delays, Ascending);
  printf("%.0f %.0f %.0f %d\n", delays[count / 2], delays[count * 99 / 100], delays[count - 1],
         count);
  return 0;
}
