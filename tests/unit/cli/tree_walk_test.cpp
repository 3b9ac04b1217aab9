#include "hosts/cli/browsing/tree_walk.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace vtdirect_cli {
namespace {

// A server of folders by their paths. An entry that closes with "/" is a folder, and ">" behind a folder's
// entries breaks the listing off.
class TreeWalkTest : public testing::Test {
 protected:
  TreeWalkTest() {
    work_.list = [this](const std::string& path, const EntryFunction& receive) {
      return List(path, receive);
    };
    work_.show = [this](const TreeEntry& entry) {
      shown_.push_back(std::to_string(entry.depth) + " " + entry.path);
      return shown_.size() < most_;
    };
    work_.failed = [this](const std::string& path, ListingEnd) {
      failed_.push_back(path);
      return goOn_;
    };
  }

  ListingEnd List(const std::string& path, const EntryFunction& receive) {
    listed_.push_back(path);
    const auto found = folders_.find(path);
    if (found == folders_.end() && !endless_) return ListingEnd::Unreachable;
    const std::vector<std::string>& entries = found == folders_.end() ? endlessEntries_ : found->second;
    for (const std::string& entry : entries) {
      if (entry == ">") return ListingEnd::Broken;
      if (!Deliver(entry, receive)) return ListingEnd::Stopped;
    }
    return ListingEnd::Whole;
  }

  static bool Deliver(const std::string& entry, const EntryFunction& receive) {
    const bool isFolder = entry.ends_with('/');
    const std::string name = isFolder ? entry.substr(0, entry.size() - 1) : entry;
    return receive({name.c_str(), isFolder, nullptr, nullptr, nullptr});
  }

  [[nodiscard]] TreeEnd Walk() { return WalkTree("//s/", bounds_, work_); }

  std::map<std::string, std::vector<std::string>> folders_;
  bool endless_ = false;
  std::vector<std::string> endlessEntries_;
  std::vector<std::string> shown_;
  std::vector<std::string> listed_;
  std::vector<std::string> failed_;
  std::size_t most_ = 1000;
  bool goOn_ = true;
  TreeBounds bounds_;
  TreeWork work_;
};

}  // namespace

TEST_F(TreeWalkTest, ShowsDocumentsAsTheyComeAndThenFoldersByName) {
  folders_ = {{"//s/", {"b/", "z", "a/", "y"}}, {"//s/a/", {"2", "1"}}, {"//s/b/", {}}};
  const TreeEnd end = Walk();
  EXPECT_THAT(shown_, ElementsAre("1 //s/z", "1 //s/y", "1 //s/a/", "2 //s/a/2", "2 //s/a/1", "1 //s/b/"));
  EXPECT_EQ(end.start, ListingEnd::Whole);
  EXPECT_FALSE(end.stopped);
  EXPECT_FALSE(end.failures);
}

TEST_F(TreeWalkTest, EntersAFolderThatComesTwiceOnce) {
  folders_ = {{"//s/", {"a/", "b/", "a/"}}, {"//s/a/", {}}, {"//s/b/", {}}};
  static_cast<void>(Walk());
  EXPECT_THAT(listed_, ElementsAre("//s/", "//s/a/", "//s/b/"));
}

TEST_F(TreeWalkTest, TellsThatTheStartIsNotThere) {
  EXPECT_EQ(Walk().start, ListingEnd::Unreachable);
  EXPECT_THAT(shown_, IsEmpty());
  EXPECT_THAT(failed_, IsEmpty());
}

TEST_F(TreeWalkTest, GoesOnBehindAFolderThatCannotBeListed) {
  folders_ = {{"//s/", {"a/", "b/", "c/"}}, {"//s/b/", {"1", ">"}}, {"//s/c/", {"2"}}};
  const TreeEnd end = Walk();
  EXPECT_THAT(shown_, ElementsAre("1 //s/a/", "1 //s/b/", "2 //s/b/1", "1 //s/c/", "2 //s/c/2"));
  EXPECT_THAT(failed_, ElementsAre("//s/a/", "//s/b/"));
  EXPECT_TRUE(end.failures);
  EXPECT_FALSE(end.stopped);
}

TEST_F(TreeWalkTest, EndsWhenTheReceiverOfFailuresSaysSo) {
  folders_ = {{"//s/", {"a/", "b/"}}, {"//s/b/", {}}};
  goOn_ = false;
  EXPECT_TRUE(Walk().stopped);
  EXPECT_THAT(listed_, ElementsAre("//s/", "//s/a/"));
}

TEST_F(TreeWalkTest, EndsWhenNobodyReadsOn) {
  folders_ = {{"//s/", {"1", "2", "a/"}}};
  most_ = 2;
  EXPECT_TRUE(Walk().stopped);
  EXPECT_THAT(shown_, SizeIs(2));
  EXPECT_THAT(listed_, SizeIs(1));
}

TEST_F(TreeWalkTest, GoesNoDeeperThanItsBound) {
  endless_ = true;
  endlessEntries_ = {"again/"};
  bounds_.depth = 3;
  const TreeEnd end = Walk();
  EXPECT_THAT(shown_, ElementsAre("1 //s/again/", "2 //s/again/again/", "3 //s/again/again/again/"));
  EXPECT_EQ(end.beyondDepth, 1U);
}

TEST_F(TreeWalkTest, ListsNoMoreFoldersThanItsBound) {
  // Two folders in each folder, down to 64 levels: without the bound it would be 2 to the power of 64.
  endless_ = true;
  endlessEntries_ = {"a/", "b/"};
  most_ = 1'000'000;
  bounds_.folders = 500;
  const TreeEnd end = Walk();
  EXPECT_THAT(listed_, SizeIs(500));
  EXPECT_TRUE(end.folderBound);
  EXPECT_TRUE(end.stopped);
}

TEST_F(TreeWalkTest, KeepsNoMoreNamesThanItsBound) {
  folders_ = {{"//s/", {std::string(1000, 'a') + "/", std::string(1000, 'b') + "/", "document"}},
              {"//s/" + std::string(1000, 'a') + "/", {}}};
  bounds_.waitingBytes = 1500;
  const TreeEnd end = Walk();
  EXPECT_TRUE(end.waitingBound);
  EXPECT_THAT(listed_, SizeIs(2));
  EXPECT_THAT(shown_, SizeIs(2));
}

TEST_F(TreeWalkTest, LetsTheNamesOfAFolderThatIsDoneMakeRoomForOthers) {
  folders_ = {{"//s/", {std::string(1000, 'a') + "/", "b/"}},
              {"//s/" + std::string(1000, 'a') + "/", {}},
              {"//s/b/", {std::string(1000, 'c') + "/"}},
              {"//s/b/" + std::string(1000, 'c') + "/", {}}};
  bounds_.waitingBytes = 1500;
  EXPECT_FALSE(Walk().waitingBound);
  EXPECT_THAT(listed_, SizeIs(4));
}

TEST_F(TreeWalkTest, ShowsAndDoesNotEnterAFolderWhoseNameCannotStandInAPath) {
  folders_ = {{"//s/", {"a/b/", "/", "c/"}}, {"//s/c/", {}}};
  const TreeEnd end = Walk();
  EXPECT_THAT(shown_, ElementsAre("1 //s//", "1 //s/a/b/", "1 //s/c/"));
  EXPECT_THAT(listed_, ElementsAre("//s/", "//s/c/"));
  EXPECT_EQ(end.notEnterable, 2U);
}

TEST_F(TreeWalkTest, TellsWhichFoldersComeNext) {
  folders_ = {{"//s/", {"c/", "a/", "b/"}},
              {"//s/a/", {"y/", "x/"}},
              {"//s/a/x/", {}},
              {"//s/a/y/", {}},
              {"//s/b/", {}},
              {"//s/c/", {}}};
  std::vector<std::vector<std::string>> told;
  work_.expect = [&told](std::vector<std::string> paths) { told.push_back(std::move(paths)); };
  work_.expected = 2;
  static_cast<void>(Walk());
  // Before a, x, y, b and c are listed.
  EXPECT_THAT(told, ElementsAre(ElementsAre("//s/b/", "//s/c/"), ElementsAre("//s/a/y/", "//s/b/"),
                                ElementsAre("//s/b/", "//s/c/"), ElementsAre("//s/c/"), IsEmpty()));
}

TEST_F(TreeWalkTest, TellsOfNoFolderThatItDoesNotEnter) {
  folders_ = {{"//s/", {"a/", "b/", "/"}}, {"//s/a/", {"x/", "y/"}}, {"//s/b/", {}}};
  bounds_.depth = 2;
  std::vector<std::vector<std::string>> told;
  work_.expect = [&told](std::vector<std::string> paths) { told.push_back(std::move(paths)); };
  work_.expected = 10;
  static_cast<void>(Walk());
  EXPECT_THAT(told, ElementsAre(ElementsAre("//s/b/"), IsEmpty()));
}

}  // namespace vtdirect_cli
