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

#include "record_fields.h"

struct DatabaseDeleter {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
};

class DeviceState {
 public:
  // Opens the database in the folder, making both when they do not exist. Returns false with a
  // reason for people when it cannot.
  bool Open(const std::string& folder, std::string& reason);
  bool is_open() const { return database_ != nullptr; }
  void Close() { database_.reset(); }

  // One transaction: all that follows until Commit or Rollback happens for other processes at once
  // or not at all. A writing one waits for its turn. False when the database fails.
  bool Begin(bool writing);
  // False, with nothing stored, when the database failed at any time since Begin.
  bool Commit();
  void Rollback();

  // The device's current record, else its saved one, else nothing.
  std::optional<Bytes> Configuration(std::string_view device, std::string_view record);
  void SetConfiguration(std::string_view device, std::string_view record, const Bytes& bytes);
  // The device remembers the record from now on as it is.
  void SaveConfiguration(std::string_view device, std::string_view record);

  std::optional<Bytes> Fact(std::string_view device, std::string_view name);
  void SetFact(std::string_view device, std::string_view name, const Bytes& bytes);
  void ForgetFact(std::string_view device, std::string_view name);

  // Forgets what was not saved, and every fact.
  void Restart(std::string_view device);

 private:
  void Run(const char* sql, std::initializer_list<std::string_view> texts,
           const Bytes* bytes = nullptr);
  std::optional<Bytes> Find(const char* sql, std::initializer_list<std::string_view> texts);

  std::unique_ptr<sqlite3, DatabaseDeleter> database_;
  bool failed_ = false;  // since Begin
};
