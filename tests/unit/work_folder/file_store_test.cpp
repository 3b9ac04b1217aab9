#include "hosts/cli/work_folder/file_store.h"

#include <gtest/gtest.h>

#include "tests/support/temporary_directory.h"

using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

FolderFile FileAt(const std::string& path) {
  return {path, "//plm/" + path, "uid", "B.2", 5'000'000'000, 1'700'000'000'123'456'789, "abc"};
}

void ExpectSame(const FolderFile& one, const FolderFile& other) {
  EXPECT_EQ(one.path, other.path);
  EXPECT_EQ(one.address, other.address);
  EXPECT_EQ(one.uid, other.uid);
  EXPECT_EQ(one.version, other.version);
  EXPECT_EQ(one.size, other.size);
  EXPECT_EQ(one.time, other.time);
  EXPECT_EQ(one.sha256, other.sha256);
}

class Store : public testing::Test {
 protected:
  void SetUp() override {
    auto opening = FileStore::Create(File(), "//plm/Frame/", "key");
    ASSERT_EQ(opening.fault, "");
    store_ = std::move(opening.store);
  }
  [[nodiscard]] std::string File() const { return directory_.File("files.db"); }

  TemporaryDirectory directory_;
  std::unique_ptr<FileStore> store_;
};

}  // namespace

TEST_F(Store, KeepsWhatItIsToldOfWhateverTheName) {
  const std::string hostile = "a'b\"\n\t\xFF/%2f; DROP TABLE files";
  EXPECT_EQ(store_->Keep(FileAt(hostile)), "");
  EXPECT_EQ(store_->Keep(FileAt("b")), "");
  const auto opening = FileStore::Open(File());
  ASSERT_TRUE(opening.store) << opening.fault;
  EXPECT_EQ(opening.store->address(), "//plm/Frame/");
  EXPECT_EQ(opening.store->server(), "key");
  const auto files = opening.store->Files();
  ASSERT_TRUE(files);
  ASSERT_EQ(files->size(), 2U);
  ExpectSame(files->at(hostile), FileAt(hostile));
}

TEST_F(Store, TakesAnAnnouncementForNoFile) {
  EXPECT_EQ(store_->Announce(FileAt("a")), "");
  EXPECT_TRUE(store_->Files()->empty());
  ASSERT_EQ(store_->Announced().size(), 1U);
  ExpectSame(store_->Announced().front(), FileAt("a"));
  EXPECT_EQ(store_->Keep(FileAt("a")), "");
  EXPECT_TRUE(store_->Announced().empty());
  EXPECT_EQ(store_->Files()->size(), 1U);
  EXPECT_EQ(store_->Announce(FileAt("b")), "");
  EXPECT_EQ(store_->Withdraw("b"), "");
  EXPECT_TRUE(store_->Announced().empty());
}

TEST_F(Store, GivesANewTimeToTheBytesThatItKnowsAlone) {
  EXPECT_EQ(store_->Keep(FileAt("a")), "");
  FolderFile other = FileAt("a");
  other.sha256 = "other";
  EXPECT_EQ(store_->KeepTime(other, 7), "");
  EXPECT_EQ(store_->Files()->at("a").time, FileAt("a").time);
  EXPECT_EQ(store_->KeepTime(FileAt("a"), 7), "");
  EXPECT_EQ(store_->Files()->at("a").time, 7);
  EXPECT_EQ(store_->Forget("a"), "");
  EXPECT_TRUE(store_->Files()->empty());
}

TEST_F(Store, SeesWhatAnotherProcessKeeps) {
  const auto other = FileStore::Open(File());
  ASSERT_TRUE(other.store);
  EXPECT_EQ(other.store->Keep(FileAt("a")), "");
  EXPECT_EQ(store_->Keep(FileAt("b")), "");
  EXPECT_EQ(store_->Files()->size(), 2U);
  EXPECT_EQ(other.store->Files()->size(), 2U);
}

TEST_F(Store, TakesNoFileOfAnotherFormForItsOwn) {
  WriteFile(directory_.File("text"), std::string(5000, 'x'));
  EXPECT_FALSE(FileStore::Open(directory_.File("text")).store);
  EXPECT_NE(FileStore::Open(directory_.File("text")).fault, "");
  // A process that was killed at once leaves a file without anything in it.
  WriteFile(directory_.File("empty"), "");
  EXPECT_FALSE(FileStore::Open(directory_.File("empty")).store);
  EXPECT_TRUE(FileStore::Create(directory_.File("empty"), "//plm/a/", "key").store);
  EXPECT_TRUE(FileStore::Open(directory_.File("empty")).store);
  EXPECT_FALSE(FileStore::Open(directory_.File("no/such/directory")).store);
}

}  // namespace vtdirect_cli
