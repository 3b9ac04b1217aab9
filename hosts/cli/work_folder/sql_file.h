#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

struct sqlite3;

namespace vtdirect_cli {

/// A value that goes to SQL or comes from it.
using SqlValue = std::variant<std::int64_t, std::string>;
using SqlRow = std::vector<SqlValue>;

/// One connection to a database file. Several processes may have one to the same file; each change waits for
/// the other's for some seconds. What was committed outlives a killed process, and what was not is as if it
/// had never been. Not for several threads at once.
class SqlFile {
 public:
  /// Opens the file, or makes it. `fault` tells afterwards whether that was possible.
  explicit SqlFile(const std::string& path);
  ~SqlFile();
  SqlFile(const SqlFile&) = delete;
  SqlFile& operator=(const SqlFile&) = delete;

  /// Runs one statement with its values for ?1, ?2, ... in their order.
  /// @return the rows that it gives; nothing when it failed, and `fault` tells why
  [[nodiscard]] std::optional<std::vector<SqlRow>> Run(const std::string& sql, const SqlRow& values = {});

  /// Runs the statements in one transaction: all of them, or none.
  [[nodiscard]] bool RunTogether(const std::vector<std::pair<std::string, SqlRow>>& statements);

  /// Why the last call failed; empty when it did not.
  [[nodiscard]] const std::string& fault() const { return fault_; }

 private:
  sqlite3* handle_ = nullptr;
  std::string fault_;
};

/// The value as a text or a number; empty or 0 when it is of the other type.
[[nodiscard]] std::string TextIn(const SqlRow& row, std::size_t column);
[[nodiscard]] std::int64_t NumberIn(const SqlRow& row, std::size_t column);

}  // namespace vtdirect_cli
