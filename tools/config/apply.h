// Writes plans to the devices, all or nothing.
#pragma once

#include <string>
#include <vector>

#include "plan.h"

namespace config {

struct Written {
  Plan* plan;
  Change* change;
};

// Writes what differs and reads it back. Stops at the first failure, or when a signal came,
// and returns what happened; empty when all is written. `written` gets what has to be put back
// then.
std::string WritePlans(std::vector<Plan>& plans, std::vector<Written>& written);

// Makes the records of all wishes permanent, whether they were written or not, and says in `done`
// which calls that were. What the device has no call for is named in `left`. Returns what failed.
struct Saved {
  Plan* plan;
  const Saving* saving;
};
std::string SavePlans(std::vector<Plan>& plans, std::vector<Saved>& done,
                      std::vector<std::string>& left);

// Puts the old records back, the last one first, and saves again what was saved. Returns a line for
// each that could not be put back.
std::vector<std::string> PutBack(const std::vector<Written>& written,
                                 const std::vector<Saved>& saved);

}  // namespace config
