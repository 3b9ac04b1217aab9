#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "simulator/store/database.h"

namespace vantry_sim {

/// A statement that is put together at run time. What comes from the wire goes in through Value alone and
/// becomes a parameter; only texts of the program itself become SQL.
class SqlText {
 public:
  SqlText& Add(std::string_view ownText) {
    text_.append(ownText);
    return *this;
  }
  SqlText& Add(const SqlText& other) {
    text_.append(other.text_);
    values_.insert(values_.end(), other.values_.begin(), other.values_.end());
    return *this;
  }
  SqlText& Value(SqlValue value) {
    text_.append("?");
    values_.push_back(std::move(value));
    return *this;
  }

  [[nodiscard]] bool empty() const { return text_.empty(); }
  [[nodiscard]] const std::string& text() const { return text_; }

  /// The statement, bound.
  [[nodiscard]] Statement Prepare(Database& database) const {
    Statement statement = database.Prepare(text_);
    statement.BindAll(values_);
    return statement;
  }

 private:
  std::string text_;
  std::vector<SqlValue> values_;
};

}  // namespace vantry_sim
