#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "tests/e2e/work_folder/work_folder_fixture.h"

namespace vtdirect_test {

/// Work folders on a file system in memory that is too small, for as long as a test wants it so.
class FullDisk : public WorkFolderTest {
 protected:
  void SetUp() override {
    std::filesystem::create_directory(Here("disk"));
    if (mount("tmpfs", Here("disk").c_str(), "tmpfs", 0, "size=1m") != 0) {
      GTEST_SKIP() << "this user may mount no file system: " << std::strerror(errno);
    }
    mounted_ = true;
    Serve();
  }
  void TearDown() override {
    if (mounted_) umount2(Here("disk").c_str(), MNT_DETACH);
    WorkFolderTest::TearDown();
  }

  void Resize(const std::string& size) {
    ASSERT_EQ(mount("tmpfs", Here("disk").c_str(), "tmpfs", MS_REMOUNT, ("size=" + size).c_str()), 0);
  }
  // What does not fit is not written.
  void Fill() { std::ofstream(Here("disk/filler")) << std::string(std::size_t{4} << 20U, 'x'); }
  void Free() { std::filesystem::remove(Here("disk/filler")); }

  [[nodiscard]] std::string ForkHere() const { return ReadFile(Here("disk/Frame/fork.lxz")); }
  [[nodiscard]] bool NothingIsHalf() const {
    return std::filesystem::is_empty(Here("disk/Frame/.vtdirect/incoming"));
  }

 private:
  bool mounted_ = false;
};

TEST_F(FullDisk, LeavesAWorkFolderThatAPullCompletes) {
  // The scan has a million bytes, and so does not fit beside the others.
  Resize("400k");
  const ProcessResult clone = Run({"clone", bikePath, "disk/bike", "--parallel", "2"});
  EXPECT_EQ(clone.status, 8) << clone.err;
  EXPECT_FALSE(std::filesystem::exists(Here("disk/bike/paint shop scan.bin")));
  const std::string fork = Here("disk/bike/Frame/fork.lxz");
  EXPECT_TRUE(!std::filesystem::exists(fork) || ReadFile(fork) == DocumentOf(server(), "D1001").bytes);
  Resize("32m");
  const ProcessResult pull = RunIn("disk/bike", {"pull"});
  EXPECT_EQ(pull.status, 0) << pull.err;
  EXPECT_EQ(ReadFile(fork), DocumentOf(server(), "D1001").bytes);
  EXPECT_EQ(ReadFile(Here("disk/bike/paint shop scan.bin")), DocumentOf(server(), "D1009").bytes);
}

TEST_F(FullDisk, KeepsTheOldVersionUntilAPullHasRoomForTheNewOne) {
  ASSERT_EQ(Run({"clone", framePath, "disk/Frame"}).status, 0);
  const std::string old = ForkHere();
  StoreElsewhere(std::string(100'000, 'n'));
  Fill();
  EXPECT_EQ(RunIn("disk/Frame", {"pull"}).status, 8);
  EXPECT_EQ(ForkHere(), old);
  EXPECT_TRUE(NothingIsHalf());
  Free();
  EXPECT_EQ(RunIn("disk/Frame", {"pull"}).status, 0);
  EXPECT_EQ(ForkHere(), std::string(100'000, 'n'));
  EXPECT_EQ(St("disk/Frame"), "");
}

TEST_F(FullDisk, LosesNoEditOfACommitAndASecondOneFinishesIt) {
  ASSERT_EQ(Run({"clone", framePath, "disk/Frame"}).status, 0);
  WriteFile(Here("disk/Frame/fork.lxz"), "mine");
  Fill();
  const ProcessResult first = RunIn("disk/Frame", {"commit"});
  EXPECT_EQ(ForkHere(), "mine");
  // What is told to be done is done.
  if (first.status == 0) {
    EXPECT_EQ(ForkOnServer(), "mine");
  }
  Free();
  EXPECT_EQ(Run({"recover"}).status, 0);
  const ProcessResult second = RunIn("disk/Frame", {"commit"});
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_EQ(ForkOnServer(), "mine");
  EXPECT_EQ(St("disk/Frame"), "");
  EXPECT_TRUE(NothingIsHalf());
}

}  // namespace vtdirect_test
