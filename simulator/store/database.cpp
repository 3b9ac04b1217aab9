#include "simulator/store/database.h"

#include <sqlite3.h>

#include <utility>

#include "simulator/store/server_clock.h"
#include "simulator/wire/timestamp.h"

namespace vantry_sim {
namespace {

/// Requests wait this long for another process that looks into the file, such as the sqlite3 shell.
constexpr int busyMilliseconds = 10'000;
/// Filters from the wire make ever new texts of statements; beyond so many the ones at rest are dropped.
constexpr std::size_t mostStatementTexts = 512;

/// The time for the SQL functions. @param clock address of the database's pointer to its clock
std::int64_t TimeFor(sqlite3_context* context) {
  const auto* const* clock = static_cast<const ServerClock* const*>(sqlite3_user_data(context));
  return *clock == nullptr ? ServerClock().Now() : (*clock)->Now();
}

void ServerTime(sqlite3_context* context, int, sqlite3_value**) {
  const std::string text = TimestampOfSecond(TimeFor(context));
  sqlite3_result_text64(context, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

void ServerSeconds(sqlite3_context* context, int, sqlite3_value**) {
  sqlite3_result_int64(context, TimeFor(context) / 1000);
}

[[noreturn]] void Fail(sqlite3* handle, const char* what) {
  throw DatabaseError(std::string(what) + ": " + sqlite3_errmsg(handle));
}

/// A connection to another database, for as long as something is copied.
class OtherDatabase {
 public:
  OtherDatabase(const std::string& file, int flags) {
    if (sqlite3_open_v2(file.c_str(), &handle_, flags | SQLITE_OPEN_NOMUTEX, nullptr) == SQLITE_OK) return;
    const std::string reason = handle_ != nullptr ? sqlite3_errmsg(handle_) : "out of memory";
    sqlite3_close(handle_);
    throw DatabaseError("cannot open " + file + ": " + reason);
  }
  OtherDatabase(const OtherDatabase&) = delete;
  OtherDatabase& operator=(const OtherDatabase&) = delete;
  ~OtherDatabase() { sqlite3_close(handle_); }
  [[nodiscard]] sqlite3* handle() const { return handle_; }

 private:
  sqlite3* handle_ = nullptr;
};

void Copy(sqlite3* from, sqlite3* to) {
  sqlite3_backup* backup = sqlite3_backup_init(to, "main", from, "main");
  if (backup == nullptr) Fail(to, "cannot begin a copy");
  const int code = sqlite3_backup_step(backup, -1);
  sqlite3_backup_finish(backup);
  if (code != SQLITE_DONE)
    throw DatabaseError(std::string("cannot copy a database: ") + sqlite3_errstr(code));
}

}  // namespace

Statement::Statement(Database& database, std::string sql, sqlite3_stmt* handle)
    : database_(&database), sql_(std::move(sql)), handle_(handle) {}

Statement::Statement(Statement&& other) noexcept
    : database_(other.database_),
      sql_(std::move(other.sql_)),
      handle_(std::exchange(other.handle_, nullptr)) {}

Statement::~Statement() {
  if (handle_ != nullptr) database_->GiveBack(std::move(sql_), handle_);
}

bool Statement::Step() {
  const int code = sqlite3_step(handle_);
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  Fail(database_->handle_, "cannot run a statement");
}

void Statement::Run() {
  while (Step()) {
  }
  Reset();
}

void Statement::Reset() {
  sqlite3_reset(handle_);
}

std::string Statement::Text(int column) const {
  const auto* text = sqlite3_column_text(handle_, column);
  if (text == nullptr) return {};
  return {reinterpret_cast<const char*>(text),
          static_cast<std::size_t>(sqlite3_column_bytes(handle_, column))};
}

std::int64_t Statement::Integer(int column) const {
  return sqlite3_column_int64(handle_, column);
}

bool Statement::IsNull(int column) const {
  return sqlite3_column_type(handle_, column) == SQLITE_NULL;
}

Statement& Statement::BindAll(const std::vector<SqlValue>& values) {
  int index = 0;
  for (const SqlValue& value : values) {
    std::visit([&](const auto& held) { BindOne(++index, held); }, value);
  }
  return *this;
}

void Statement::BindOne(int index, std::string_view value) {
  // A null pointer would bind NULL, which is another value than an empty text.
  const char* data = value.empty() ? "" : value.data();
  if (sqlite3_bind_text64(handle_, index, data, value.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK) {
    Fail(database_->handle_, "cannot bind a text");
  }
}

void Statement::BindOne(int index, std::int64_t value) {
  if (sqlite3_bind_int64(handle_, index, value) != SQLITE_OK)
    Fail(database_->handle_, "cannot bind a number");
}

void Statement::BindOne(int index, std::nullptr_t) {
  if (sqlite3_bind_null(handle_, index) != SQLITE_OK) Fail(database_->handle_, "cannot bind a null");
}

Database::Database(const std::string& file) {
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX;
  if (sqlite3_open_v2(file.c_str(), &handle_, flags, nullptr) != SQLITE_OK) {
    const std::string reason = handle_ != nullptr ? sqlite3_errmsg(handle_) : "out of memory";
    sqlite3_close(handle_);
    throw DatabaseError("cannot open the database " + file + ": " + reason);
  }
  sqlite3_busy_timeout(handle_, busyMilliseconds);
  try {
    AddFunctions();
    Execute("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL; PRAGMA foreign_keys = ON;");
  } catch (const DatabaseError&) {
    sqlite3_close(handle_);
    throw;
  }
}

Database::~Database() {
  ForgetIdle();
  sqlite3_close(handle_);
}

void Database::AddFunctions() {
  const auto add = [this](const char* name, void (*function)(sqlite3_context*, int, sqlite3_value**)) {
    if (sqlite3_create_function_v2(handle_, name, 0, SQLITE_UTF8, &clock_, function, nullptr, nullptr,
                                   nullptr) != SQLITE_OK) {
      Fail(handle_, "cannot add a function");
    }
  };
  add("server_time", ServerTime);
  add("server_seconds", ServerSeconds);
}

void Database::CopyTo(const std::string& file) {
  const OtherDatabase other(file, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE);
  Copy(handle_, other.handle());
  // The copy is one file for itself, that others may read without making any beside it.
  if (sqlite3_exec(other.handle(), "PRAGMA journal_mode = DELETE", nullptr, nullptr, nullptr) != SQLITE_OK)
    Fail(other.handle(), "cannot finish a copy");
}

void Database::ReplaceBy(const std::string& file) {
  const OtherDatabase other(file, SQLITE_OPEN_READONLY);
  ForgetIdle();
  Copy(other.handle(), handle_);
  ++replaced_;
}

DatabaseVersion Database::Version() {
  auto statement = Prepare("PRAGMA data_version");
  const std::int64_t others = statement.Step() ? statement.Integer(0) : 0;
  return {others, replaced_, sqlite3_total_changes64(handle_)};
}

void Database::ForgetIdle() {
  for (auto& [sql, handles] : idle_) {
    for (sqlite3_stmt* handle : handles) sqlite3_finalize(handle);
  }
  idle_.clear();
}

Statement Database::Prepare(std::string_view sql) {
  if (const auto found = idle_.find(sql); found != idle_.end() && !found->second.empty()) {
    sqlite3_stmt* handle = found->second.back();
    found->second.pop_back();
    return {*this, std::string(sql), handle};
  }
  sqlite3_stmt* handle = nullptr;
  if (sqlite3_prepare_v2(handle_, sql.data(), static_cast<int>(sql.size()), &handle, nullptr) != SQLITE_OK) {
    Fail(handle_, "cannot prepare a statement");
  }
  return {*this, std::string(sql), handle};
}

void Database::Execute(const char* sql) {
  if (sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr) != SQLITE_OK)
    Fail(handle_, "cannot run a script");
}

std::int64_t Database::LastRowId() const {
  return sqlite3_last_insert_rowid(handle_);
}

void Database::GiveBack(std::string sql, sqlite3_stmt* handle) {
  sqlite3_reset(handle);
  sqlite3_clear_bindings(handle);
  if (idle_.size() >= mostStatementTexts) ForgetIdle();
  idle_[std::move(sql)].push_back(handle);
}

Transaction::Transaction(Database& database) : database_(database) {
  database_.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  if (!open_) return;
  try {
    database_.Execute("ROLLBACK");
  } catch (const DatabaseError&) {
    // The transaction was ended by the error that led here.
  }
}

void Transaction::Commit() {
  database_.Execute("COMMIT");
  open_ = false;
}

}  // namespace vantry_sim
