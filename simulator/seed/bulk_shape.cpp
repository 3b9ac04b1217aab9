#include "simulator/seed/bulk_shape.h"

#include <charconv>

namespace vantry_sim {
namespace {

constexpr std::uint64_t mostVersions = 5'000'000;

std::optional<std::uint64_t> Number(std::string_view text, std::uint64_t least, std::uint64_t most) {
  std::uint64_t value = 0;
  const auto [end, code] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (text.empty() || code != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value < least || value > most ? std::nullopt : std::optional(value);
}

std::optional<BulkRange> Range(std::string_view text, std::uint64_t least, std::uint64_t most) {
  const auto dash = text.find('-');
  const auto from = Number(text.substr(0, dash), least, most);
  const auto to = dash == std::string_view::npos ? from : Number(text.substr(dash + 1), least, most);
  if (!from || !to || *to < *from) return std::nullopt;
  return BulkRange{*from, *to};
}

bool Take(const std::optional<std::uint64_t>& number, std::uint32_t& out) {
  if (number) out = static_cast<std::uint32_t>(*number);
  return number.has_value();
}

bool ReadPart(std::string_view part, BulkShape& shape) {
  const auto equals = part.find('=');
  if (equals == std::string_view::npos) return false;
  const std::string_view key = part.substr(0, equals);
  const std::string_view value = part.substr(equals + 1);
  if (key == "folders") return Take(Number(value, 1, 20'000), shape.folders);
  if (key == "depth") return Take(Number(value, 1, 100), shape.depth);
  if (key == "versions") return Take(Number(value, 1, 1000), shape.versions);
  if (key == "name") return (shape.name = Range(value, 1, 240)).has_value();
  if (key == "size") return (shape.size = Range(value, 0, 1'000'000'000)).has_value();
  return false;
}

}  // namespace

std::optional<BulkShape> ReadBulkShape(std::string_view text) {
  BulkShape shape;
  const auto comma = text.find(',');
  if (!Take(Number(text.substr(0, comma), 1, mostVersions), shape.documents)) return std::nullopt;
  text.remove_prefix(comma == std::string_view::npos ? text.size() : comma);
  while (!text.empty()) {
    text.remove_prefix(1);
    const auto end = text.find(',');
    if (!ReadPart(text.substr(0, end), shape)) return std::nullopt;
    text.remove_prefix(end == std::string_view::npos ? text.size() : end);
  }
  if (std::uint64_t{shape.documents} * shape.versions > mostVersions) return std::nullopt;
  return shape;
}

}  // namespace vantry_sim
