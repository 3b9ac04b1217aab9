#include "hosts/cli/files/escaped_name.h"

#include <charconv>

namespace vtdirect_cli {
namespace {

[[nodiscard]] bool IsForbidden(char character) {
  return std::string_view("|\\/<>:\"?*%").find(character) != std::string_view::npos;
}

// The forbidden character that "%hh" at this place stands for; 0 for anything else.
[[nodiscard]] char EscapedAt(std::string_view name, std::size_t position) {
  if (name[position] != '%' || name.size() - position < 3) return 0;
  unsigned value = 0;
  const char* const digits = name.data() + position + 1;
  const auto [end, error] = std::from_chars(digits, digits + 2, value, 16);
  const char character = static_cast<char>(value);
  return error == std::errc() && end == digits + 2 && IsForbidden(character) ? character : '\0';
}

}  // namespace

std::string EscapedName(std::string_view name) {
  constexpr char digits[] = "0123456789abcdef";
  std::string escaped;
  for (const char character : name) {
    if (!IsForbidden(character)) {
      escaped += character;
      continue;
    }
    const auto byte = static_cast<unsigned char>(character);
    escaped += {'%', digits[byte >> 4U], digits[byte & 15U]};
  }
  return escaped;
}

std::string NormalizedName(std::string_view name) {
  std::string plain;
  for (std::size_t position = 0; position < name.size();) {
    const char escaped = EscapedAt(name, position);
    plain += escaped != 0 ? escaped : name[position];
    position += escaped != 0 ? 3 : 1;
  }
  return EscapedName(plain);
}

}  // namespace vtdirect_cli
