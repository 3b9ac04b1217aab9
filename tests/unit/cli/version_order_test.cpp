#include <gtest/gtest.h>

#include "hosts/cli/finding/version_order.h"

namespace vtdirect_cli {

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
