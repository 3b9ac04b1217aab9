#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* longAgo = "1000000000";

// Programs that copy files into a mount, with times and rights.
class MountCopying : public MountWriting {
 protected:
  [[nodiscard]] std::string Frame() const { return "\"$TREE/" + std::string(frameFolder) + "\""; }
  // Files "in/NAME" that a program is to copy, of long ago.
  void Prepare(const std::vector<std::string>& names) {
    ASSERT_EQ(Shell("mkdir in && chmod 755 in").status, 0);
    for (const std::string& name : names) {
      WriteFile(Here("in/" + name), "FENLET copied\n");
      ASSERT_EQ(Shell("chmod 644 'in/" + name + "' && touch -d @" + longAgo + " 'in/" + name + "'").status,
                0);
    }
  }
  [[nodiscard]] std::string TimeOf(const std::string& name) {
    return Shell("stat -c %Y " + Frame() + "'" + name + "'").out;
  }
};

TEST_F(MountCopying, RsyncSendsNothingTheSecondTime) {
  if (Shell("command -v rsync").status != 0) GTEST_SKIP() << "there is no rsync";
  MountAndCheckOut();
  Prepare({"fork.lxz"});
  const std::string line = "rsync -aO --itemize-changes in/ " + Frame();
  const auto first = Shell(line);
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_THAT(first.out, HasSubstr(">f"));
  EXPECT_EQ(OnServer(Path()), "FENLET copied\n");
  const auto second = Shell(line);
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_EQ(second.out, "");
}

TEST_F(MountCopying, RsyncSendsNewDocumentsOnce) {
  if (Shell("command -v rsync").status != 0) GTEST_SKIP() << "there is no rsync";
  Serve();
  Mount({"--write"});
  Prepare({"new.lxz"});
  const std::string line = "rsync -rtO --itemize-changes in/ " + Frame();
  EXPECT_THAT(Shell(line).out, HasSubstr(">f+++++++++ new.lxz"));
  EXPECT_EQ(OnServer("//sim/" + std::string(frameFolder) + "new.lxz"), "FENLET copied\n");
  const auto second = Shell(line);
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_EQ(second.out, "");
  // The next mount knows the time, too.
  ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
  EXPECT_EQ(WaitForMount().status, 0);
  Mount({"--write"});
  EXPECT_EQ(TimeOf("new.lxz"), std::string(longAgo) + "\n");
}

TEST_F(MountCopying, CpKeepsTheTime) {
  MountAndCheckOut();
  Prepare({"fork.lxz", "new.lxz"});
  const auto result = Shell("cp -a in/* " + Frame());
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(TimeOf("fork.lxz"), std::string(longAgo) + "\n");
  EXPECT_EQ(TimeOf("new.lxz"), std::string(longAgo) + "\n");
  EXPECT_EQ(OnServer(Path()), "FENLET copied\n");
}

TEST_F(MountCopying, CpSaysThatRightsAreLostAndCopiesAllTheSame) {
  MountAndCheckOut();
  Prepare({"fork.lxz"});
  ASSERT_EQ(Shell("chmod 600 in/fork.lxz").status, 0);
  const auto result = Shell("cp -a in/fork.lxz " + Frame());
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("Operation not permitted"));
  EXPECT_EQ(OnServer(Path()), "FENLET copied\n");
  EXPECT_THAT(Names(Unstored()), IsEmpty());
}

TEST_F(MountCopying, TarUnpacks) {
  MountAndCheckOut();
  Prepare({"fork.lxz"});
  const auto result =
      Shell("tar -C in -cf all.tar fork.lxz && tar -C " + Frame() + " --overwrite -xf all.tar");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(OnServer(Path()), "FENLET copied\n");
  EXPECT_EQ(TimeOf("fork.lxz"), std::string(longAgo) + "\n");
}

TEST_F(MountCopying, RightsAndTimesThatWouldNotComeTrueAreRefused) {
  MountAndCheckOut();
  const auto error = [](int result) { return result == 0 ? 0 : errno; };
  const std::string fork = Fork();
  const timespec times[2] = {{1'000'000'000, 0}, {1'000'000'000, 0}};
  EXPECT_EQ(error(chmod(fork.c_str(), 0644)), 0) << "it has these rights";
  EXPECT_EQ(error(chmod(fork.c_str(), 0600)), EPERM);
  EXPECT_EQ(error(chown(fork.c_str(), getuid(), getgid())), 0);
  EXPECT_EQ(error(chown(fork.c_str(), getuid() + 1, getgid())), EPERM);
  EXPECT_EQ(error(utimensat(AT_FDCWD, fork.c_str(), times, 0)), EPERM);
  const std::string made = Tree(std::string(frameFolder) + "new.lxz");
  const int file = open(made.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644);
  ASSERT_GE(file, 0);
  EXPECT_EQ(error(fchmod(file, 0600)), EPERM);
  EXPECT_EQ(error(futimens(file, times)), 0);
  EXPECT_EQ(close(file), 0);
}

TEST_F(MountCopying, AScratchFileHasTheRightsThatItIsGiven) {
  Serve();
  Mount({"--write"});
  const std::string scratch = Tree(std::string(frameFolder) + "a~");
  ASSERT_EQ(Shell("printf private >'" + scratch + "' && chmod 600 '" + scratch + "'").err, "");
  struct stat status = {};
  ASSERT_EQ(stat(scratch.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode, S_IFREG | 0600U);
}

}  // namespace
}  // namespace vtdirect_test
