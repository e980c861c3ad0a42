/*
 * run_many ROUNDS PEER [ARGUMENT...] -- COMMAND [ARGUMENT...]
 *
 * Runs the programs PEER and COMMAND in turn, ROUNDS times each, and prints the medians of
 * COMMAND's cost as a ratio to PEER's: a line each "wall R", "cpu R" (user and system time) and
 * "memory R" (peak resident set). Both run as they would on their own, except that standard
 * output goes to /dev/null. Ends with status 1 when one of them cannot be run or fails.
 *
 * One run takes about as long as the scheduler needs to get in the way, so the two alternate and
 * each round is compared within itself: load that comes and goes meets both alike. Link it
 * statically: until a child executes the program, it counts as large as this one.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

enum { kWall, kCpu, kMemory, kMeasures, kWarmUps = 20 };

static const char* const kNames[kMeasures] = {"wall", "cpu", "memory"};

typedef struct Cost {
  double of[kMeasures]; /* seconds, seconds, KiB */
} Cost;

static double Now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + (double)now.tv_nsec * 1e-9;
}

static double Seconds(struct timeval time) {
  return (double)time.tv_sec + (double)time.tv_usec * 1e-6;
}

/* vfork() because all that a child does before it executes the program is added to its cost.
 * Without a program the cost is that of an empty child. */
static bool Run(char** argv, Cost* cost) {
  const double start = Now();
  const pid_t child = vfork();
  if (child == 0) {
    if (argv != NULL) execv(argv[0], argv);
    _exit(argv == NULL ? 0 : 127);
  }
  int status = -1;
  struct rusage usage;
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) {
    fprintf(stderr, "run_many: %s failed, wait status %#x\n", argv == NULL ? "fork" : argv[0],
            (unsigned)status);
    return false;
  }
  cost->of[kWall] = Now() - start;
  cost->of[kCpu] = Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
  cost->of[kMemory] = (double)usage.ru_maxrss;
  return true;
}

/* Each goes first in every other round. */
static bool RunPair(int round, char** peer_argv, char** argv, Cost* peer, Cost* cost) {
  if (round % 2 == 0) return Run(peer_argv, peer) && Run(argv, cost);
  return Run(argv, cost) && Run(peer_argv, peer);
}

static int Compare(const void* a, const void* b) {
  const double x = *(const double*)a, y = *(const double*)b;
  return (x > y) - (x < y);
}

static double Median(double* values, int count) {
  qsort(values, (size_t)count, sizeof *values, Compare);
  return (values[(count - 1) / 2] + values[count / 2]) / 2;
}

/* ratios: kMeasures rows of `rounds`. */
static bool Measure(int rounds, char** peer_argv, char** argv, double* ratios) {
  Cost empty;
  if (!Run(NULL, &empty)) return false;
  for (int round = -kWarmUps; round < rounds; ++round) {
    Cost peer, cost;
    if (!RunPair(round, peer_argv, argv, &peer, &cost)) return false;
    if (peer.of[kMemory] <= empty.of[kMemory]) {
      fprintf(stderr, "run_many: is itself larger than %s\n", peer_argv[0]);
      return false;
    }
    for (int i = 0; i < kMeasures && round >= 0; ++i) {
      ratios[i * rounds + round] = cost.of[i] / peer.of[i];
    }
  }
  return true;
}

/* One processor for all: moving a child to another costs a good part of its run. */
static void StayOnThisProcessor(void) {
  cpu_set_t set;
  CPU_ZERO(&set);
  CPU_SET((size_t)sched_getcpu(), &set);
  sched_setaffinity(0, sizeof set, &set);
}

/* Sends the children's standard output to /dev/null; returns where the caller's was. */
static FILE* TakeOutput(void) {
  const int kept = fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (kept < 0 || null < 0 || dup2(null, STDOUT_FILENO) < 0) return NULL;
  return fdopen(kept, "w");
}

/* Ends the peer's words at the "--" and returns the words after it; null when there are none. */
static char** EndOfPeer(char** words) {
  while (*words != NULL && strcmp(*words, "--") != 0) ++words;
  if (*words == NULL || words[1] == NULL) return NULL;
  *words = NULL;
  return words + 1;
}

int main(int argc, char** argv) {
  const int rounds = argc < 5 ? 0 : atoi(argv[1]);
  char** command_argv = rounds > 0 ? EndOfPeer(argv + 3) : NULL;
  if (command_argv == NULL) {
    fputs("usage: run_many ROUNDS PEER [ARGUMENT...] -- COMMAND [ARGUMENT...]\n", stderr);
    return 1;
  }
  double* ratios = calloc((size_t)rounds * kMeasures, sizeof *ratios);
  FILE* output = TakeOutput();
  if (ratios == NULL || output == NULL) {
    fprintf(stderr, "run_many: %s\n", strerror(errno));
    return 1;
  }
  StayOnThisProcessor();
  if (!Measure(rounds, argv + 2, command_argv, ratios)) return 1;
  for (int i = 0; i < kMeasures; ++i) {
    fprintf(output, "%s %.3f\n", kNames[i], Median(ratios + i * rounds, rounds));
  }
  free(ratios);
  return fclose(output) == 0 ? 0 : 1;
}
