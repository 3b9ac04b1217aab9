#include "documents/storing/disk_space.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string>

#include "tests/support/temporary_directory.h"

namespace vtdirect_test {
namespace {

using lxservices::cms_interface::vantry::ReserveDiskSpace;

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

constexpr std::uint64_t megabyte = 1024 * 1024;

class DiskSpace : public testing::Test {
 protected:
  DiskSpace() {
    WriteFile(path, "abc");
    file.reset(std::fopen(path.c_str(), "ab"));
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
  }

  [[nodiscard]] std::uint64_t Occupied() const {
    struct stat status {};
    EXPECT_EQ(stat(path.c_str(), &status), 0);
    return static_cast<std::uint64_t>(status.st_blocks) * 512;
  }

  TemporaryDirectory directory;
  std::string path = directory.File("file");
  File file;
};

TEST_F(DiskSpace, IsTakenAndLeavesTheFileAsItIs) {
  ReserveDiskSpace(file.get(), 3, 4 * megabyte);
  EXPECT_EQ(ReadFile(path), "abc");
  ASSERT_EQ(std::fwrite("def", 1, 3, file.get()), 3U);
  EXPECT_EQ(ReadFile(path), "abcdef");
  const File other(std::fopen(directory.File("other").c_str(), "ab"));
  if (fallocate(fileno(other.get()), FALLOC_FL_KEEP_SIZE, 0, megabyte) != 0) {
    GTEST_SKIP() << "the file system of " << path << " reserves nothing";
  }
  EXPECT_GE(Occupied(), 4 * megabyte);
}

TEST_F(DiskSpace, BeyondWhatAFileMayHoldIsNotTaken) {
  ReserveDiskSpace(file.get(), 3, 0x7fff'ffff'ffff'ffff);
  EXPECT_LT(Occupied(), megabyte);
  EXPECT_EQ(ReadFile(path), "abc");
}

// A file system in memory has a size, and says at once that it hasn't more.
TEST_F(DiskSpace, BeyondWhatTheDiskHasIsNotTaken) {
  path = "/dev/shm/disk-space-" + std::to_string(getpid());
  struct statvfs disk {};
  file.reset(std::fopen(path.c_str(), "ab"));
  if (file == nullptr || statvfs(path.c_str(), &disk) != 0 || disk.f_blocks == 0) {
    GTEST_SKIP() << "no file system in memory that has a size";
  }
  std::setvbuf(file.get(), nullptr, _IONBF, 0);
  ASSERT_EQ(std::fwrite("abc", 1, 3, file.get()), 3U);
  const std::uint64_t all = std::uint64_t{disk.f_blocks} * disk.f_frsize;
  ReserveDiskSpace(file.get(), 3, all + megabyte);
  ASSERT_EQ(std::fwrite("def", 1, 3, file.get()), 3U);
  EXPECT_EQ(ReadFile(path), "abcdef");
  EXPECT_LT(Occupied(), megabyte);
  std::remove(path.c_str());
}

TEST_F(DiskSpace, OfAPipeIsNothing) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const File reader(fdopen(ends[0], "rb"));
  {
    const File writer(fdopen(ends[1], "wb"));
    ReserveDiskSpace(writer.get(), 0, megabyte);
    ASSERT_EQ(std::fwrite("abc", 1, 3, writer.get()), 3U);
  }
  char got[8];
  EXPECT_EQ(std::string(got, std::fread(got, 1, sizeof got, reader.get())), "abc");
}

}  // namespace
}  // namespace vtdirect_test
