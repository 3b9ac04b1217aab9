#include "hosts/cli/finding/name_pattern.h"

#include <algorithm>
#include <cstddef>

#include "hosts/cli/texts/printable.h"
#include "hosts/cli/texts/wildcards.h"

namespace vtdirect_cli {
namespace {

[[nodiscard]] char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

[[nodiscard]] std::size_t LengthOfCharacter(std::string_view text) {
  return std::max<std::size_t>(1, FirstCharacterOf(text).length);
}

[[nodiscard]] bool AreSame(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return LowerCase(a) == LowerCase(b); });
}

}  // namespace

bool IsOfPattern(std::string_view text, std::string_view pattern) {
  return MatchesWildcards(pattern, text, {LengthOfCharacter, AreSame});
}

}  // namespace vtdirect_cli
