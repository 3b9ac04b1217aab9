#include "documents/workspaces/workspace_name.h"

#include <gtest/gtest.h>

namespace {

using lxservices::cms_interface::vantry::MakeWorkspaceName;

struct TimeAndDigits {
  std::uint32_t seconds;
  const char* digits;
};

// Worked out from the generator's rule by another program.
TEST(WorkspaceName, EndsInEightDigitsDrawnFromTheTime) {
  constexpr TimeAndDigits table[] = {
      {1, "2f821e22"},          {59, "28f6179c"},         {99999999, "7c7e0be0"},  {946684800, "53804b81"},
      {1700000001, "2f821e22"}, {2147483648, "b580a501"}, {4294967295, "1c7e0ce0"}};
  for (const auto& [seconds, digits] : table) {
    EXPECT_EQ(MakeWorkspaceName("FenloomTMP", seconds), std::string("FenloomTMP") + digits) << seconds;
  }
}

// A multiple of 100000000 seconds seeds the generator with zero.
TEST(WorkspaceName, RepeatsEveryHundredMillionSeconds) {
  for (const std::uint32_t seconds : {0u, 100000000u, 1700000000u}) {
    EXPECT_EQ(MakeWorkspaceName("P", seconds), "Pc6801501");
  }
}

TEST(WorkspaceName, IsTheSameWithinOneSecond) {
  EXPECT_EQ(MakeWorkspaceName("A", 1753000000), MakeWorkspaceName("A", 1753000000));
  EXPECT_NE(MakeWorkspaceName("A", 1753000000), MakeWorkspaceName("A", 1753000001));
}

TEST(WorkspaceName, BeginsWithWhateverPrefixIsGiven) {
  EXPECT_EQ(MakeWorkspaceName("", 1), "2f821e22");
  EXPECT_EQ(MakeWorkspaceName("MY TMP/", 1), "MY TMP/2f821e22");
}

}  // namespace
