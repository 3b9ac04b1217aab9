#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/seed/fixture_tree.h"

namespace vantry_sim {

/// What was found wrong with a state file, up to a number that a person reads.
class FixtureProblems {
 public:
  void Add(std::uint32_t line, std::string reason);
  [[nodiscard]] bool empty() const { return list_.empty(); }
  [[nodiscard]] const std::vector<FixtureProblem>& list() const { return list_; }

 private:
  std::vector<FixtureProblem> list_;
};

/// Reads the members of one object of a state file and tells what is wrong with them.
class FixtureObject {
 public:
  /// @param what it describes, for the texts of problems, such as "a folder". @param keys that it may have
  FixtureObject(JsonValue value, std::string_view what, const std::vector<std::string_view>& keys,
                FixtureProblems& problems);

  [[nodiscard]] bool Has(std::string_view key) const { return !Value(key).IsMissing(); }
  /// The member; missing for none, and for an empty one.
  [[nodiscard]] JsonValue Value(std::string_view key) const;
  [[nodiscard]] std::uint32_t line() const { return value_.Line(); }

  /// A text; a number and a truth value count as they are written. @return `otherwise` without the member
  [[nodiscard]] std::string Text(std::string_view key, std::string_view otherwise = {}) const;
  /// The same; a missing or an empty one is a problem.
  [[nodiscard]] std::string Required(std::string_view key) const;
  [[nodiscard]] bool Flag(std::string_view key, bool otherwise) const;
  /// A whole number that is not below 0. Nothing without the member.
  [[nodiscard]] std::optional<std::int64_t> Number(std::string_view key) const;
  /// A list; missing without the member.
  [[nodiscard]] JsonValue List(std::string_view key) const;

  void Problem(std::string_view key, const std::string& reason) const;

 private:
  JsonValue value_;
  std::string what_;
  FixtureProblems& problems_;
};

/// The text of a value that may be a number or a truth value as well. Nothing for any other.
std::optional<std::string> ScalarText(JsonValue value);

}  // namespace vantry_sim
