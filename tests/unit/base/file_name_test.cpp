#include "base/file_name.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using lxservices::cms_interface::EscapeFileName;
using lxservices::cms_interface::HoldsForbiddenCharacter;
using lxservices::cms_interface::UnescapeFileName;

const std::string tenForbidden = "|\\/<>:\"?*%";

TEST(FileName, EscapesEachOfTheTenForbiddenCharactersInLowerCaseHexadecimal) {
  EXPECT_EQ(EscapeFileName(tenForbidden), "%7c%5c%2f%3c%3e%3a%22%3f%2a%25");
}

TEST(FileName, TenForbiddenCharactersGiveThirtyBytesAndComeBack) {
  const std::string escaped = EscapeFileName(tenForbidden);
  EXPECT_EQ(escaped.size(), 30U);
  EXPECT_EQ(UnescapeFileName(escaped), tenForbidden);
}

TEST(FileName, EscapingLeavesEveryOtherByteAsItIs) {
  std::string allowed;
  for (int byte = 0; byte < 256; ++byte) {
    if (tenForbidden.find(static_cast<char>(byte)) == std::string::npos) {
      allowed += static_cast<char>(byte);
    }
  }
  ASSERT_EQ(allowed.size(), 246U);
  EXPECT_EQ(EscapeFileName(allowed), allowed);
  EXPECT_FALSE(HoldsForbiddenCharacter(allowed));
}

TEST(FileName, EscapesExamples) {
  EXPECT_EQ(EscapeFileName("a|b"), "a%7cb");
  EXPECT_EQ(EscapeFileName("50%"), "50%25");
  EXPECT_EQ(EscapeFileName(""), "");
  EXPECT_EQ(EscapeFileName("a%7cb"), "a%257cb");
}

TEST(FileName, TellsEachForbiddenCharacter) {
  for (const char character : tenForbidden) {
    EXPECT_TRUE(HoldsForbiddenCharacter(std::string("x") + character + "y")) << character;
  }
  EXPECT_FALSE(HoldsForbiddenCharacter(""));
}

TEST(FileName, DecodesOnlyWhatEscapingWrites) {
  EXPECT_EQ(UnescapeFileName("a%7cb"), "a|b");
  EXPECT_EQ(UnescapeFileName("a%20b"), "a%20b");
  EXPECT_EQ(UnescapeFileName("100%"), "100%");
  EXPECT_EQ(UnescapeFileName("%%7c"), "%|");
}

TEST(FileName, DecodesDigitsOfEitherCase) {
  EXPECT_EQ(UnescapeFileName("%7C%7c%2F%2f"), "||//");
}

TEST(FileName, KeepsAPercentSignWithFewerThanTwoBytesBehindIt) {
  EXPECT_EQ(UnescapeFileName("%"), "%");
  EXPECT_EQ(UnescapeFileName("%7"), "%7");
  EXPECT_EQ(UnescapeFileName("a%7c%7"), "a|%7");
  EXPECT_EQ(UnescapeFileName("a%7c%"), "a|%");
}

TEST(FileName, DecodesAnEscapeAtTheVeryEnd) {
  EXPECT_EQ(UnescapeFileName("%7c"), "|");
  EXPECT_EQ(UnescapeFileName("x%2a"), "x*");
}

TEST(FileName, GoesOnAtTheNextByteBehindAKeptPercentSign) {
  // The second "%" is one of the two bytes after the first, and yet begins an escape of its own.
  EXPECT_EQ(UnescapeFileName("%2%7c"), "%2|");
  EXPECT_EQ(UnescapeFileName("%zz%3a"), "%zz:");
}

TEST(FileName, DecodesOnceAndNotTwice) {
  // "%25" gives "%", and the "7c" after it does not join it.
  EXPECT_EQ(UnescapeFileName("%257c"), "%7c");
}

TEST(FileName, KeepsWhatIsOnlyHalfANumber) {
  EXPECT_EQ(UnescapeFileName("%7g"), "%7g");
  EXPECT_EQ(UnescapeFileName("%g7"), "%g7");
  EXPECT_EQ(UnescapeFileName("% 7"), "% 7");
  EXPECT_EQ(UnescapeFileName("%-7"), "%-7");
  EXPECT_EQ(UnescapeFileName("%0x7c"), "%0x7c");
}

TEST(FileName, EveryByteComesBackThroughBothWays) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  EXPECT_EQ(UnescapeFileName(EscapeFileName(all)), all);
}

TEST(FileName, TakesLongTexts) {
  const std::string name(1 << 20, '|');
  const std::string escaped = EscapeFileName(name);
  EXPECT_EQ(escaped.size(), 3U << 20);
  EXPECT_TRUE(UnescapeFileName(escaped) == name);
  const std::string percents(1 << 20, '%');
  EXPECT_TRUE(UnescapeFileName(percents) == percents);
}

}  // namespace
