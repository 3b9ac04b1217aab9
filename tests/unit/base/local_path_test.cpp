#include "base/local_path.h"

#include <gtest/gtest.h>

namespace {

using lxservices::cms_interface::BareName;

TEST(LocalPath, EndsInItsBareName) {
  EXPECT_EQ(BareName("/home/me/a.en.xlf"), "a.en.xlf");
  EXPECT_EQ(BareName("a b"), "a b");
  EXPECT_EQ(BareName("./a"), "a");
  EXPECT_EQ(BareName("//a"), "a");
  // A backslash is a character of a name like any other.
  EXPECT_EQ(BareName("/home/a\\b"), "a\\b");
}

TEST(LocalPath, OfADirectoryHasNone) {
  EXPECT_EQ(BareName("/home/me/"), "");
  EXPECT_EQ(BareName("/"), "");
  EXPECT_EQ(BareName(""), "");
}

}  // namespace
