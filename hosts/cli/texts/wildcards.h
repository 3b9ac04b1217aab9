#pragma once

#include <cstddef>
#include <string_view>

namespace vtdirect_cli {

/// What counts as a character, and which characters are the same.
struct CharacterRules {
  /// The bytes of the first character of a text that is not empty.
  std::size_t (*lengthOfFirst)(std::string_view text);
  bool (*areSame)(std::string_view one, std::string_view other);
};

/// Whether a text is of a pattern's form, as a shell has it for file names: "*" stands for any number of
/// characters, "?" for one, and every other character for itself. Takes at most the product of both lengths in
/// steps.
[[nodiscard]] bool MatchesWildcards(std::string_view pattern, std::string_view text,
                                    const CharacterRules& rules);

}  // namespace vtdirect_cli
