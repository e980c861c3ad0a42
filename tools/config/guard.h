// What stands between the tool and others: locks against a second one, signals, the terminal.
#pragma once

#include <string>
#include <vector>

namespace config {

// Holds off another corvane-config on these devices until the process ends; waits for one that is
// at work, and says so after a second unless `quiet`. Returns what failed; empty when all are
// locked.
std::string LockDevices(std::vector<std::string> names, bool quiet);

// From now on no signal ends or stops the process that would have by default: what was written is
// to be put back first. Call before the library is opened, so that its threads leave signals alone
// too.
void HoldSignals();

// True when a signal came since, or comes within the time.
bool SignalCame(int wait_ms);

// Waits for a line on standard input, so many seconds at most. Null when it is the word, else what
// came instead.
const char* AskFor(const std::string& word, int seconds);

}  // namespace config
