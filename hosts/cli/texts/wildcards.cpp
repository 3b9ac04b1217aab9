#include "hosts/cli/texts/wildcards.h"

namespace vtdirect_cli {

bool MatchesWildcards(std::string_view pattern, std::string_view text, const CharacterRules& rules) {
  // Where to go on when what follows the last "*" does not fit: it takes one character more then. An earlier
  // "*" need never take more, since the last one can take all that it would.
  bool hasStar = false;
  std::string_view patternAfterStar;
  std::string_view textAfterStar;
  while (!text.empty()) {
    const std::string_view wanted = pattern.substr(0, pattern.empty() ? 0 : rules.lengthOfFirst(pattern));
    const std::string_view found = text.substr(0, rules.lengthOfFirst(text));
    if (wanted == "*") {
      hasStar = true;
      pattern.remove_prefix(1);
      patternAfterStar = pattern;
      textAfterStar = text;
    } else if (!wanted.empty() && (wanted == "?" || rules.areSame(wanted, found))) {
      pattern.remove_prefix(wanted.size());
      text.remove_prefix(found.size());
    } else if (hasStar) {
      textAfterStar.remove_prefix(rules.lengthOfFirst(textAfterStar));
      pattern = patternAfterStar;
      text = textAfterStar;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*') == std::string_view::npos;
}

}  // namespace vtdirect_cli
