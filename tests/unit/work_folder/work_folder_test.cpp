#include "hosts/cli/work_folder/work_folder.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "hosts/cli/files/sha256.h"
#include "hosts/cli/work_folder/comparison.h"
#include "tests/support/temporary_directory.h"

using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

class WorkFolders : public testing::Test {
 protected:
  void SetUp() override {
    auto created = WorkFolder::Create(directory_.path(), "//plm/a/");
    ASSERT_TRUE(created) << created.failure().message;
    folder_ = std::move(*created);
  }

  // As a process leaves it that was killed while it brought a file.
  void Announce(const std::string& path, const std::string& bytes) {
    const FolderFile file{path, "", "uid", "A.1", bytes.size(), 1, Sha256OfText(bytes)};
    EXPECT_EQ(folder_->store().Announce(file), "");
  }

  TemporaryDirectory directory_;
  std::unique_ptr<WorkFolder> folder_;
};

}  // namespace

TEST_F(WorkFolders, CountAFileThatArrivedAndWasNotKept) {
  Announce("f", "new");
  WriteFile(directory_.File("f"), "new");
  const auto side = ReadLocalSide(*folder_);
  ASSERT_TRUE(side);
  ASSERT_TRUE(side->kept.contains("f"));
  EXPECT_EQ(side->states.at("f"), LocalState::Same);
  EXPECT_TRUE(folder_->store().Files()->empty()) << "looking keeps nothing";
  EXPECT_FALSE(folder_->Lock());
  EXPECT_EQ(folder_->store().Files()->count("f"), 1U);
  EXPECT_TRUE(folder_->store().Announced().empty());
}

TEST_F(WorkFolders, DoNotCountAFileThatNeverArrived) {
  const FolderFile old{"f", "", "old uid", "A.1", 3, 1, Sha256OfText("old")};
  EXPECT_EQ(folder_->store().Keep(old), "");
  WriteFile(directory_.File("f"), "old");
  Announce("f", "new");
  Announce("g", "new");
  const auto side = ReadLocalSide(*folder_);
  ASSERT_TRUE(side);
  EXPECT_EQ(side->kept.at("f").uid, "old uid");
  EXPECT_EQ(side->states.at("f"), LocalState::Same);
  EXPECT_FALSE(side->kept.contains("g"));
  EXPECT_FALSE(folder_->Lock());
  EXPECT_TRUE(folder_->store().Announced().empty());
  EXPECT_EQ(folder_->store().Files()->at("f").uid, "old uid");
  EXPECT_EQ(folder_->store().Files()->count("g"), 0U);
}

TEST_F(WorkFolders, AreClearedOfHalfFilesByWhoeverMayChangeThem) {
  WriteFile(folder_->incoming() + "/half", "ha");
  EXPECT_FALSE(folder_->Lock());
  EXPECT_TRUE(std::filesystem::is_empty(folder_->incoming()));
}

TEST_F(WorkFolders, AreMadeOnce) {
  const auto meanwhile = WorkFolder::Create(directory_.path(), "//plm/b/");
  ASSERT_FALSE(meanwhile) << "one at a time";
  EXPECT_EQ(meanwhile.failure().code, ExitCode::Failure);
  folder_.reset();
  const auto later = WorkFolder::Create(directory_.path(), "//plm/b/");
  ASSERT_FALSE(later);
  EXPECT_EQ(later.failure().code, ExitCode::LocalFile);
  const auto store = FileStore::Open(directory_.File(".vtdirect/files.db")).store;
  ASSERT_TRUE(store);
  EXPECT_EQ(store->address(), "//plm/a/");
}

TEST_F(WorkFolders, AreFoundFromBelow) {
  std::filesystem::create_directories(directory_.File("a/b"));
  const std::string root = std::filesystem::canonical(directory_.path()).string();
  EXPECT_EQ(WorkFolder::RootAbove(root + "/a/b"), root);
  EXPECT_EQ(WorkFolder::RootAbove(root), root);
  EXPECT_EQ(WorkFolder::RootAbove("/"), "");
  EXPECT_EQ(folder_->PathOf(root + "/a/../f"), "f");
  EXPECT_EQ(folder_->PathOf(root + "/../f"), "");
}

}  // namespace vtdirect_cli
