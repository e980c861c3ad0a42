// Standard output from the start of the process to its end.
#pragma once

#include <cstdio>

namespace corvane {

// Call first. Every report fits the buffer of standard output and is written as a whole; a terminal
// gets it line by line. A standard stream that the caller closed becomes one that cannot be
// written, so that no file or socket opened later gets its number and the reports with it.
void PrepareOutput();

// For a program whose output another program reads: what is printed from now on, by the device
// library too, goes where standard error goes. Returns what was standard output, for the answers;
// null, with errno, when it was closed. The caller closes it.
FILE* PartAnswers();

// Writes what was printed so far. False when that or anything before did not get to standard
// output: endless commands should end then.
bool FlushOutput();

// Call last, with the result of the command. Flushes, and says on standard error when output was
// lost. Returns the exit status: the result, but 1 in place of success when output was lost.
int FinishOutput(int result);

}  // namespace corvane
