// Standard output from the start of the process to its end.
#pragma once

// Call first. A standard stream that the caller closed becomes one that cannot be written, so that
// no file or socket opened later gets its number and the reports with it.
void PrepareOutput();

// Call before anything is printed when the report may be longer than the usual buffer, 4 kB, but
// not than 16 kB: it is written as a whole then. A terminal still gets it line by line.
void ExpectLongReport();

// Writes what was printed so far. False when that or anything before did not get to standard
// output: what would go on for ever should end then.
bool FlushOutput();

// Call last, with the result of the command. Flushes, and says on standard error when output was
// lost. Returns the exit status: the result, but 1 in place of success when output was lost.
int FinishOutput(int result);
