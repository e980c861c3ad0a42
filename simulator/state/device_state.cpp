#include "state/device_state.h"

#include <chrono>
#include <cstdlib>
#include <cstring>

#include "state/folder.h"

namespace simulator {
namespace {

constexpr int kSetUpRetryMs = 5;
constexpr int kSchemaVersion = 1;
constexpr const char* kNoDevice = "";

// The version comes last: until it is set, the next program makes what is still missing.
constexpr const char* kSchema =
    "PRAGMA journal_mode = WAL;"
    "CREATE TABLE IF NOT EXISTS configuration ("
    "  device TEXT NOT NULL, record TEXT NOT NULL, layer TEXT NOT NULL, bytes BLOB NOT NULL,"
    "  PRIMARY KEY (device, record, layer)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS fact ("
    "  device TEXT NOT NULL, name TEXT NOT NULL, bytes BLOB NOT NULL,"
    "  PRIMARY KEY (device, name)) WITHOUT ROWID;"
    "PRAGMA user_version = 1;";

using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

Statement Prepare(sqlite3* database, const char* sql,
                  std::initializer_list<std::string_view> texts) {
  sqlite3_stmt* prepared = nullptr;
  sqlite3_prepare_v2(database, sql, -1, &prepared, nullptr);
  if (prepared == nullptr) return {nullptr, sqlite3_finalize};
  Statement statement(prepared, sqlite3_finalize);
  int position = 0;
  for (const std::string_view text : texts) {
    sqlite3_bind_text(prepared, ++position, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
  }
  return statement;
}

// The database's last error, with the system's error when that caused it.
std::string ReasonOf(sqlite3* database) {
  std::string reason = sqlite3_errmsg(database);
  const int code = sqlite3_errcode(database);
  const int error = sqlite3_system_errno(database);
  const bool from_system = code == SQLITE_IOERR || code == SQLITE_CANTOPEN;
  return from_system && error != 0 ? reason + ": " + strerror(error) : reason;
}

// The version of the database's tables: 0 when it is new, -1 when it cannot be read.
int SchemaVersion(sqlite3* database) {
  const Statement statement = Prepare(database, "PRAGMA user_version", {});
  if (statement == nullptr || sqlite3_step(statement.get()) != SQLITE_ROW) return -1;
  return sqlite3_column_int(statement.get(), 0);
}

// SQLite does not wait for its turn while it changes the journal mode, which is what the first
// programs on a new database do at once: wait here.
bool MakeTables(sqlite3* database, int lock_wait_ms) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(lock_wait_ms);
  for (;;) {
    const int result = sqlite3_exec(database, kSchema, nullptr, nullptr, nullptr);
    if (result != SQLITE_BUSY || std::chrono::steady_clock::now() > deadline) {
      return result == SQLITE_OK;
    }
    sqlite3_sleep(kSetUpRetryMs);
  }
}

// True when the database, and each file that SQLite puts beside it, may be used.
bool FilesAreOurs(const std::string& path, std::string& reason) {
  for (const char* end : {"", "-journal", "-wal", "-shm"}) {
    struct stat facts;
    if (lstat((path + end).c_str(), &facts) == 0 && !IsStateFile(facts)) {
      reason = kForeignFile;
      return false;
    }
  }
  return true;
}

bool OpenDatabase(const std::string& path, DatabaseHolder& database, std::string& reason) {
  constexpr int kFlags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOFOLLOW;
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &opened, kFlags, nullptr);
  database.reset(opened);
  if (result != SQLITE_OK) reason = ReasonOf(opened);
  return result == SQLITE_OK;
}

bool SetUp(sqlite3* database, int lock_wait_ms, std::string& reason) {
  sqlite3_busy_timeout(database, lock_wait_ms);
  // Leaving the write-ahead log to the next writer loses nothing and keeps closing cheap.
  sqlite3_db_config(database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  sqlite3_exec(database, "PRAGMA synchronous = NORMAL", nullptr, nullptr, nullptr);
  const int version = SchemaVersion(database);
  if (version > kSchemaVersion) {
    reason = "it was made by a newer version of the simulator";
    return false;
  }
  if (version == kSchemaVersion || (version == 0 && MakeTables(database, lock_wait_ms))) {
    return true;
  }
  reason = ReasonOf(database);
  return false;
}

}  // namespace

bool DeviceState::Open(const std::string& folder, int lock_wait_ms, std::string& reason) {
  folder_ = folder;
  path_ = folder + "/devices.db";
  if (FilesAreOurs(path_, reason) && OpenDatabase(path_, database_, reason) &&
      SetUp(database_.get(), lock_wait_ms, reason)) {
    return true;
  }
  reason = "cannot use the device state " + path_ + ": " + reason;
  database_.reset();
  return false;
}

bool DeviceState::Begin(bool writing) {
  failure_.clear();
  Run(writing ? "BEGIN IMMEDIATE" : "BEGIN", {});
  return !failed();
}

bool DeviceState::Commit() {
  if (!failed()) Run("COMMIT", {});
  if (failed()) Rollback();
  return !failed();
}

void DeviceState::Rollback() {
  sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void DeviceState::Fail(const std::string& failure) {
  if (!failed()) failure_ = failure;
}

void DeviceState::FailDatabase(const std::string& reason) {
  Fail("cannot use the device state " + path_ + ": " + reason);
}

void DeviceState::Run(const char* sql, std::initializer_list<std::string_view> texts,
                      const Bytes* bytes) {
  const Statement statement = Prepare(database_.get(), sql, texts);
  if (statement != nullptr && bytes != nullptr) {
    const void* data = bytes->empty() ? "" : static_cast<const void*>(bytes->data());
    sqlite3_bind_blob(statement.get(), static_cast<int>(texts.size()) + 1, data,
                      static_cast<int>(bytes->size()), SQLITE_STATIC);
  }
  if (statement == nullptr || sqlite3_step(statement.get()) != SQLITE_DONE) {
    FailDatabase(ReasonOf(database_.get()));
  }
}

std::optional<Bytes> DeviceState::Find(const char* sql, std::string_view device,
                                       std::string_view name, size_t size) {
  const Statement statement = Prepare(database_.get(), sql, {device, name});
  const int result = statement == nullptr ? SQLITE_ERROR : sqlite3_step(statement.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) FailDatabase(ReasonOf(database_.get()));
  if (result != SQLITE_ROW) return std::nullopt;
  const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(statement.get(), 0));
  const auto stored =
      bytes == nullptr ? 0 : static_cast<size_t>(sqlite3_column_bytes(statement.get(), 0));
  if (size == kAnySize || size == stored) return Bytes(bytes, bytes + stored);
  FailDatabase(std::string(name) + " of " + std::string(device) + " has " + std::to_string(stored) +
               " bytes instead of " + std::to_string(size));
  return std::nullopt;
}

std::optional<Bytes> DeviceState::Configuration(std::string_view device, std::string_view record,
                                                size_t size) {
  return Find(
      "SELECT bytes FROM configuration WHERE device = ? AND record = ? "
      "AND layer IN ('current', 'saved') ORDER BY layer LIMIT 1",
      device, record, size);
}

void DeviceState::SetConfiguration(std::string_view device, std::string_view record,
                                   const Bytes& bytes) {
  Run("INSERT OR REPLACE INTO configuration VALUES (?, ?, 'current', ?)", {device, record}, &bytes);
}

void DeviceState::SaveConfiguration(std::string_view device, std::string_view record) {
  Run("INSERT OR REPLACE INTO configuration SELECT device, record, 'saved', bytes "
      "FROM configuration WHERE device = ? AND record = ? AND layer = 'current'",
      {device, record});
}

std::optional<Bytes> DeviceState::Fact(std::string_view device, std::string_view name,
                                       size_t size) {
  return Find("SELECT bytes FROM fact WHERE device = ? AND name = ?", device, name, size);
}

void DeviceState::SetFact(std::string_view device, std::string_view name, const Bytes& bytes) {
  Run("INSERT OR REPLACE INTO fact VALUES (?, ?, ?)", {device, name}, &bytes);
}

void DeviceState::ForgetFact(std::string_view device, std::string_view name) {
  Run("DELETE FROM fact WHERE device = ? AND name = ?", {device, name});
}

int64_t DeviceState::CountUp(std::string_view name) {
  failure_.clear();
  const auto digits = Find(
      "INSERT INTO fact VALUES (?, ?, 1) "
      "ON CONFLICT DO UPDATE SET bytes = bytes + 1 RETURNING bytes",
      kNoDevice, name, kAnySize);
  return digits ? atoll(std::string(digits->begin(), digits->end()).c_str()) : 0;
}

void DeviceState::Restart(std::string_view device) {
  Run("DELETE FROM configuration WHERE device = ? AND layer = 'current'", {device});
  Run("DELETE FROM fact WHERE device = ?", {device});
}

}  // namespace simulator
