#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST_F(MountTest, ReturnsWhenTheTreeIsThereAndIsTakenAwayByUnmount) {
  Serve();
  const auto result = Run({"mount", "--no-prompt", "//sim/", Tree()});
  ASSERT_EQ(result.status, 0) << result.err;
  EXPECT_TRUE(IsMounted());
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
  EXPECT_THAT(ReadFile(Home(".local/state/vtdirect/mount.log")), HasSubstr("is mounted at " + Tree()));
  EXPECT_EQ(Run({"unmount", Tree()}).status, 0);
  EXPECT_FALSE(IsMounted());
  EXPECT_THAT(ReadFile(Home(".local/state/vtdirect/mount.log")), HasSubstr(Tree() + " is unmounted"));
}

TEST_F(MountTest, IsToldInJsonToo) {
  Serve();
  EXPECT_EQ(Run({"--json", "mount", "--no-prompt", "//sim", Tree()}).out,
            R"({"schema":2,"command":"mount","path":"//sim/","directory":")" + Tree() + "\"}\n");
  EXPECT_EQ(Run({"--json", "refresh", Tree()}).out,
            R"({"schema":2,"command":"refresh","directory":")" + Tree() + "\"}\n");
  EXPECT_EQ(Run({"--json", "unmount", Tree()}).out,
            R"({"schema":2,"command":"unmount","directory":")" + Tree() + "\"}\n");
}

TEST_F(MountTest, OfAFolderShowsThatFolder) {
  Serve();
  const std::string folder = "//sim/" + std::string(frameFolder);
  ASSERT_EQ(Run({"mount", "--no-prompt", folder, Tree()}).status, 0);
  EXPECT_THAT(Names(Tree()), ElementsAre("fork.lxz", "frame.lxz", "welding manual.xml"));
  EXPECT_EQ(Run({"unmount", Tree()}).status, 0);
}

TEST_F(MountTest, SaysWhyItCanNotBegin) {
  Serve();
  EXPECT_EQ(Run({"mount", "//other/", Tree()}).status, 9);
  EXPECT_EQ(Run({"mount", "//sim/Products/Nothing/Folders/", Tree()}).status, 6);
  EXPECT_EQ(Run({"mount", "/tmp", Tree()}).status, 2);
  EXPECT_EQ(Run({"mount", "--parallel", "0", "//sim/", Tree()}).status, 2);
  EXPECT_EQ(Run({"mount", "--max-time", "9", "//sim/", Tree()}).status, 2);
  EXPECT_EQ(Run({"mount", "//sim/", Tree("nothing")}).status, 1);
  EXPECT_EQ(Run({"unmount", Tree()}).status, 6);
  EXPECT_EQ(Run({"refresh", Tree()}).status, 6);
}

TEST_F(MountTest, EndsWithoutCredentialsAndUsesThoseThatItGets) {
  Serve({"--user", "anna:secret"});
  EXPECT_EQ(Run({"mount", "--no-prompt", "//sim/", Tree()}).status, 4);
  EXPECT_FALSE(IsMounted());
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "secret";
  Mount();
  const auto result = Shell(
      "find \"$TREE/Products/Trekking Bike/Folders/Drivetrain\" -type f | "
      "xargs -d '\\n' -P 8 -n 1 cat | wc -c");
  EXPECT_EQ(result.err, "");
  EXPECT_GT(std::stoul(result.out), 1000U);
}

TEST_F(MountTest, EndsBySignalAndUnmounts) {
  Serve();
  for (const int signal : {SIGINT, SIGTERM}) {
    Mount();
    EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
    SignalMount(signal);
    EXPECT_EQ(WaitForMount().status, 0);
    EXPECT_FALSE(IsMounted());
  }
}

TEST_F(MountTest, ThatWasKilledIsClearedAwayByTheNext) {
  Serve();
  Mount();
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  EXPECT_EQ(ErrorOfReading(Tree(forkAddress)), ENOTCONN);
  Mount();
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  EXPECT_EQ(Run({"unmount", Tree()}).status, 0);
  // A killed program can't clear its temporary directory away.
  EXPECT_EQ(Shell("rm -rf \"$(dirname ~)\"/temporary/vtdirect-*").status, 0);
}

TEST_F(MountTest, IsNotMountedOver) {
  Serve();
  Mount();
  const auto again = Run({"mount", "--no-prompt", "//sim/", Tree()});
  EXPECT_EQ(again.status, 1);
  EXPECT_THAT(again.err, HasSubstr(Tree() + " is a mount of vtdirect already"));
  EXPECT_EQ(Run({"unmount", Tree()}).status, 0);
  EXPECT_FALSE(IsMounted());
  EXPECT_EQ(WaitForMount().status, 0);
}

TEST_F(MountTest, IsRefreshedByAHangUp) {
  Serve();
  Mount({"--refresh", "3600"});
  ASSERT_EQ(Names(Tree(frameFolder)).size(), 3U);
  WriteFile(Here("new.lxz"), "FENLET new\n");
  ASSERT_EQ(Run({"put", "-q", "new.lxz", "//sim/" + std::string(frameFolder)}).status, 0);
  SignalMount(SIGHUP);
  EXPECT_TRUE(WaitUntil([this] { return Names(Tree(frameFolder)).size() == 4; }));
}

TEST_F(MountTest, GivesNoContentToProgramsThatMakeThumbnails) {
  Serve();
  Mount({"--no-preview"});
  ASSERT_EQ(Shell("cp /bin/cat ./tumblerd").status, 0);
  const auto result = Shell("./tumblerd \"$TREE/" + std::string(forkAddress) + "\"");
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("Permission denied"));
  EXPECT_EQ(Asked("/content/"), 0U);
  EXPECT_EQ(Text(Tree(forkAddress)), server().Get(forkContent));
}

TEST_F(MountTest, LetsCommandsTakeItsPathsForAddresses) {
  Serve();
  Mount();
  EXPECT_EQ(Run({"uid", Tree(forkAddress)}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(Run({"ls", Tree(frameFolder)}).out, "fork.lxz\nframe.lxz\nwelding manual.xml\n");
  EXPECT_EQ(Run({"uid", Tree(std::string(frameFolder) + ".versions/fork.lxz/A.1.lxz")}).out,
            server().Uid("D1101") + "&file=/fork.lxz\n");
  ASSERT_EQ(Run({"checkout", "-q", Tree(forkAddress)}).status, 0);
  EXPECT_EQ(Run({"undo", "-q", Tree(forkAddress)}).status, 0);
  // A name that is not there yet is that of a new document.
  WriteFile(Here("source.lxz"), "FENLET new\n");
  ASSERT_EQ(Run({"put", "-q", "source.lxz", Tree(std::string(frameFolder) + "new.lxz")}).status, 0);
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_EQ(Text(Tree(std::string(frameFolder) + "new.lxz")), "FENLET new\n");
  // A local file outside of the mount is no address.
  EXPECT_EQ(Run({"uid", "source.lxz"}).status, 2);
}

// Not even where writing and checkouts are allowed.
TEST_F(MountTest, ChangesNothingOnTheServerForThoseWhoOnlyLook) {
  Serve();
  Mount({"--write", "--auto-checkout"});
  const auto result = Shell(
      "cd \"$TREE\" && ls -lR && find . -print && find . -writable && find . -executable && "
      "(! command -v getfattr || getfattr -R -d .) && grep -r FENLET . >/dev/null");
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_GT(Requests(), 0U);
  EXPECT_EQ(Asked("\"method\":\"GET\""), Requests());
}

TEST_F(MountTest, IsSeenByItsUserAlone) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can look as somebody else";
  Serve();
  Mount();
  const std::string asNobody = "setpriv --reuid 65534 --regid 65534 --clear-groups ";
  ASSERT_EQ(Shell("chmod 755 ~ \"$(dirname ~)\"").status, 0);
  EXPECT_EQ(Shell(asNobody + "ls ~").out, "tree\n");
  EXPECT_THAT(Shell(asNobody + "ls \"$TREE\"").err, HasSubstr("Permission denied"));
}

}  // namespace
}  // namespace vtdirect_test
