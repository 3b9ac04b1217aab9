#include "hosts/cli/work_folder/sql_file.h"

#include <sqlite3.h>

#include <memory>

namespace vtdirect_cli {
namespace {

// As long as another process may take for one change of its own on a slow disk.
constexpr int longestWaitMilliseconds = 10'000;

struct Finalize {
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

void Bind(sqlite3_stmt* statement, int index, const SqlValue& value) {
  if (const auto* number = std::get_if<std::int64_t>(&value)) {
    sqlite3_bind_int64(statement, index, *number);
    return;
  }
  const std::string& text = std::get<std::string>(value);
  sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

[[nodiscard]] SqlValue ValueOf(sqlite3_stmt* statement, int column) {
  if (sqlite3_column_type(statement, column) == SQLITE_INTEGER)
    return sqlite3_column_int64(statement, column);
  const auto* const bytes = static_cast<const char*>(sqlite3_column_blob(statement, column));
  const auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, column));
  return bytes == nullptr ? std::string() : std::string(bytes, size);
}

[[nodiscard]] SqlRow RowOf(sqlite3_stmt* statement) {
  SqlRow row;
  const int count = sqlite3_column_count(statement);
  for (int column = 0; column < count; ++column) row.push_back(ValueOf(statement, column));
  return row;
}

}  // namespace

SqlFile::SqlFile(const std::string& path) {
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
  if (sqlite3_open_v2(path.c_str(), &handle_, flags, nullptr) != SQLITE_OK) {
    fault_ = handle_ == nullptr ? "there is not enough memory" : sqlite3_errmsg(handle_);
    return;
  }
  sqlite3_busy_timeout(handle_, longestWaitMilliseconds);
  // Where a file system has no room for this journal, SQLite keeps its other one, which is as safe.
  static_cast<void>(Run("PRAGMA journal_mode = WAL"));
  static_cast<void>(Run("PRAGMA synchronous = NORMAL"));
  fault_.clear();
}

SqlFile::~SqlFile() {
  sqlite3_close_v2(handle_);
}

std::optional<std::vector<SqlRow>> SqlFile::Run(const std::string& sql, const SqlRow& values) {
  fault_.clear();
  sqlite3_stmt* prepared = nullptr;
  int code = sqlite3_prepare_v2(handle_, sql.c_str(), -1, &prepared, nullptr);
  const Statement statement(prepared);
  std::vector<SqlRow> rows;
  if (code == SQLITE_OK) {
    for (std::size_t index = 0; index < values.size(); ++index) {
      Bind(prepared, static_cast<int>(index) + 1, values[index]);
    }
    while ((code = sqlite3_step(prepared)) == SQLITE_ROW) rows.push_back(RowOf(prepared));
  }
  if (code == SQLITE_DONE) return rows;
  fault_ = sqlite3_errmsg(handle_);
  return std::nullopt;
}

bool SqlFile::RunTogether(const std::vector<std::pair<std::string, SqlRow>>& statements) {
  if (!Run("BEGIN IMMEDIATE")) return false;
  for (const auto& [sql, values] : statements) {
    if (Run(sql, values)) continue;
    const std::string fault = fault_;
    static_cast<void>(Run("ROLLBACK"));
    fault_ = fault;
    return false;
  }
  if (Run("COMMIT")) return true;
  const std::string fault = fault_;
  static_cast<void>(Run("ROLLBACK"));
  fault_ = fault;
  return false;
}

std::string TextIn(const SqlRow& row, std::size_t column) {
  const auto* text = column < row.size() ? std::get_if<std::string>(&row[column]) : nullptr;
  return text == nullptr ? "" : *text;
}

std::int64_t NumberIn(const SqlRow& row, std::size_t column) {
  const auto* number = column < row.size() ? std::get_if<std::int64_t>(&row[column]) : nullptr;
  return number == nullptr ? 0 : *number;
}

}  // namespace vtdirect_cli
