#include "base/file_name.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>

namespace lxservices::cms_interface {
namespace {

constexpr std::string_view forbiddenCharacters = "|\\/<>:\"?*%";

// A table, since listings ask this of every byte of every name.
constexpr auto forbiddenBytes = [] {
  std::array<bool, 256> table{};
  for (const char character : forbiddenCharacters) table[static_cast<unsigned char>(character)] = true;
  return table;
}();

bool IsForbidden(char character) {
  return forbiddenBytes[static_cast<unsigned char>(character)];
}

// The forbidden character that two hexadecimal digits stand for, if they do.
std::optional<char> DecodeForbidden(std::string_view digits) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (error != std::errc() || end != digits.data() + digits.size()) return std::nullopt;
  const char character = static_cast<char>(value);
  return IsForbidden(character) ? std::optional(character) : std::nullopt;
}

}  // namespace

bool HoldsForbiddenCharacter(std::string_view name) {
  return std::any_of(name.begin(), name.end(), IsForbidden);
}

std::string EscapeFileName(std::string_view name) {
  constexpr char digits[] = "0123456789abcdef";
  std::string escaped;
  escaped.reserve(name.size());
  for (const char character : name) {
    if (!IsForbidden(character)) {
      escaped += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    escaped += '%';
    escaped += digits[byte >> 4];
    escaped += digits[byte & 15];
  }
  return escaped;
}

std::string UnescapeFileName(std::string_view name) {
  std::string plain;
  plain.reserve(name.size());
  std::size_t position = 0;
  while (position < name.size()) {
    const bool isEscape = name[position] == '%' && name.size() - position >= 3;
    const auto decoded = isEscape ? DecodeForbidden(name.substr(position + 1, 2)) : std::nullopt;
    plain += decoded.value_or(name[position]);
    position += decoded ? 3 : 1;
  }
  return plain;
}

}  // namespace lxservices::cms_interface
