#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vtdirect_cli {

/// The word that was probably meant: the one of the candidates that takes the fewest changes to get to, where a change
/// adds, drops or replaces a letter or exchanges two neighbours. Empty if none is near: one change is near for short
/// words, two for words from five letters on, and three for those from nine on. Of several the first.
[[nodiscard]] std::string NearWord(std::string_view word, const std::vector<std::string>& candidates);

/// "did you mean WORD?"; empty if no candidate is near.
[[nodiscard]] std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace vtdirect_cli
