#include "hosts/cli/texts/name_pattern.h"

#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace vtdirect_cli {

struct PatternExample {
  const char* pattern;
  const char* name;
  bool matches;
};

// The name of its test.
void PrintTo(const PatternExample& example, std::ostream* out) {
  *out << '"' << example.pattern << "\" and \"" << example.name << '"';
}

class NamePattern : public testing::TestWithParam<PatternExample> {};

INSTANTIATE_TEST_SUITE_P(
    Examples, NamePattern,
    testing::Values(PatternExample{"fork.lxz", "fork.lxz", true},
                    PatternExample{"fork.lxz", "fork.lx", false},
                    PatternExample{"fork.lx", "fork.lxz", false}, PatternExample{"*", "fork.lxz", true},
                    PatternExample{"*", "", true}, PatternExample{"?", "", false},
                    PatternExample{"", "", true}, PatternExample{"", "a", false},
                    PatternExample{"*.lxz", "fork.lxz", true}, PatternExample{"*.lxz", "fork.lxz.bak", false},
                    PatternExample{"f*k.*", "fork.lxz", true}, PatternExample{"*ab*ab", "abxabab", true},
                    PatternExample{"*ab*ab", "abxaba", false}, PatternExample{"f?rk.lxz", "fork.lxz", true},
                    PatternExample{"f?rk.lxz", "frk.lxz", false},
                    // One character of a reader's, however many bytes it has.
                    PatternExample{"Gr??en",
                                   "Gr\xC3\xB6\xC3\x9F"
                                   "en",
                                   true},
                    PatternExample{"?", "\xC3\xB6", true}, PatternExample{"??", "\xC3\xB6", false},
                    PatternExample{"?", "\xFF", true},
                    // An escape is the character that it stands for.
                    PatternExample{"a?b", "a%2fb", true}, PatternExample{"a%2Fb", "a%2fb", true},
                    PatternExample{"a%2Fb", "a%2ab", false}, PatternExample{"a%2b", "a%2B", true},
                    PatternExample{"A*", "abc", false}, PatternExample{"[ab]*", "abc", false},
                    PatternExample{".*", ".profile", true}, PatternExample{"*", ".profile", true}));

TEST_P(NamePattern, MatchesWhatItDescribes) {
  const PatternExample& example = GetParam();
  EXPECT_EQ(MatchesPattern(example.pattern, example.name), example.matches)
      << example.pattern << " and " << example.name;
}

// With one step for each "*" and every length it would take longer than the world has been there.
TEST(NamePatterns, TakeNoLongTimeForAHostileName) {
  std::string pattern;
  for (int count = 0; count < 30; ++count) pattern += "*a";
  EXPECT_FALSE(MatchesPattern(pattern + "b", std::string(2000, 'a')));
}

TEST(NamePatterns, AreKnownByTheirWildcards) {
  EXPECT_TRUE(HasWildcard("a*"));
  EXPECT_TRUE(HasWildcard("?b"));
  EXPECT_FALSE(HasWildcard("[ab]%2a"));
}

TEST(NamePatterns, OfPeopleHaveNoRegardToCapitals) {
  EXPECT_TRUE(MatchesIgnoringCase("*.lxz", "fork.lxz"));
  EXPECT_TRUE(MatchesIgnoringCase("f?rk.*", "Fork.LXZ"));
  EXPECT_TRUE(MatchesIgnoringCase("a*b", "a*b"));
  EXPECT_TRUE(MatchesIgnoringCase("*", ""));
  EXPECT_TRUE(MatchesIgnoringCase("a*b*c", "aXbXc"));
  EXPECT_TRUE(MatchesIgnoringCase("*ab", "aab"));
  EXPECT_FALSE(MatchesIgnoringCase("fork", "fork.lxz"));
  EXPECT_FALSE(MatchesIgnoringCase("fork?", "fork"));
  EXPECT_FALSE(MatchesIgnoringCase("?", ""));
  EXPECT_FALSE(MatchesIgnoringCase("", "x"));
}

TEST(NamePatterns, OfPeopleTakeACharacterOfSeveralBytesForOne) {
  EXPECT_TRUE(MatchesIgnoringCase("gr?n", "gr\xC3\xBCn"));
  EXPECT_FALSE(MatchesIgnoringCase("gr??n", "gr\xC3\xBCn"));
}

// A pattern of many stars must not take for ever.
TEST(NamePatterns, OfPeopleTakeLittleTimeForManyStars) {
  std::string pattern;
  for (int i = 0; i < 200; ++i) pattern += "*a";
  EXPECT_FALSE(MatchesIgnoringCase(pattern, std::string(5000, 'a') + "b"));
}

}  // namespace vtdirect_cli
