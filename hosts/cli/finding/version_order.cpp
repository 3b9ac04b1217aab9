#include "hosts/cli/finding/version_order.h"

#include <algorithm>
#include <cstddef>

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool IsNumber(std::string_view part) {
  return !part.empty() && std::all_of(part.begin(), part.end(), [](char c) { return c >= '0' && c <= '9'; });
}

[[nodiscard]] std::string_view WithoutZeros(std::string_view number) {
  return number.substr(std::min(number.find_first_not_of('0'), number.size()));
}

// Below zero, zero or above it. Numbers may be longer than any type.
[[nodiscard]] int Compare(std::string_view one, std::string_view other) {
  if (IsNumber(one) && IsNumber(other)) {
    one = WithoutZeros(one);
    other = WithoutZeros(other);
  }
  if (one.size() != other.size()) return one.size() < other.size() ? -1 : 1;
  return one.compare(other);
}

[[nodiscard]] std::string_view TakePart(std::string_view& version) {
  const std::size_t end = std::min(version.find('.'), version.size());
  const std::string_view part = version.substr(0, end);
  version.remove_prefix(std::min(end + 1, version.size()));
  return part;
}

}  // namespace

bool ComesAfter(std::string_view one, std::string_view other) {
  while (!one.empty() && !other.empty()) {
    const int order = Compare(TakePart(one), TakePart(other));
    if (order != 0) return order > 0;
  }
  return !one.empty();
}

}  // namespace vtdirect_cli
