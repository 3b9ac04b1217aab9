#pragma once

#include <string_view>

namespace vtdirect_cli {

/// Patterns of names, as a shell has them: "*" stands for any number of characters, "?" for one, and every other
/// character for itself. Each takes at most the product of both lengths in steps.

/// Whether a text has one of the characters that stand for others: "*" or "?". No name in a path holds one, since
/// both are escaped there.
[[nodiscard]] bool HasWildcard(std::string_view text);

/// Whether the name of an entry, as it is in a path, is what a pattern describes. An escape is one character, in the
/// pattern as in the name, with capital letters or small ones.
[[nodiscard]] bool MatchesPattern(std::string_view pattern, std::string_view name);

/// Whether a text that a person gave is what a pattern describes, with small or capital letters of ASCII alike.
[[nodiscard]] bool MatchesIgnoringCase(std::string_view pattern, std::string_view text);

}  // namespace vtdirect_cli
