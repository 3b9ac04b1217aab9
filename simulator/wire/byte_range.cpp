#include "simulator/wire/byte_range.h"

#include <algorithm>
#include <charconv>

namespace vantry_sim {
namespace {

constexpr std::string_view unit = "bytes=";

bool ReadNumber(std::string_view text, std::uint64_t& number) {
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), number);
  return !text.empty() && code == std::errc() && end == text.data() + text.size();
}

/// The last so many bytes.
RangeWish Tail(std::uint64_t wanted, std::uint64_t size) {
  if (wanted == 0 || size == 0) return {RangeWish::Kind::Unsatisfiable, {}};
  const std::uint64_t count = std::min(wanted, size);
  return {RangeWish::Kind::Part, {size - count, count}};
}

}  // namespace

RangeWish ReadRange(std::string_view value, std::uint64_t size) {
  if (!value.starts_with(unit)) return {};
  value.remove_prefix(unit.size());
  const auto dash = value.find('-');
  if (dash == std::string_view::npos) return {};
  const std::string_view from = value.substr(0, dash);
  const std::string_view to = value.substr(dash + 1);
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  if (!to.empty() && !ReadNumber(to, last)) return {};
  if (from.empty()) return to.empty() ? RangeWish{} : Tail(last, size);
  if (!ReadNumber(from, first) || (!to.empty() && last < first)) return {};
  if (first >= size) return {RangeWish::Kind::Unsatisfiable, {}};
  const std::uint64_t end = to.empty() ? size - 1 : std::min(last, size - 1);
  return {RangeWish::Kind::Part, {first, end - first + 1}};
}

}  // namespace vantry_sim
