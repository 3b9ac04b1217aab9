#include "hosts/cli/texts/near_word.h"

#include <gtest/gtest.h>

namespace vtdirect_cli {

TEST(NearWord, IsTheOneThatTakesTheFewestChanges) {
  const std::vector<std::string> commands = {"checkout", "checkin", "check", "get", "put", "ls"};
  EXPECT_EQ(NearWord("chekout", commands), "checkout");
  EXPECT_EQ(NearWord("chekcin", commands), "checkin");
  EXPECT_EQ(NearWord("CHECK", commands), "check");
  EXPECT_EQ(NearWord("gte", commands), "get");
  EXPECT_EQ(NearWord("gett", commands), "get");
  EXPECT_EQ(NearWord("sl", commands), "ls");
}

TEST(NearWord, IsNoneThatIsFarAway) {
  EXPECT_EQ(NearWord("delete", {"checkout", "get", "recover"}), "");
  EXPECT_EQ(NearWord("x", {"y", "l"}), "");
  EXPECT_EQ(NearWord("", {"a"}), "");
  EXPECT_EQ(NearWord(std::string(100, 'a'), {std::string(100, 'a')}), "");
  EXPECT_EQ(DidYouMean("zzz", {"get"}), "");
  EXPECT_EQ(DidYouMean("gett", {"get"}), "did you mean get?");
}

}  // namespace vtdirect_cli
