#include "platform_default/json_exponents.h"

#include <gtest/gtest.h>

namespace {

using vtdirect::platform::ShortenJsonExponents;

TEST(JsonExponents, KeepNineDigitsThatCount) {
  EXPECT_EQ(ShortenJsonExponents("1e-1234567890"), "1e-123456789");
  EXPECT_EQ(ShortenJsonExponents("[1.5E+99999999999,2]"), "[1.5E+999999999,2]");
  EXPECT_EQ(ShortenJsonExponents("[1e99999999999,2e99999999999]"), "[1e999999999,2e999999999]");
  EXPECT_EQ(ShortenJsonExponents("1e000000000000000000005"), "1e000000000000000000005");
  EXPECT_EQ(ShortenJsonExponents("1e00001234567890"), "1e0000123456789");
}

TEST(JsonExponents, LeaveEverythingElseAlone) {
  for (const char* text :
       {"", "e", "1e", "1e-", "123456789012345", "1e-123456789", R"("1e-1234567890")", R"({"e1234567890":1})",
        R"("\"e1234567890")", R"("e1234567890)", R"("\)", "true", "[1e5 1234567890]"}) {
    EXPECT_EQ(ShortenJsonExponents(text), text);
  }
}

TEST(JsonExponents, AreFoundAfterATextThatEndsInABackslash) {
  EXPECT_EQ(ShortenJsonExponents(R"(["\\",1e1234567890])"), R"(["\\",1e123456789])");
}

}  // namespace
