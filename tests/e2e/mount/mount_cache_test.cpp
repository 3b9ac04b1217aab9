#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

class MountCache : public MountTest {
 protected:
  [[nodiscard]] std::size_t Contents() const {
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(Cache() + "/contents")) {
      if (entry.is_regular_file()) ++count;
    }
    return count;
  }
};

TEST_F(MountCache, AsksTheServerNothingForAContentThatIsThere) {
  Serve();
  Mount({"--refresh", "3600"});
  const std::string content = Text(Tree(forkAddress));
  const std::size_t before = Requests();
  EXPECT_EQ(Text(Tree(forkAddress)), content);
  EXPECT_EQ(Shell("cat \"$TREE/" + std::string(forkAddress) + "\" | wc -c").out,
            std::to_string(content.size()) + "\n");
  EXPECT_EQ(Requests(), before);
}

TEST_F(MountCache, IsThereForTheNextMountAndForOthers) {
  Serve();
  Mount();
  const std::string content = Text(Tree(forkAddress));
  EXPECT_EQ(Asked("streams/10010"), 1U);
  SignalMount(SIGTERM);
  EXPECT_EQ(WaitForMount().status, 0);
  Mount();
  EXPECT_EQ(Text(Tree(forkAddress)), content);
  EXPECT_EQ(Asked("streams/10010"), 1U);
  EXPECT_EQ(Contents(), 1U);
}

TEST_F(MountCache, FetchesAContentOnceForManyReaders) {
  Serve({"--fault", "GET *10010/*=delay:300"});
  Mount();
  const auto result = Shell("for i in $(seq 16); do cat \"$TREE/" + std::string(forkAddress) +
                            "\" > copy$i & done; wait; cmp copy1 copy16 && cat copy* | sha256sum | wc -l; "
                            "md5sum copy* | cut -c1-32 | "
                            "sort -u | wc -l");
  EXPECT_EQ(result.out, "1\n1\n") << result.err;
  EXPECT_EQ(Asked("streams/10010"), 1U);
}

TEST_F(MountCache, FetchesAnewWhatSomebodyCutShort) {
  Serve();
  Mount();
  const std::string content = Text(Tree(forkAddress));
  SignalMount(SIGTERM);
  EXPECT_EQ(WaitForMount().status, 0);
  ASSERT_EQ(Shell("find ~/.cache/vtdirect/contents -type f -exec truncate -s 5 {} +").status, 0);
  Mount();
  EXPECT_EQ(Text(Tree(forkAddress)), content);
}

TEST_F(MountCache, StaysWithinItsBound) {
  // 20 documents of 200,000 bytes are four million bytes; the bound is one mebibyte.
  Serve({"--seed", "bulk:20,size=200000"});
  Mount({"--cache-size", "1"});
  const auto result = Shell("cat \"$TREE/Products/Bulk/Folders/Parts/\"* | wc -c");
  EXPECT_EQ(result.out, "4000000\n") << result.err;
  EXPECT_LE(Contents() * 200'000, std::size_t{1} << 20U);
  EXPECT_GE(Contents(), 1U);
}

TEST_F(MountCache, OnAFullDiskFailsTheReaderAndLeavesNothingBehind) {
  Serve();
  std::filesystem::create_directory(Home("small"));
  if (Shell("mount -t tmpfs -o size=64k,mode=700 none ~/small").status != 0) {
    GTEST_SKIP() << "this user can mount no small disk";
  }
  Mount({"--cache", Home("small")});
  // A megabyte does not fit; the small drawings do, and go on to be read.
  EXPECT_EQ(ErrorOfReading(Tree("Products/Trekking Bike/Folders/paint shop scan.bin")), ENOSPC);
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
  EXPECT_EQ(Shell("find ~/small/parts -type f | wc -l").out, "0\n");
  SignalMount(SIGTERM);
  EXPECT_EQ(WaitForMount().status, 0);
  EXPECT_EQ(Shell("umount ~/small").status, 0);
}

// A cache that can't be written for another reason than room is not emptied by that.
TEST_F(MountCache, ThatCannotBeWrittenKeepsWhatItHas) {
  Serve();
  Mount({"--log", Home("log")});
  const std::string content = Text(Tree(forkAddress));
  ASSERT_EQ(Shell("rmdir ~/.cache/vtdirect/parts && touch ~/.cache/vtdirect/parts").status, 0);
  EXPECT_EQ(ErrorOfReading(Tree(std::string(frameFolder) + "frame.lxz")), EIO);
  EXPECT_THAT(ReadFile(Home("log")), testing::HasSubstr("cannot write to the cache: Not a directory"));
  EXPECT_EQ(Contents(), 1U);
  EXPECT_EQ(Text(Tree(forkAddress)), content);
}

TEST_F(MountCache, ThatOthersMayLookIntoIsNotUsed) {
  Serve();
  ASSERT_EQ(Shell("mkdir -p ~/.cache/vtdirect && chmod 755 ~/.cache/vtdirect").status, 0);
  const auto result = Run({"mount", "//sim/", Tree()});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, testing::HasSubstr("chmod 700"));
}

}  // namespace
}  // namespace vtdirect_test
