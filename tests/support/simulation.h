// A simulated machine for one test: a folder with its own configuration, device state and journal,
// on which the real executable runs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct Result {
  int status = 0;   // exit status; 128 + n when signal n ended the program
  std::string out;  // standard output
  std::string err;  // standard error
};

// A [[device]] table.
std::string DeviceToml(const std::string& mac, uint32_t capabilities, const std::string& more = "");

// A [[fault]] table.
std::string FaultToml(const std::string& function, int status, int call = 0);

class Simulation {
 public:
  // The configuration file's text without its journal line.
  explicit Simulation(const std::string& toml);
  ~Simulation();
  Simulation(const Simulation&) = delete;
  Simulation& operator=(const Simulation&) = delete;

  // Another configuration over the same device state, with an empty journal.
  void Configure(const std::string& toml);

  // Runs "corvane words..." (split at blanks) to its end, or until SIGINT after at most limit_ms.
  Result Run(const std::string& words, int limit_ms = 60'000) const;
  Result Run(std::vector<std::string> words, int limit_ms = 60'000) const;

  // The functions called, in order, since the journal was last emptied.
  std::vector<std::string> Calls() const;
  int CallsOf(const std::string& function) const;
  // The journal's lines of one function.
  std::vector<std::string> Lines(const std::string& function) const;
  void EmptyJournal() const;

  const std::string& folder() const { return folder_; }

 private:
  std::string folder_;
};

// A text file's content; empty when it cannot be read.
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& text);

// Words at blanks.
std::vector<std::string> Split(const std::string& words);
