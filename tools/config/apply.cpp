#include "apply.h"

#include <algorithm>

#include "guard.h"

namespace config {

namespace {

std::string Name(const Plan& plan, const Change& change) {
  return plan.device.name + ": " + NameOf(change.record);
}

// True when all that is a setting is equal.
bool SameSettings(const Plan& plan, size_t record, const Bytes& a, const Bytes& b) {
  return Compare(plan.device.kind, record, a, b).empty();
}

// What the device took instead of the bytes that it should have; empty when it has those.
std::string Verify(const Plan& plan, size_t record, const Bytes& wanted) {
  Bytes taken;
  std::string failure = Read(plan.device, AllRecords()[record], taken);
  if (!failure.empty()) return failure;
  for (const Difference& difference : Compare(plan.device.kind, record, wanted, taken)) {
    failure += (failure.empty() ? "the device took something else: " : ", ") + difference.setting +
               " is " + difference.after.dump();
  }
  return failure;
}

std::string WriteOne(const Plan& plan, size_t record, const Bytes& bytes) {
  std::string failure = Write(plan.device, AllRecords()[record], bytes);
  return failure.empty() ? Verify(plan, record, bytes) : failure;
}

// The record may be as it was: a call that failed need not have changed it.
std::string Restore(const Plan& plan, const Change& change) {
  Bytes present;
  const std::string unread = Read(plan.device, AllRecords()[change.record], present);
  if (unread.empty() && SameSettings(plan, change.record, present, change.old)) return "";
  return WriteOne(plan, change.record, change.old);
}

// The calls that make the records of the plan's wishes permanent, each once.
std::vector<const Saving*> SavingsOf(const Plan& plan, std::vector<std::string>& left) {
  std::vector<const Saving*> savings;
  for (const Change& change : plan.changes) {
    const auto is_wished = [&](const Wish* wish) { return wish->section->record == change.record; };
    const Saving* saving = AllRecords()[change.record].saving;
    if (std::ranges::none_of(plan.wishes, is_wished)) continue;
    if ((plan.device.kind.capabilities & saving->needs) != saving->needs) {
      left.push_back(Name(plan, change));
    } else if (std::ranges::count(savings, saving) == 0) {
      savings.push_back(saving);
    }
  }
  return savings;
}

}  // namespace

std::string WritePlans(std::vector<Plan>& plans, std::vector<Written>& written) {
  for (Plan& plan : plans) {
    for (Change& change : plan.changes) {
      if (change.old == change.wanted) continue;
      if (SignalCame(0)) return "interrupted";
      written.push_back({&plan, &change});
      const std::string failure = WriteOne(plan, change.record, change.wanted);
      if (!failure.empty()) return Name(plan, change) + ": " + failure;
    }
  }
  return !written.empty() && SignalCame(0) ? "interrupted" : "";
}

std::string SavePlans(std::vector<Plan>& plans, std::vector<Saved>& done,
                      std::vector<std::string>& left) {
  for (Plan& plan : plans) {
    for (const Saving* saving : SavingsOf(plan, left)) {
      const std::string failure = Save(plan.device, *saving);
      if (!failure.empty()) return plan.device.name + ": " + failure;
      done.push_back({&plan, saving});
    }
  }
  return "";
}

std::vector<std::string> PutBack(const std::vector<Written>& written,
                                 const std::vector<Saved>& saved) {
  std::vector<std::string> lost;
  for (auto each = written.rbegin(); each != written.rend(); ++each) {
    const std::string failure = Restore(*each->plan, *each->change);
    if (failure.empty()) continue;
    lost.push_back(Name(*each->plan, *each->change) + " could not be put back: " + failure);
  }
  for (const Saved& each : saved) {
    const std::string failure = Save(each.plan->device, *each.saving);
    if (failure.empty()) continue;
    lost.push_back(each.plan->device.name + " keeps the new settings after a restart: " + failure);
  }
  return lost;
}

}  // namespace config
