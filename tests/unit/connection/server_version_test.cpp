#include "connection/server_version.h"

#include <gtest/gtest.h>

namespace {

using namespace lxservices::cms_interface::vantry;

TEST(ServerVersion, TheMinimaAreTheReleasesThatTheLibraryWorksWith) {
  EXPECT_EQ(MinimumServerVersion, (ServerVersion{11, 0, 30, 0}));
  EXPECT_EQ(MinimumTranslationVersion, (ServerVersion{11, 1, 10, 1}));
}

TEST(ServerVersion, TheMinimaHaveTheirTextForms) {
  EXPECT_EQ(FormatServerVersion(MinimumServerVersion), "11.0 M030");
  EXPECT_EQ(FormatServerVersion(MinimumTranslationVersion), "11.1 M010 CPS 1");
}

TEST(ServerVersion, ServicePackZeroReadsF000) {
  EXPECT_EQ(FormatServerVersion({11, 2, 0, 0}), "11.2 F000");
  EXPECT_EQ(FormatServerVersion({0, 0, 0, 0}), "0.0 F000");
  EXPECT_EQ(FormatServerVersion({11, 2, 0, 4}), "11.2 F000 CPS 4");
}

TEST(ServerVersion, ServicePackHasAtLeastThreeDigits) {
  EXPECT_EQ(FormatServerVersion({12, 0, 5, 3}), "12.0 M005 CPS 3");
  EXPECT_EQ(FormatServerVersion({12, 0, 99, 0}), "12.0 M099");
  EXPECT_EQ(FormatServerVersion({12, 0, 100, 0}), "12.0 M100");
  EXPECT_EQ(FormatServerVersion({12, 0, 1000, 0}), "12.0 M1000");
}

TEST(ServerVersion, NumbersAreWrittenUnsigned) {
  EXPECT_EQ(FormatServerVersion({4294967295U, 0, 0, 4294967295U}), "4294967295.0 F000 CPS 4294967295");
}

TEST(ServerVersion, TheFirstDifferentPlaceDecides) {
  EXPECT_LT((ServerVersion{10, 9, 9, 9}), (ServerVersion{11, 0, 0, 0}));
  EXPECT_LT((ServerVersion{11, 0, 99, 9}), (ServerVersion{11, 1, 0, 0}));
  EXPECT_LT((ServerVersion{11, 0, 29, 9}), (ServerVersion{11, 0, 30, 0}));
  EXPECT_LT((ServerVersion{11, 1, 10, 0}), (ServerVersion{11, 1, 10, 1}));
  EXPECT_FALSE((ServerVersion{11, 0, 30, 0}) < (ServerVersion{11, 0, 30, 0}));
}

TEST(ServerVersion, TheComparisonIsUnsigned) {
  EXPECT_LT((ServerVersion{11, 0, 30, 0}), (ServerVersion{4294967295U, 0, 0, 0}));
}

}  // namespace
