#include "hosts/cli/files/name_for_server.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(NameForServer, UndoesWhatWasEscapedForTheDisk) {
  EXPECT_EQ(NameForServer("fork.lxz"), "fork.lxz");
  // In a path these stay escaped.
  EXPECT_EQ(NameForServer("odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz"),
            "odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz");
  EXPECT_EQ(NameForServer("%2edotted"), ".dotted");
  EXPECT_EQ(NameForServer("two%0alines"), "two\nlines");
}

TEST(NameForServer, TakesAnyOtherNameForItself) {
  EXPECT_EQ(NameForServer("a:b"), "a%3ab");
  EXPECT_EQ(NameForServer("100% done"), "100%25 done");
  EXPECT_EQ(NameForServer("100%41"), "100%2541");
  EXPECT_EQ(NameForServer("half%2"), "half%252");
  EXPECT_EQ(NameForServer("a%2Fb"), "a%2fb");
}

TEST(NameForServer, IsNeverOneThatLeadsElsewhere) {
  EXPECT_EQ(NameForServer("%2e."), "%252e.");
  EXPECT_EQ(NameForServer("%2e"), "%252e");
  EXPECT_EQ(NameForServer("a%00b"), "a%2500b");
}

}  // namespace vtdirect_cli
