#include "hosts/cli/work_folder/local_files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "hosts/cli/files/sha256.h"
#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

constexpr std::int64_t nanosecondsPerSecond = 1'000'000'000;

class LocalFiles : public testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(directory_.File(".vtdirect"));
    store_ = FileStore::Create(directory_.File(".vtdirect/files.db"), "//plm/a/", "key").store;
    ASSERT_TRUE(store_);
  }

  // Writes a file and keeps what is known of it.
  FolderFile Keep(const std::string& name, const std::string& bytes) {
    WriteFile(directory_.File(name), bytes);
    const LocalFacts facts = FactsOf(directory_.File(name));
    FolderFile file{name, "", "", "", facts.size, facts.time, Sha256OfText(bytes)};
    EXPECT_EQ(store_->Keep(file), "");
    return file;
  }

  void SetTime(const std::string& name, std::int64_t time) const {
    const timespec moment{time / nanosecondsPerSecond, time % nanosecondsPerSecond};
    const timespec both[] = {moment, moment};
    ASSERT_EQ(utimensat(AT_FDCWD, directory_.File(name).c_str(), both, 0), 0);
  }

  [[nodiscard]] LocalState State(const FolderFile& file) {
    return StateOf(*store_, directory_.File(file.path), file);
  }

  TemporaryDirectory directory_;
  std::unique_ptr<FileStore> store_;
};

}  // namespace

TEST_F(LocalFiles, AreTheSameModifiedOrMissing) {
  const FolderFile file = Keep("f", "abc");
  EXPECT_EQ(State(file), LocalState::Same);
  WriteFile(directory_.File("f"), "abcd");
  EXPECT_EQ(State(file), LocalState::Modified);
  WriteFile(directory_.File("f"), "abd");
  SetTime("f", file.time + 1);
  EXPECT_EQ(State(file), LocalState::Modified);
  unlink(directory_.File("f").c_str());
  EXPECT_EQ(State(file), LocalState::Missing);
  std::filesystem::create_directory(directory_.File("f"));
  EXPECT_EQ(State(file), LocalState::Modified);
}

// What this program does not read, it can't tell: the bytes are read where size or time differ, and there alone.
TEST_F(LocalFiles, AreReadOnlyWhenSizeOrTimeDiffer) {
  const FolderFile file = Keep("f", "abc");
  WriteFile(directory_.File("f"), "xyz");
  SetTime("f", file.time);
  EXPECT_EQ(State(file), LocalState::Same);
}

TEST_F(LocalFiles, KeepTheTimeOfACopyOfTheSameBytes) {
  const FolderFile file = Keep("f", "abc");
  SetTime("f", file.time + 5);
  EXPECT_EQ(State(file), LocalState::Same);
  EXPECT_EQ(store_->Files()->at("f").time, file.time + 5);
}

TEST_F(LocalFiles, AreListedWithoutTheRecordsAndOtherWorkFolders) {
  for (const char* name : {"a", "a/b", "inner", "inner/.vtdirect"}) {
    std::filesystem::create_directory(directory_.File(name));
  }
  for (const char* name : {"z", "a/b/f", "a/.hidden", "inner/.vtdirect/files.db", "inner/g"}) {
    WriteFile(directory_.File(name), "");
  }
  std::filesystem::create_directory_symlink(directory_.File("a"), directory_.File("link"));
  EXPECT_THAT(FilesBelow(directory_.path()), ElementsAre("a/.hidden", "a/b/f", "link", "z"));
}

TEST_F(LocalFiles, GetTheirDirectoriesAndNeverByALink) {
  EXPECT_EQ(MakeFoldersFor(directory_.path(), "a/b/f"), 0);
  EXPECT_TRUE(std::filesystem::is_directory(directory_.File("a/b")));
  EXPECT_FALSE(std::filesystem::exists(directory_.File("a/b/f")));
  const TemporaryDirectory elsewhere;
  std::filesystem::create_directory_symlink(elsewhere.path(), directory_.File("link"));
  EXPECT_EQ(MakeFoldersFor(directory_.path(), "link/c/f"), ENOTDIR);
  EXPECT_FALSE(std::filesystem::exists(elsewhere.File("c")));
  WriteFile(directory_.File("file"), "");
  EXPECT_EQ(MakeFoldersFor(directory_.path(), "file/f"), ENOTDIR);
}

}  // namespace vtdirect_cli
