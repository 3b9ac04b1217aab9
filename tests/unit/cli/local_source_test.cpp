#include "hosts/cli/storing/local_source.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>

#include "tests/support/temporary_directory.h"

using vtdirect_test::TemporaryDirectory;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

class LocalSourceTest : public testing::Test {
 protected:
  LocalSourceTest() { WriteFile(path_, "content"); }

  LocalSource Inspected() {
    const auto source = InspectSource(path_);
    EXPECT_TRUE(source);
    return source ? *source : LocalSource{};
  }

  // The time of the last change, moved where no clock could have set it by chance.
  void SetTime(long nanoseconds) {
    const timespec times[2] = {{1'000'000'000, nanoseconds}, {1'000'000'000, nanoseconds}};
    ASSERT_EQ(utimensat(AT_FDCWD, path_.c_str(), times, 0), 0);
  }

  TemporaryDirectory directory_;
  std::string path_ = directory_.File("source");
};

}  // namespace

TEST_F(LocalSourceTest, TellsTheSizeOfAFile) {
  EXPECT_EQ(Inspected().size(), 7U);
  ASSERT_EQ(truncate(path_.c_str(), 5'000'000'000), 0);
  EXPECT_EQ(Inspected().size(), 5'000'000'000U);
}

TEST_F(LocalSourceTest, FollowsALink) {
  const std::string link = directory_.File("link");
  ASSERT_EQ(symlink("source", link.c_str()), 0);
  const auto source = InspectSource(link);
  ASSERT_TRUE(source);
  EXPECT_EQ(source->size(), 7U);
}

TEST_F(LocalSourceTest, RefusesWhatIsNoFile) {
  const auto missing = InspectSource(directory_.File("none"));
  ASSERT_FALSE(missing);
  EXPECT_EQ(missing.failure().code, ExitCode::LocalFile);
  EXPECT_EQ(missing.failure().message,
            "cannot read " + directory_.File("none") + ": No such file or directory");
  EXPECT_EQ(InspectSource(directory_.path()).failure().message,
            "cannot read " + directory_.path() + ": it is a directory");
  EXPECT_FALSE(InspectSource(""));
  EXPECT_EQ(InspectSource("/dev/null").failure().message, "cannot read /dev/null: it is no regular file");
}

TEST_F(LocalSourceTest, IsUnchangedWhileNobodyWrites) {
  const LocalSource source = Inspected();
  EXPECT_TRUE(IsUnchanged(source));
  ASSERT_EQ(chmod(path_.c_str(), 0600), 0);
  EXPECT_TRUE(IsUnchanged(source));
}

TEST_F(LocalSourceTest, ChangesByASizeATimeAnotherFileOrNone) {
  SetTime(1);
  LocalSource source = Inspected();
  WriteFile(path_, "content!");
  SetTime(1);
  EXPECT_FALSE(IsUnchanged(source));

  source = Inspected();
  SetTime(2);
  EXPECT_FALSE(IsUnchanged(source));

  source = Inspected();
  WriteFile(directory_.File("other"), "CONTENT!");
  ASSERT_EQ(std::rename(directory_.File("other").c_str(), path_.c_str()), 0);
  SetTime(2);
  EXPECT_FALSE(IsUnchanged(source));

  source = Inspected();
  ASSERT_EQ(unlink(path_.c_str()), 0);
  EXPECT_FALSE(IsUnchanged(source));
}

TEST(BaseName, IsWhatFollowsTheLastSlash) {
  EXPECT_EQ(BaseNameOf("a"), "a");
  EXPECT_EQ(BaseNameOf("./a b"), "a b");
  EXPECT_EQ(BaseNameOf("/x/y.lxz"), "y.lxz");
  EXPECT_EQ(BaseNameOf("x/"), "");
}

}  // namespace vtdirect_cli
