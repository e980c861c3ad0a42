// What is assumed about the device library, one row an assumption, and how the rows are tried.
#pragma once

#include <atomic>
#include <span>
#include <string>

#include "library.h"

namespace lab {

enum class Verdict : int { kNone, kOk, kDiffers, kNotTried };

struct Outcome {
  Verdict verdict;
  std::string seen;
};

inline constexpr size_t kMostRecords = 32;
inline constexpr size_t kMostRecordSize = 128;  // of a setting
inline constexpr size_t kMostRows = 32;
inline constexpr size_t kMostText = 400;

// What the child that tries the rows and its parent share.
struct Shared {
  std::atomic<int> calls;  // of the library, so that a hang can be told from long work
  std::atomic<bool> stop;  // no further write
  std::atomic<int> row;
  struct {
    std::atomic<Verdict> verdict;
    char seen[kMostText];
  } rows[kMostRows];
  struct {
    std::atomic<bool> valid;
    uint8_t bytes[kMostRecordSize];
  } originals[kMostRecords];
  struct {
    std::atomic<bool> changed;
    TimingStatusRecord status;
    int64_t read_at_ns;  // on the host's monotonic clock
  } clock;
};

// The library opened, and the device that is asked.
struct Subject {
  Shared& shared;
  std::string wanted;  // as --device has it
  bool opened = false;
  int32_t open_status = CORVANE_OK;
  std::vector<Device> devices;
  Device device = {CORVANE_NO_DEVICE, ""};
  uint32_t capabilities = 0;
};

enum class Needs : uint8_t { kNothing, kDevice, kWriting };

struct Assumption {
  const char* name;
  const char* sentence;
  Needs needs;
  Outcome (*check)(Subject& subject);
};
std::span<const Assumption> AllAssumptions();

// Opens the library and finds the device, once. False when there is none.
bool OpenSubject(Subject& subject);

// Notes what the device's settings are, then puts them back where they differ. Empty, or what
// failed.
void NoteOriginals(Subject& subject);
std::string RestoreOriginals(Subject& subject);

// Tries every row and prints a line for each: the status of the process.
int Check(const std::string& device, bool write);

}  // namespace lab
