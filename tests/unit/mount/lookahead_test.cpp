#include "hosts/mount/tree/lookahead.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vtdirect_mount {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class LookaheadTest : public testing::Test {
 protected:
  LookaheadTest() {
    for (int number = 0; number < 20; ++number) listing_.Add("d" + std::to_string(number), number == 6);
  }
  std::vector<std::string> Note(const std::string& name) {
    return lookahead_.Note("//plm/F/", listing_, *listing_.Find(name));
  }

  FolderListing listing_;
  Lookahead lookahead_{3};
};

TEST_F(LookaheadTest, BeginsAtTheThirdEntryInOrderAndPassesFoldersOver) {
  EXPECT_THAT(Note("d1"), IsEmpty());
  EXPECT_THAT(Note("d2"), IsEmpty());
  // Three entries ahead: d4, d5 and the folder d6.
  EXPECT_THAT(Note("d3"), ElementsAre("d4", "d5"));
  // Up to d7; what was told is not told again.
  EXPECT_THAT(Note("d4"), ElementsAre("d7"));
}

TEST_F(LookaheadTest, KnowsSeveralWhoWalkAtATime) {
  for (const char* name : {"d1", "d10", "d2", "d11"}) EXPECT_THAT(Note(name), IsEmpty());
  EXPECT_THAT(Note("d3"), ElementsAre("d4", "d5"));
  EXPECT_THAT(Note("d12"), ElementsAre("d13", "d14", "d15"));
  EXPECT_THAT(Note("d4"), ElementsAre("d7"));
}

TEST_F(LookaheadTest, EndsWithTheListing) {
  static_cast<void>(Note("d16"));
  static_cast<void>(Note("d17"));
  EXPECT_THAT(Note("d18"), ElementsAre("d19"));
  EXPECT_THAT(Note("d19"), IsEmpty());
}

TEST_F(LookaheadTest, LeavesAloneWhoAsksHereAndThere) {
  for (const char* name : {"d9", "d3", "d19", "d1", "d15"}) EXPECT_THAT(Note(name), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_mount
