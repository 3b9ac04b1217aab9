#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

namespace vantry_sim {

/// The database refused something that the program counts on. The request that ran into it is answered with
/// 500.
class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class Database;

/// A value that is bound to a parameter of a statement put together at run time.
using SqlValue = std::variant<std::int64_t, std::string>;

/// A prepared statement on loan from its database; goes back, reset, when destroyed. Values reach SQL through
/// Bind alone. A text column that is NULL reads as empty, a NULL number as 0.
class Statement {
 public:
  Statement(Statement&& other) noexcept;
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  Statement& operator=(Statement&&) = delete;
  ~Statement();

  /// Binds the values to the parameters ?1, ?2, ... in their order. Texts are copied.
  template <typename... Values>
  Statement& Bind(const Values&... values) {
    int index = 0;
    (BindOne(++index, values), ...);
    return *this;
  }

  /// Binds the values to the parameters in their order, as Bind does.
  Statement& BindAll(const std::vector<SqlValue>& values);

  /// Goes to the next row. @return false after the last one. @throws DatabaseError
  bool Step();

  /// Runs a statement that gives no rows and makes it ready to be bound and run again. @throws DatabaseError
  void Run();

  /// Makes the statement ready to be bound and run again.
  void Reset();

  [[nodiscard]] std::string Text(int column) const;
  [[nodiscard]] std::int64_t Integer(int column) const;
  [[nodiscard]] bool IsNull(int column) const;

 private:
  friend class Database;
  Statement(Database& database, std::string sql, sqlite3_stmt* handle);
  void BindOne(int index, std::string_view value);
  void BindOne(int index, std::int64_t value);
  void BindOne(int index, int value) { BindOne(index, static_cast<std::int64_t>(value)); }
  void BindOne(int index, bool value) { BindOne(index, static_cast<std::int64_t>(value)); }
  void BindOne(int index, std::uint64_t value) { BindOne(index, static_cast<std::int64_t>(value)); }
  void BindOne(int index, std::uint32_t value) { BindOne(index, static_cast<std::int64_t>(value)); }
  void BindOne(int index, std::nullptr_t);
  void BindOne(int index, const std::string& value) { BindOne(index, std::string_view(value)); }
  void BindOne(int index, const char* value) { BindOne(index, std::string_view(value)); }

  Database* database_;
  std::string sql_;
  sqlite3_stmt* handle_;
};

class ServerClock;

/// Says whether anything was written in between: two that are equal mean that nothing was.
struct DatabaseVersion {
  std::int64_t others = 0;
  std::int64_t replaced = 0;
  std::int64_t changes = 0;
  bool operator==(const DatabaseVersion&) const = default;
};

/// One connection to the database file. Not for several threads at once: the simulator runs one request's
/// handler at a time.
class Database {
 public:
  /// Opens or makes the file, in WAL mode, so that what was committed outlives a killed process.
  /// @throws DatabaseError
  explicit Database(const std::string& file);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;
  ~Database();

  /// A statement for the text, taken from those used before where there is one. @throws DatabaseError
  Statement Prepare(std::string_view sql);

  /// Runs one or more statements without parameters. @throws DatabaseError
  void Execute(const char* sql);

  /// What the SQL functions `server_time()`, a text, and `server_seconds()`, since 1970, go by from now on:
  /// the machine's time without this. @param clock outlives the database
  void SetClock(const ServerClock& clock) { clock_ = &clock; }

  /// Writes a copy of all that is held into a file, which must not be there. @throws DatabaseError
  void CopyTo(const std::string& file);

  /// Puts what a file holds in the place of all that is held, whole or not at all. Not to be called in a
  /// transaction, nor while a statement is at work. @throws DatabaseError
  void ReplaceBy(const std::string& file);

  /// What changes with everything that is written, by this connection or by another process.
  [[nodiscard]] DatabaseVersion Version();

  /// The row id that the last INSERT made.
  [[nodiscard]] std::int64_t LastRowId() const;

 private:
  friend class Statement;
  void AddFunctions();
  void GiveBack(std::string sql, sqlite3_stmt* handle);
  void ForgetIdle();

  sqlite3* handle_ = nullptr;
  const ServerClock* clock_ = nullptr;
  std::int64_t replaced_ = 0;  ///< times that everything was
  std::map<std::string, std::vector<sqlite3_stmt*>, std::less<>> idle_;
};

/// A transaction, rolled back unless Commit was reached.
class Transaction {
 public:
  explicit Transaction(Database& database);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();
  void Commit();

 private:
  Database& database_;
  bool open_ = true;
};

}  // namespace vantry_sim
