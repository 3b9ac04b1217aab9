#include "hosts/cli/many/name_pattern.h"

#include <cctype>
#include <cstddef>
#include <cstdint>

#include "hosts/cli/texts/wildcards.h"

namespace vtdirect_cli {
namespace {

// The bytes of the first character. An escape is one character, and so is a byte that belongs to none.
[[nodiscard]] std::size_t LengthOfFirst(std::string_view text) {
  const bool isEscape = text.size() > 2 && text[0] == '%' &&
                        isxdigit(static_cast<std::uint8_t>(text[1])) != 0 &&
                        isxdigit(static_cast<std::uint8_t>(text[2])) != 0;
  if (isEscape) return 3;
  std::size_t length = 1;
  if (static_cast<std::uint8_t>(text[0]) < 0xC0U) return length;
  while (length < text.size() && (static_cast<std::uint8_t>(text[length]) & 0xC0U) == 0x80U) ++length;
  return length;
}

[[nodiscard]] bool AreSame(std::string_view one, std::string_view other) {
  if (one.size() != other.size()) return false;
  if (one.size() != 3 || one[0] != '%') return one == other;
  for (std::size_t at = 1; at < 3; ++at) {
    if (tolower(static_cast<std::uint8_t>(one[at])) != tolower(static_cast<std::uint8_t>(other[at])))
      return false;
  }
  return other[0] == '%';
}

}  // namespace

bool HasWildcard(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

bool MatchesPattern(std::string_view pattern, std::string_view name) {
  return MatchesWildcards(pattern, name, {LengthOfFirst, AreSame});
}

}  // namespace vtdirect_cli
