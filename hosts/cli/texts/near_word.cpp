#include "hosts/cli/texts/near_word.h"

#include <algorithm>
#include <cstddef>

namespace vtdirect_cli {
namespace {

// What nobody types by hand is near nothing, and would take its time.
constexpr std::size_t longestWord = 64;

[[nodiscard]] char LowerCase(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// Capital letters count as small ones.
[[nodiscard]] std::size_t Changes(std::string_view one, std::string_view other) {
  std::vector<std::size_t> twoBack(other.size() + 1);
  std::vector<std::size_t> back(other.size() + 1);
  std::vector<std::size_t> row(other.size() + 1);
  for (std::size_t j = 0; j <= other.size(); ++j) back[j] = j;
  for (std::size_t i = 1; i <= one.size(); ++i) {
    row[0] = i;
    for (std::size_t j = 1; j <= other.size(); ++j) {
      const char a = LowerCase(one[i - 1]);
      const char b = LowerCase(other[j - 1]);
      row[j] = std::min({back[j] + 1, row[j - 1] + 1, back[j - 1] + (a == b ? 0U : 1U)});
      const bool areExchanged = i > 1 && j > 1 && a == LowerCase(other[j - 2]) && LowerCase(one[i - 2]) == b;
      if (areExchanged) row[j] = std::min(row[j], twoBack[j - 2] + 1);
    }
    twoBack.swap(back);
    back.swap(row);
  }
  return back[other.size()];
}

[[nodiscard]] std::size_t MostChanges(std::size_t letters) {
  if (letters < 5) return 1;
  return letters < 9 ? 2 : 3;
}

}  // namespace

std::string NearWord(std::string_view word, const std::vector<std::string>& candidates) {
  if (word.empty() || word.size() > longestWord) return {};
  std::string nearest;
  std::size_t fewest = MostChanges(word.size()) + 1;
  for (const std::string& candidate : candidates) {
    if (candidate.size() > longestWord) continue;
    const std::size_t changes = Changes(word, candidate);
    // As many changes as letters make any short word of any other.
    if (changes >= fewest || changes >= candidate.size()) continue;
    fewest = changes;
    nearest = candidate;
  }
  return nearest;
}

std::string DidYouMean(std::string_view word, const std::vector<std::string>& candidates) {
  const std::string near = NearWord(word, candidates);
  return near.empty() ? near : "did you mean " + near + "?";
}

}  // namespace vtdirect_cli
