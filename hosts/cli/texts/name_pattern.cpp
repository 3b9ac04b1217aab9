#include "hosts/cli/texts/name_pattern.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

// What a character is, in the pattern and in the text.
struct Characters {
  std::size_t (*lengthOfFirst)(std::string_view text);
  bool (*areSame)(std::string_view one, std::string_view other);
};

[[nodiscard]] bool AreSameBytes(std::string_view one, std::string_view other) {
  return one == other;
}

[[nodiscard]] bool AreSameLetters(std::string_view one, std::string_view other) {
  const auto lowerCase = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; };
  return std::ranges::equal(one, other, {}, lowerCase, lowerCase);
}

[[nodiscard]] bool BeginsWithEscape(std::string_view text) {
  return text.size() > 2 && text[0] == '%' && isxdigit(static_cast<std::uint8_t>(text[1])) != 0 &&
         isxdigit(static_cast<std::uint8_t>(text[2])) != 0;
}

[[nodiscard]] std::size_t LengthOfFirst(std::string_view text) {
  return text.empty() ? 0 : FirstCharacterOf(text).length;
}

[[nodiscard]] std::size_t LengthOfFirstInPath(std::string_view text) {
  return BeginsWithEscape(text) ? 3 : LengthOfFirst(text);
}

[[nodiscard]] bool AreSameInPath(std::string_view one, std::string_view other) {
  return BeginsWithEscape(one) ? AreSameLetters(one, other) : AreSameBytes(one, other);
}

[[nodiscard]] bool Matches(std::string_view pattern, std::string_view text, const Characters& characters) {
  // Where to go on when what follows the last "*" does not fit: it takes one character more then. An earlier
  // "*" need never take more, since the last one can take all that it would.
  bool hasStar = false;
  std::string_view patternAfterStar;
  std::string_view textAfterStar;
  while (!text.empty()) {
    const std::string_view wanted = pattern.substr(0, characters.lengthOfFirst(pattern));
    const std::string_view found = text.substr(0, characters.lengthOfFirst(text));
    if (wanted == "*") {
      hasStar = true;
      pattern.remove_prefix(1);
      patternAfterStar = pattern;
      textAfterStar = text;
    } else if (!wanted.empty() && (wanted == "?" || characters.areSame(wanted, found))) {
      pattern.remove_prefix(wanted.size());
      text.remove_prefix(found.size());
    } else if (hasStar) {
      textAfterStar.remove_prefix(characters.lengthOfFirst(textAfterStar));
      pattern = patternAfterStar;
      text = textAfterStar;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

}  // namespace

bool HasWildcard(std::string_view text) {
  return text.find_first_of("*?") != std::string_view::npos;
}

bool MatchesPattern(std::string_view pattern, std::string_view name) {
  return Matches(pattern, name, {LengthOfFirstInPath, AreSameInPath});
}

bool MatchesIgnoringCase(std::string_view pattern, std::string_view text) {
  return Matches(pattern, text, {LengthOfFirst, AreSameLetters});
}

}  // namespace vtdirect_cli
