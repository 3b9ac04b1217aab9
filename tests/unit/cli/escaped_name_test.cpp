#include "hosts/cli/files/escaped_name.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(EscapedName, HasTheTenCharactersAsTwoSmallDigits) {
  EXPECT_EQ(EscapedName("|\\/<>:\"?*%"), "%7c%5c%2f%3c%3e%3a%22%3f%2a%25");
  EXPECT_EQ(EscapedName("50% of a|b"), "50%25 of a%7cb");
}

TEST(EscapedName, LeavesAllElseAlone) {
  EXPECT_EQ(EscapedName(""), "");
  EXPECT_EQ(EscapedName("Größe 漢字 'x'&=#;.lxz"), "Größe 漢字 'x'&=#;.lxz");
  EXPECT_EQ(EscapedName(std::string("a\0b\n", 4)), std::string("a\0b\n", 4));
}

TEST(NormalizedName, IsOneForAllWaysToWriteAName) {
  for (const char* name : {"a|b", "a%7cb", "a%7Cb"}) EXPECT_EQ(NormalizedName(name), "a%7cb") << name;
  for (const char* name : {"100%", "100%25"}) EXPECT_EQ(NormalizedName(name), "100%25") << name;
}

TEST(NormalizedName, TakesOnlyTheTenCharactersForEscaped) {
  EXPECT_EQ(NormalizedName("a%20b"), "a%2520b");
  EXPECT_EQ(NormalizedName("%7"), "%257");
  EXPECT_EQ(NormalizedName("%%7c"), "%25%7c");
  EXPECT_EQ(NormalizedName("%-7"), "%25-7");
}

}  // namespace vtdirect_cli
