#include "hosts/cli/finding/name_pattern.h"

#include <algorithm>
#include <cstddef>

#include "hosts/cli/texts/printable.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] std::size_t LengthOfCharacter(std::string_view text) {
  return std::max<std::size_t>(1, FirstCharacterOf(text).length);
}

}  // namespace

bool IsOfPattern(std::string_view text, std::string_view pattern) {
  std::size_t at = 0;
  std::size_t in = 0;
  // Where the last "*" is, and the first byte that it does not stand for; what follows it is tried there.
  std::size_t star = std::string_view::npos;
  std::size_t behindStar = 0;
  while (at < text.size()) {
    if (in < pattern.size() && pattern[in] == '*') {
      star = in++;
      behindStar = at;
    } else if (in < pattern.size() && pattern[in] == '?') {
      at += LengthOfCharacter(text.substr(at));
      ++in;
    } else if (in < pattern.size() && LowerCase(pattern[in]) == LowerCase(text[at])) {
      ++at;
      ++in;
    } else if (star != std::string_view::npos) {
      behindStar += LengthOfCharacter(text.substr(behindStar));
      at = behindStar;
      in = star + 1;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', in) == std::string_view::npos;
}

}  // namespace vtdirect_cli
