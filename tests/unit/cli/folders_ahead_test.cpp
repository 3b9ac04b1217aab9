#include "hosts/cli/browsing/folders_ahead.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>

#include "hosts/cli/browsing/tree_walk.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace vtdirect_cli {
namespace {

// A server of folders by their paths; an entry that closes with "/" is a folder.
class FoldersAheadTest : public testing::Test {
 protected:
  ListingEnd List(const std::string& path, const EntryFunction& receive) {
    const bool isAhead = IsAheadOfWalk();
    if (isAhead && aheadFails_) return Told(path, ListingEnd::Broken);
    if (!isAhead) ++listedByWalk_[path];
    for (const std::string& entry : folders_.at(path)) {
      const bool isFolder = entry.ends_with('/');
      const std::string name = isFolder ? entry.substr(0, entry.size() - 1) : entry;
      if (!receive({name.c_str(), isFolder, nullptr, nullptr, nullptr})) {
        return isAhead ? Told(path, ListingEnd::Stopped) : ListingEnd::Stopped;
      }
    }
    return isAhead ? Told(path, ListingEnd::Whole) : ListingEnd::Whole;
  }

  ListingEnd Told(const std::string& path, ListingEnd end) {
    const auto promise = overAhead_.find(path);
    if (promise != overAhead_.end()) promise->second.set_value();
    return end;
  }

  FoldersAhead::List ListFunction() {
    return [this](const std::string& path, const EntryFunction& receive) { return List(path, receive); };
  }

  // Expects one folder, and waits until its listing ahead is made.
  void ListAhead(FoldersAhead& ahead, const std::string& path) {
    std::future<void> over = overAhead_[path].get_future();
    ahead.Expect({path});
    over.wait();
  }

  std::vector<std::string> Enter(FoldersAhead& ahead, const std::string& path) {
    std::vector<std::string> names;
    end_ = ahead.Enter(path, [&names](const VtDirectManager::DirEntryExt& entry) {
      names.push_back(std::string(entry.name) + (entry.isFolder ? "/" : ""));
      return true;
    });
    return names;
  }

  std::map<std::string, std::vector<std::string>> folders_;
  bool aheadFails_ = false;
  std::map<std::string, std::promise<void>> overAhead_;
  std::map<std::string, int> listedByWalk_;  // by the test's own thread alone
  ListingEnd end_ = ListingEnd::Broken;
};

}  // namespace

TEST_F(FoldersAheadTest, ListsByItselfWithoutThreads) {
  folders_ = {{"a/", {"1", "b/"}}};
  FoldersAhead ahead(ListFunction(), 0);
  ahead.Expect({"a/"});
  EXPECT_THAT(Enter(ahead, "a/"), ElementsAre("1", "b/"));
  EXPECT_EQ(end_, ListingEnd::Whole);
  EXPECT_EQ(listedByWalk_["a/"], 1);
}

TEST_F(FoldersAheadTest, HandsOnWhatWasListedAheadWithoutAnotherListing) {
  folders_ = {{"a/", {"2", "1", "b/"}}};
  FoldersAhead ahead(ListFunction(), 1);
  ListAhead(ahead, "a/");
  EXPECT_THAT(Enter(ahead, "a/"), ElementsAre("2", "1", "b/"));
  EXPECT_EQ(end_, ListingEnd::Whole);
  EXPECT_EQ(listedByWalk_["a/"], 0);
}

TEST_F(FoldersAheadTest, ListsAgainWhatWasEnteredBefore) {
  folders_ = {{"a/", {"1"}}};
  FoldersAhead ahead(ListFunction(), 1);
  ListAhead(ahead, "a/");
  static_cast<void>(Enter(ahead, "a/"));
  EXPECT_THAT(Enter(ahead, "a/"), ElementsAre("1"));
  EXPECT_EQ(listedByWalk_["a/"], 1);
}

TEST_F(FoldersAheadTest, LeavesAFailureToTheWalk) {
  folders_ = {{"a/", {"1"}}};
  aheadFails_ = true;
  FoldersAhead ahead(ListFunction(), 1);
  ListAhead(ahead, "a/");
  EXPECT_THAT(Enter(ahead, "a/"), ElementsAre("1"));
  EXPECT_EQ(end_, ListingEnd::Whole);
  EXPECT_EQ(listedByWalk_["a/"], 1);
}

TEST_F(FoldersAheadTest, KeepsNoFolderOfTooManyEntries) {
  folders_ = {{"a/", {"1", "2", "3"}}};
  FoldersAhead ahead(ListFunction(), 1, {.ofOne = 2, .ofAll = 100});
  ListAhead(ahead, "a/");
  EXPECT_THAT(Enter(ahead, "a/"), ElementsAre("1", "2", "3"));
  EXPECT_EQ(listedByWalk_["a/"], 1);
}

TEST_F(FoldersAheadTest, EndsWhereTheReceiverEndsIt) {
  folders_ = {{"a/", {"1", "2"}}};
  FoldersAhead ahead(ListFunction(), 1);
  ListAhead(ahead, "a/");
  int received = 0;
  const auto one = [&received](const VtDirectManager::DirEntryExt&) { return ++received < 1; };
  EXPECT_EQ(ahead.Enter("a/", one), ListingEnd::Stopped);
  EXPECT_EQ(received, 1);
}

// The walk's thread has nobody to answer it otherwise.
TEST_F(FoldersAheadTest, WaitsForAListingThatIsUnderWay) {
  folders_ = {{"a/", {"1"}}};
  std::promise<void> begun, release;
  std::shared_future<void> released = release.get_future().share();
  FoldersAhead ahead(
      [&](const std::string& path, const EntryFunction& receive) {
        if (IsAheadOfWalk()) {
          begun.set_value();
          released.wait();
        }
        return List(path, receive);
      },
      1);
  ahead.Expect({"a/"});
  begun.get_future().wait();
  auto entered = std::async(std::launch::async, [&] { return Enter(ahead, "a/"); });
  release.set_value();
  EXPECT_THAT(entered.get(), ElementsAre("1"));
  EXPECT_THAT(listedByWalk_, IsEmpty());
}

TEST_F(FoldersAheadTest, ShowsTheSameTreeAsAWalkAlone) {
  for (const char* first : {"a", "b", "c", "d", "e"}) {
    const std::string folder = std::string("//s/") + first + "/";
    folders_["//s/"].push_back(std::string(first) + "/");
    for (const char* second : {"x", "y", "z"}) {
      folders_[folder].push_back(std::string(second) + "/");
      folders_[folder + second + "/"] = {"2", "1"};
    }
  }
  const auto walk = [this](unsigned threads) {
    std::vector<std::string> shown;
    FoldersAhead ahead(ListFunction(), threads);
    TreeWork work{
        [&](const std::string& path, const EntryFunction& receive) { return ahead.Enter(path, receive); },
        [&](const TreeEntry& entry) {
          shown.push_back(entry.path);
          return true;
        },
        [](const std::string&, ListingEnd) { return true; },
        [&](std::vector<std::string> paths) { ahead.Expect(std::move(paths)); }, 2 * threads};
    static_cast<void>(WalkTree("//s/", TreeBounds(), work));
    return shown;
  };
  const std::vector<std::string> alone = walk(0);
  EXPECT_EQ(alone.size(), 5U + 15U + 30U);
  EXPECT_EQ(walk(4), alone);
}

TEST_F(FoldersAheadTest, TellsAThreadThatIsAheadFromTheWalk) {
  EXPECT_FALSE(IsAheadOfWalk());
}

}  // namespace vtdirect_cli
