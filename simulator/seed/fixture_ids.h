#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <string_view>

#include "simulator/seed/fixture_object.h"

namespace vantry_sim {

/// The ids of one kind of things in a state file: those that it names, and those that are made up.
class FixtureIds {
 public:
  /// @param first number of the ids that are made up
  explicit FixtureIds(std::int64_t first) : next_(first) {}

  /// Notes an id that the file names; a second one of the same text is a problem.
  void Claim(const std::string& id, std::uint32_t line, FixtureProblems& problems);

  /// Makes one up that nothing has: `front` and the next number.
  std::string Make(std::string_view front);

  [[nodiscard]] bool Has(const std::string& id) const { return taken_.count(id) > 0; }

  /// The greatest number at the end of an id, 0 for none.
  [[nodiscard]] std::int64_t LastNumber() const;

 private:
  std::int64_t next_;
  std::set<std::string> taken_;
};

/// The number at the end of an id: 1001 of D1001. 0 for none, and for one that is longer than ids grow.
std::int64_t NumberOfId(std::string_view id);

}  // namespace vantry_sim
