#include "hosts/cli/work_folder/local_files.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <set>

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

// A change within the tick of a clock has the time of the one before.
TEST_F(LocalFiles, AreReadAgainAsLongAsTheirTimeMayBeThatOfALaterChange) {
  FolderFile file = Keep("f", "abc");
  const std::int64_t ahead = TimeNow() + 3600 * nanosecondsPerSecond;
  SetTime("f", ahead);
  EXPECT_EQ(State(file), LocalState::Same);
  file = store_->Files()->at("f");
  WriteFile(directory_.File("f"), "abd");
  SetTime("f", ahead);
  EXPECT_EQ(State(file), LocalState::Modified);
}

TEST_F(LocalFiles, KeepATimeThatNoLaterChangeCanHave) {
  constexpr std::int64_t now = 1'000 * nanosecondsPerSecond;
  EXPECT_EQ(TimeToKeep(now - 3 * nanosecondsPerSecond, now), now - 3 * nanosecondsPerSecond);
  EXPECT_EQ(TimeToKeep(now - nanosecondsPerSecond, now), unsureTime);
  EXPECT_EQ(TimeToKeep(now, now), unsureTime);
  EXPECT_EQ(TimeToKeep(now + 5 * nanosecondsPerSecond, now), unsureTime);
}

// The kernel's clock of files stands still for some milliseconds.
TEST_F(LocalFiles, AreStampedBetweenTwoTicks) {
  std::set<std::int64_t> times;
  for (int number = 0; number < 50; ++number) {
    const std::string name = directory_.File("stamped" + std::to_string(number));
    WriteFile(name, "abc");
    const std::int64_t time = StampFile(name);
    EXPECT_EQ(time, FactsOf(name).time);
    times.insert(time);
  }
  EXPECT_EQ(times.size(), 50U);
  EXPECT_EQ(StampFile(directory_.File("not there")), unsureTime);
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
  const std::int64_t older = file.time - 3600 * nanosecondsPerSecond;
  SetTime("f", older);
  EXPECT_EQ(State(file), LocalState::Same);
  EXPECT_EQ(store_->Files()->at("f").time, older);
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
