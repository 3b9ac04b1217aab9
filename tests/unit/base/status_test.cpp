#include "base/status.h"

#include <gtest/gtest.h>

namespace {

using namespace lxservices::cms_interface;

TEST(Status, HasTheNumbersThatItIsTracedAndCountedUnder) {
  EXPECT_EQ(Ok, 0);
  EXPECT_EQ(NotFound, 1);
  EXPECT_EQ(Refused, 2);
  EXPECT_EQ(ServerError, 3);
  EXPECT_EQ(ConnectionFailed, 4);
  EXPECT_EQ(Unauthorized, 5);
  EXPECT_EQ(Unsupported, 6);
  EXPECT_EQ(TooLarge, 7);
}

}  // namespace
