// Cases that are data, and checks by other programs.
#pragma once

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <sstream>
#include <utility>

#include "support/simulation.h"

// The parts of a file below golden/: what stands behind "=== " on a line, and the lines until the
// next such line. What stands before the first is a comment.
inline std::vector<std::pair<std::string, std::string>> GoldenParts(const std::string& file) {
  std::vector<std::pair<std::string, std::string>> parts;
  std::istringstream lines(ReadFile(CORVANE_GOLDEN "/" + file));
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("===")) {
      parts.emplace_back(line.erase(0, 4), "");
    } else if (!parts.empty()) {
      parts.back().second += line + "\n";
    }
  }
  EXPECT_FALSE(parts.empty()) << file;
  return parts;
}

// Runs a shell's command line in the simulation's folder and on its devices.
inline Result Shell(const Simulation& simulation, const std::string& command) {
  const std::string& folder = simulation.folder();
  const std::string environment = "export CORVANE_SIM_CONFIG=sim.toml CORVANE_SIM_STATE=state; (";
  const int status =
      system(("cd " + folder + "; " + environment + command + ") >out 2>err").c_str());
  return {WEXITSTATUS(status), ReadFile(folder + "/out"), ReadFile(folder + "/err")};
}
