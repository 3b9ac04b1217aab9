#include "simulator/seed/fixture_ids.h"

#include <algorithm>
#include <charconv>

namespace vantry_sim {

void FixtureIds::Claim(const std::string& id, std::uint32_t line, FixtureProblems& problems) {
  if (!taken_.insert(id).second) problems.Add(line, "the id " + id + " comes twice");
}

std::string FixtureIds::Make(std::string_view front) {
  std::string id;
  do {
    id = std::string(front) + std::to_string(next_++);
  } while (!taken_.insert(id).second);
  return id;
}

std::int64_t FixtureIds::LastNumber() const {
  std::int64_t last = 0;
  for (const std::string& id : taken_) last = std::max(last, NumberOfId(id));
  return last;
}

std::int64_t NumberOfId(std::string_view id) {
  constexpr std::size_t longest = 15;
  std::size_t digits = 0;
  while (digits < id.size() && id[id.size() - 1 - digits] >= '0' && id[id.size() - 1 - digits] <= '9')
    ++digits;
  if (digits == 0 || digits > longest) return 0;
  std::int64_t number = 0;
  std::from_chars(id.data() + id.size() - digits, id.data() + id.size(), number);
  return number;
}

}  // namespace vantry_sim
