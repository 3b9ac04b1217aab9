#include "hosts/mount/cache/content_cache.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <thread>

#include "tests/support/temporary_directory.h"

namespace vtdirect_mount {
namespace {

class ContentCacheTest : public testing::Test {
 protected:
  [[nodiscard]] std::string Directory() const { return directory_.File("cache"); }
  static void Put(ContentCache& cache, const std::string& key, const std::string& content) {
    const std::string file = cache.NewFile();
    vtdirect_test::WriteFile(file, content);
    ASSERT_EQ(cache.Keep(key, file), 0);
  }
  static std::string TextOf(const std::shared_ptr<const OpenFile>& file) {
    if (file == nullptr) return "(not there)";
    std::array<char, 4096> buffer{};
    const ssize_t count = pread(file->descriptor(), buffer.data(), buffer.size(), 0);
    return {buffer.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0))};
  }
  [[nodiscard]] std::size_t FilesIn(const std::string& name) const {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Directory() + "/" + name)) {
      if (entry.is_regular_file()) ++files;
    }
    return files;
  }
  static std::string FileOf(const std::string& directory) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
      if (entry.is_regular_file()) return entry.path().string();
    }
    return "";
  }

  vtdirect_test::TemporaryDirectory directory_;
};

TEST_F(ContentCacheTest, GivesWhatItKeepsToOtherProcessesToo) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  Put(cache, "a", "content of a");
  EXPECT_EQ(TextOf(cache.Open("a", 12)), "content of a");
  EXPECT_EQ(cache.Open("b", 12), nullptr);
  ContentCache other(Directory(), 1000);
  ASSERT_EQ(other.Prepare(), "");
  EXPECT_EQ(other.bytes(), 12U);
  EXPECT_EQ(TextOf(other.Open("a", 12)), "content of a");
}

TEST_F(ContentCacheTest, RemovesWhatIsNotAsLongAsItMustBe) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  Put(cache, "a", "content of a");
  std::filesystem::resize_file(FileOf(Directory() + "/contents"), 5);
  EXPECT_EQ(cache.Open("a", 12), nullptr);
  EXPECT_EQ(FilesIn("contents"), 0U);
}

TEST_F(ContentCacheTest, LetsGoWhatWasNotUsedForTheLongestTime) {
  ContentCache cache(Directory(), 100);
  ASSERT_EQ(cache.Prepare(), "");
  for (const char* key : {"a", "b", "c"}) {
    Put(cache, key, std::string(30, 'x'));
    // The clock of a filesystem is coarser than this test is fast.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  const auto stillOpen = cache.Open("b", 30);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_NE(cache.Open("a", 30), nullptr);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  // 120 bytes are too many; down to 90 one goes, and that is c: a and b were read after it came.
  Put(cache, "d", std::string(30, 'x'));
  EXPECT_EQ(cache.Open("c", 30), nullptr);
  EXPECT_NE(cache.Open("a", 30), nullptr);
  EXPECT_NE(cache.Open("b", 30), nullptr);
  EXPECT_NE(cache.Open("d", 30), nullptr);
  EXPECT_EQ(cache.bytes(), 90U);
  cache.ShrinkTo(0);
  EXPECT_EQ(FilesIn("contents"), 0U);
  EXPECT_EQ(TextOf(stillOpen), std::string(30, 'x'));
}

TEST_F(ContentCacheTest, IsForItsUserAlone) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  Put(cache, "a", "content of a");
  struct stat status = {};
  ASSERT_EQ(stat(Directory().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0700U);
  ASSERT_EQ(stat(FileOf(Directory() + "/contents").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ContentCacheTest, IsNotUsedWhenOthersMayLookIntoIt) {
  std::filesystem::create_directory(Directory());
  ASSERT_EQ(chmod(Directory().c_str(), 0755), 0);
  ContentCache cache(Directory(), 1000);
  EXPECT_THAT(cache.Prepare(), testing::HasSubstr("chmod 700"));
}

TEST_F(ContentCacheTest, ClearsAwayWhatAKilledProcessLeft) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  // No process has the number 4194305: it is above the highest that Linux gives.
  vtdirect_test::WriteFile(Directory() + "/parts/4194305-0", "half");
  vtdirect_test::WriteFile(cache.NewFile(), "under way");
  ContentCache next(Directory(), 1000);
  ASSERT_EQ(next.Prepare(), "");
  EXPECT_EQ(FilesIn("parts"), 1U);
}

TEST_F(ContentCacheTest, DropsItsOwnPartsAlone) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  vtdirect_test::WriteFile(cache.NewFile(), "under way");
  vtdirect_test::WriteFile(Directory() + "/parts/1-0", "another process's");
  cache.DropAll();
  EXPECT_EQ(FilesIn("parts"), 1U);
  EXPECT_TRUE(std::filesystem::exists(Directory() + "/parts/1-0"));
}

TEST_F(ContentCacheTest, LeavesNoPartBehindThatCannotBeKept) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  std::filesystem::remove_all(Directory() + "/contents");
  vtdirect_test::WriteFile(Directory() + "/contents", "in the way");
  const std::string file = cache.NewFile();
  vtdirect_test::WriteFile(file, "content");
  EXPECT_NE(cache.Keep("a", file), 0);
  EXPECT_EQ(FilesIn("parts"), 0U);
}

TEST_F(ContentCacheTest, TellsWhyNothingCanBeWritten) {
  ContentCache cache(Directory(), 1000);
  ASSERT_EQ(cache.Prepare(), "");
  EXPECT_EQ(cache.ErrorOfWriting(0), 0);
  EXPECT_EQ(cache.ErrorOfWriting(5000), 0);
  EXPECT_EQ(FilesIn("parts"), 0U);
  std::filesystem::remove(Directory() + "/parts");
  EXPECT_EQ(cache.ErrorOfWriting(0), ENOENT);
}

}  // namespace
}  // namespace vtdirect_mount
