// What the simulated devices remember from one run of a program to the next: an SQLite database in
// the state folder.
//
// A device's configuration has two layers, as in a real one: the current one, which Set functions
// change, and the saved one, to which the device falls back when it restarts. A record that neither
// layer holds is the one it left the factory with. Beside them stand facts about the running device
// (when it started, what its clock was set to), which a restart forgets.
#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "records/record_fields.h"

namespace simulator {

using DatabaseHolder = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

class DeviceState {
 public:
  // Opens the database in the folder, a path without links; makes it when it does not exist. Waits
  // for other programs for at most lock_wait_ms, now and later. False with a reason for people when
  // it cannot be used.
  bool Open(const std::string& folder, int lock_wait_ms, std::string& reason);
  bool is_open() const { return database_ != nullptr; }
  void Close() { database_.reset(); }
  // The folder of the database that was opened last.
  const std::string& folder() const { return folder_; }

  // One transaction: other processes see everything until Commit at once, and nothing after a
  // Rollback. A writing one waits for its turn. False when the database fails.
  bool Begin(bool writing);
  // False, with nothing stored, when the database failed at any time since Begin.
  bool Commit();
  void Rollback();

  // True when the database failed since Begin, or was found damaged; then why, for people.
  bool failed() const { return !failure_.empty(); }
  const std::string& failure() const { return failure_; }
  // Makes the transaction fail, for a reason that lies outside of the database.
  void Fail(const std::string& failure);

  // What is stored must have the size given, unless that is kAnySize; another size is damage, and
  // nothing is returned.
  static constexpr size_t kAnySize = static_cast<size_t>(-1);

  // The device's current record, else its saved one, else nothing.
  std::optional<Bytes> Configuration(std::string_view device, std::string_view record,
                                     size_t size = kAnySize);
  void SetConfiguration(std::string_view device, std::string_view record, const Bytes& bytes);
  // Saves the current record, so that it survives a restart.
  void SaveConfiguration(std::string_view device, std::string_view record);

  std::optional<Bytes> Fact(std::string_view device, std::string_view name, size_t size);
  void SetFact(std::string_view device, std::string_view name, const Bytes& bytes);
  void ForgetFact(std::string_view device, std::string_view name);

  // Counts for the folder as a whole, for good: adds one and returns the sum, 0 when the database
  // fails. Not to be called in a transaction.
  int64_t CountUp(std::string_view name);

  // Forgets what was not saved, and every fact.
  void Restart(std::string_view device);

 private:
  void Run(const char* sql, std::initializer_list<std::string_view> texts,
           const Bytes* bytes = nullptr);
  // device and name are the texts of the statement.
  std::optional<Bytes> Find(const char* sql, std::string_view device, std::string_view name,
                            size_t size);
  void FailDatabase(const std::string& reason);

  DatabaseHolder database_ = {nullptr, sqlite3_close};
  std::string folder_;
  std::string path_;
  std::string failure_;  // the first since Begin
};

}  // namespace simulator
