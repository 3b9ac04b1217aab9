#include "simulator/wire/forbidden_characters.h"

#include <gtest/gtest.h>

namespace vantry_sim {
namespace {

TEST(ForbiddenCharacters, AreEscapedInLowerCaseAndNothingElseIs) {
  EXPECT_EQ(EscapeForbidden("|\\/<>:\"?*%"), "%7c%5c%2f%3c%3e%3a%22%3f%2a%25");
  EXPECT_EQ(EscapeForbidden("Größe & 'x' 1.lxz"), "Größe & 'x' 1.lxz");
}

TEST(ForbiddenCharacters, OnlyWhatWasEscapedIsUndone) {
  EXPECT_EQ(UnescapeForbidden("%7c%5c%2f%3c%3e%3a%22%3f%2a%25"), "|\\/<>:\"?*%");
  EXPECT_EQ(UnescapeForbidden("a%3Fb"), "a?b");
  EXPECT_EQ(UnescapeForbidden("100%20%41%"), "100%20%41%");
  EXPECT_EQ(UnescapeForbidden("%2"), "%2");
  EXPECT_EQ(UnescapeForbidden("%253f"), "%3f");
}

}  // namespace
}  // namespace vantry_sim
