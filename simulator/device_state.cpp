#include "device_state.h"

#include <chrono>
#include <filesystem>

namespace {

constexpr int kBusyMs = 20'000;  // hundreds of invocations may stand in line
constexpr int kSetUpRetryMs = 5;

constexpr const char* kSchema =
    "PRAGMA journal_mode = WAL;"
    "PRAGMA synchronous = NORMAL;"
    "CREATE TABLE IF NOT EXISTS configuration ("
    "  device TEXT NOT NULL, record TEXT NOT NULL, layer TEXT NOT NULL, bytes BLOB NOT NULL,"
    "  PRIMARY KEY (device, record, layer)) WITHOUT ROWID;"
    "CREATE TABLE IF NOT EXISTS fact ("
    "  device TEXT NOT NULL, name TEXT NOT NULL, bytes BLOB NOT NULL,"
    "  PRIMARY KEY (device, name)) WITHOUT ROWID;";

struct StatementDeleter {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, StatementDeleter>;

Statement Prepare(sqlite3* database, const char* sql,
                  std::initializer_list<std::string_view> texts) {
  sqlite3_stmt* prepared = nullptr;
  if (sqlite3_prepare_v2(database, sql, -1, &prepared, nullptr) != SQLITE_OK) return nullptr;
  Statement statement(prepared);
  int position = 0;
  for (const std::string_view text : texts) {
    sqlite3_bind_text(prepared, ++position, text.data(), static_cast<int>(text.size()),
                      SQLITE_STATIC);
  }
  return statement;
}

// SQLite does not wait for its turn while it changes the journal mode, which is what the first
// programs on a new database do at once: wait here.
int SetUp(sqlite3* database) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(kBusyMs);
  for (;;) {
    const int result = sqlite3_exec(database, kSchema, nullptr, nullptr, nullptr);
    if (result != SQLITE_BUSY || std::chrono::steady_clock::now() > deadline) return result;
    sqlite3_sleep(kSetUpRetryMs);
  }
}

}  // namespace

bool DeviceState::Open(const std::string& folder, std::string& reason) {
  std::error_code failure;
  std::filesystem::create_directories(folder, failure);
  if (failure) {
    reason = "cannot make the state folder " + folder + ": " + failure.message();
    return false;
  }
  const std::string path = folder + "/devices.db";
  sqlite3* opened = nullptr;
  const int result = sqlite3_open(path.c_str(), &opened);
  database_.reset(opened);
  sqlite3_busy_timeout(opened, kBusyMs);
  // Nothing is lost by leaving the write-ahead log to the next writer, and closing stays cheap.
  sqlite3_db_config(opened, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
  if (result != SQLITE_OK || SetUp(opened) != SQLITE_OK) {
    reason = "cannot use the device state " + path + ": " + sqlite3_errmsg(opened);
    database_.reset();
    return false;
  }
  return true;
}

bool DeviceState::Begin(bool writing) {
  failed_ = false;
  Run(writing ? "BEGIN IMMEDIATE" : "BEGIN", {});
  return !failed_;
}

bool DeviceState::Commit() {
  if (!failed_) Run("COMMIT", {});
  if (failed_) Rollback();
  return !failed_;
}

void DeviceState::Rollback() {
  sqlite3_exec(database_.get(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void DeviceState::Run(const char* sql, std::initializer_list<std::string_view> texts,
                      const Bytes* bytes) {
  const Statement statement = Prepare(database_.get(), sql, texts);
  if (statement != nullptr && bytes != nullptr) {
    const void* data = bytes->empty() ? "" : static_cast<const void*>(bytes->data());
    sqlite3_bind_blob(statement.get(), static_cast<int>(texts.size()) + 1, data,
                      static_cast<int>(bytes->size()), SQLITE_STATIC);
  }
  if (statement == nullptr || sqlite3_step(statement.get()) != SQLITE_DONE) failed_ = true;
}

std::optional<Bytes> DeviceState::Find(const char* sql,
                                       std::initializer_list<std::string_view> texts) {
  const Statement statement = Prepare(database_.get(), sql, texts);
  const int result = statement == nullptr ? SQLITE_ERROR : sqlite3_step(statement.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) failed_ = true;
  if (result != SQLITE_ROW) return std::nullopt;
  const auto* bytes = static_cast<const uint8_t*>(sqlite3_column_blob(statement.get(), 0));
  return Bytes(bytes, bytes + sqlite3_column_bytes(statement.get(), 0));
}

std::optional<Bytes> DeviceState::Configuration(std::string_view device, std::string_view record) {
  return Find(
      "SELECT bytes FROM configuration WHERE device = ? AND record = ? "
      "ORDER BY layer = 'current' DESC LIMIT 1",
      {device, record});
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

std::optional<Bytes> DeviceState::Fact(std::string_view device, std::string_view name) {
  return Find("SELECT bytes FROM fact WHERE device = ? AND name = ?", {device, name});
}

void DeviceState::SetFact(std::string_view device, std::string_view name, const Bytes& bytes) {
  Run("INSERT OR REPLACE INTO fact VALUES (?, ?, ?)", {device, name}, &bytes);
}

void DeviceState::ForgetFact(std::string_view device, std::string_view name) {
  Run("DELETE FROM fact WHERE device = ? AND name = ?", {device, name});
}

void DeviceState::Restart(std::string_view device) {
  Run("DELETE FROM configuration WHERE device = ? AND layer = 'current'", {device});
  Run("DELETE FROM fact WHERE device = ?", {device});
}
