#pragma once

#include <string_view>

namespace vtdirect_cli {

/// Whether a text has one of the characters that stand for others: "*" or "?". No name in a path holds one, since
/// both are escaped there.
[[nodiscard]] bool HasWildcard(std::string_view text);

/// Whether the name of an entry, as it is in a path, is what a pattern describes: "*" stands for any number of
/// characters, "?" for one, and every other character for itself. A character may be escaped in the pattern as
/// it is in a path, with capital letters or small ones.
[[nodiscard]] bool MatchesPattern(std::string_view pattern, std::string_view name);

}  // namespace vtdirect_cli
