#include <gtest/gtest.h>

#include "hosts/cli/finding/name_pattern.h"
#include "hosts/cli/finding/version_order.h"

namespace vtdirect_cli {

TEST(NamePattern, IsThatOfAShellWithoutRegardToCapitals) {
  EXPECT_TRUE(IsOfPattern("fork.lxz", "*.lxz"));
  EXPECT_TRUE(IsOfPattern("Fork.LXZ", "f?rk.*"));
  EXPECT_TRUE(IsOfPattern("a*b", "a*b"));
  EXPECT_TRUE(IsOfPattern("", "*"));
  EXPECT_TRUE(IsOfPattern("aXbXc", "a*b*c"));
  EXPECT_TRUE(IsOfPattern("aab", "*ab"));
  EXPECT_FALSE(IsOfPattern("fork.lxz", "fork"));
  EXPECT_FALSE(IsOfPattern("fork", "fork?"));
  EXPECT_FALSE(IsOfPattern("", "?"));
  EXPECT_FALSE(IsOfPattern("x", ""));
}

TEST(NamePattern, TakesACharacterOfSeveralBytesForOne) {
  EXPECT_TRUE(IsOfPattern("gr\xC3\xBCn", "gr?n"));
  EXPECT_FALSE(IsOfPattern("gr\xC3\xBCn", "gr??n"));
}

// A pattern of many stars must not take for ever.
TEST(NamePattern, TakesLittleTimeForManyStars) {
  std::string pattern;
  for (int i = 0; i < 200; ++i) pattern += "*a";
  EXPECT_FALSE(IsOfPattern(std::string(5000, 'a') + "b", pattern));
}

TEST(VersionOrder, ComparesPartByPart) {
  EXPECT_TRUE(ComesAfter("B.3", "B.2"));
  EXPECT_TRUE(ComesAfter("B.10", "B.9"));
  EXPECT_TRUE(ComesAfter("C.1", "B.9"));
  EXPECT_TRUE(ComesAfter("AA.1", "Z.4"));
  EXPECT_TRUE(ComesAfter("B.1.2", "B.1"));
  EXPECT_TRUE(ComesAfter("A.99999999999999999999999", "A.99999999999999999999998"));
  EXPECT_FALSE(ComesAfter("B.2", "B.2"));
  EXPECT_FALSE(ComesAfter("B.02", "B.2"));
  EXPECT_FALSE(ComesAfter("B.1", "B.1.2"));
  EXPECT_FALSE(ComesAfter("", "A.1"));
  EXPECT_TRUE(ComesAfter("A.1", ""));
}

}  // namespace vtdirect_cli
