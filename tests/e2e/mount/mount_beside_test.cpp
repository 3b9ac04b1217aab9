#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/e2e/mount/mount_writing_fixture.h"

namespace vtdirect_test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What vtdirect does beside a mount that would not ask the server anew for an hour.
class MountBeside : public MountWriting {
 protected:
  void MountForAnHour(const std::vector<std::string>& more = {}) {
    std::vector<std::string> options = {"--refresh", "3600"};
    options.insert(options.end(), more.begin(), more.end());
    Mount(options);
  }
  void PutByCommand(const std::string& text) {
    WriteFile(Here("put"), text);
    ASSERT_EQ(Run({"put", "-q", "put", Path()}).status, 0);
  }
  void CheckInByCommand() { ASSERT_EQ(Run({"checkin", "-q", Path()}).status, 0); }
};

TEST_F(MountBeside, WhatWasPutIntoAWorkingCopyIsReadWhole) {
  Serve();
  CheckOut();
  MountForAnHour({"--write"});
  for (const std::string& put : {std::string(9000, 'l'), std::string("short")}) {
    struct stat status = {};
    ASSERT_EQ(stat(Fork().c_str(), &status), 0);
    PutByCommand(put);
    EXPECT_EQ(Text(Fork()), put);
  }
}

TEST_F(MountBeside, WhatWasCheckedInIsReadAtOnce) {
  Serve();
  MountForAnHour({"--write"});
  EXPECT_THAT(Text(Fork()), StartsWith(forkHead));
  CheckOut();
  PutByCommand("FENLET edited\n");
  EXPECT_EQ(Text(Fork()), "FENLET edited\n");
  CheckInByCommand();
  EXPECT_EQ(Text(Fork()), "FENLET edited\n");
}

TEST_F(MountBeside, WhatWasCheckedInIsReadAtOnceWhereNothingIsWritten) {
  Serve();
  MountForAnHour();
  EXPECT_THAT(Text(Fork()), StartsWith(forkHead));
  CheckOut();
  PutByCommand(std::string(9000, 'l'));
  CheckInByCommand();
  EXPECT_EQ(Text(Fork()), std::string(9000, 'l'));
}

TEST_F(MountBeside, ALookAfterACommandByAPathInItShowsWhatTheCommandDid) {
  Serve();
  MountForAnHour({"--write"});
  const auto isAsLongAs = [this](const std::string& text) {
    struct stat status = {};
    return stat(Fork().c_str(), &status) == 0 && status.st_size == static_cast<off_t>(text.size());
  };
  ASSERT_EQ(Run({"checkout", "-q", Fork()}).status, 0);
  for (const std::string& text : {std::string(9000, 'l'), std::string("short")}) {
    EXPECT_FALSE(isAsLongAs(text));
    WriteFile(Here("put"), text);
    ASSERT_EQ(Run({"put", "-q", "put", Fork()}).status, 0);
    EXPECT_TRUE(isAsLongAs(text));
  }
  ASSERT_EQ(Run({"undo", "-q", Fork()}).status, 0);
  EXPECT_TRUE(isAsLongAs(server().Get(forkContent)));
}

TEST_F(MountBeside, ALookAfterACheckinByAPathInItShowsTheNewIteration) {
  Serve();
  MountForAnHour();
  CheckOut();
  PutByCommand("short");
  struct stat status = {};
  ASSERT_EQ(stat(Fork().c_str(), &status), 0);
  EXPECT_EQ(status.st_size, static_cast<off_t>(server().Get(forkContent).size()));
  ASSERT_EQ(Run({"checkin", "-q", Fork()}).status, 0);
  ASSERT_EQ(stat(Fork().c_str(), &status), 0);
  EXPECT_EQ(status.st_size, 5);
}

// The mount knows an older iteration than the one that is checked out.
TEST_F(MountBeside, ACheckoutOfANewerIterationCanBeWrittenTo) {
  Serve();
  MountForAnHour({"--write"});
  EXPECT_THAT(Text(Fork()), StartsWith(forkHead));
  environment_["XDG_STATE_HOME"] = Here("colleague");
  CheckOut();
  PutByCommand("FENLET of a colleague\n");
  CheckInByCommand();
  environment_.erase("XDG_STATE_HOME");
  CheckOut();
  EXPECT_EQ(Shell("printf 'more\\n' >>'" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), "FENLET of a colleague\nmore\n");
}

// What could not be stored would be left out, and could be stored nowhere after the checkout.
TEST_F(MountBeside, ACheckinLeavesNothingOutThatWaits) {
  Serve();
  CheckOut();
  port_ = AtItsPort();
  Serve(AtItsPort({"--fault", "POST *=503"}));
  Mount({"--write"});
  EXPECT_NE(Shell("cp /etc/hostname '" + Fork() + "'").status, 0);
  Serve(port_);
  const auto refused = Run({"checkin", Fork()});
  EXPECT_EQ(refused.status, 1);
  EXPECT_THAT(refused.err, HasSubstr("nothing was checked in"));
  EXPECT_THAT(refused.err, HasSubstr(Unstored()));
  ASSERT_EQ(Run({"refresh", Tree()}).status, 0);
  EXPECT_TRUE(WaitUntil([this] { return Names(Unstored()).empty(); }));
  CheckInByCommand();
  EXPECT_EQ(Text(Fork()), ReadFile("/etc/hostname"));
}

// "cp -a" copies the extended attributes, too.
TEST_F(MountBeside, ACopyOutsideOfItIsNoAddress) {
  Serve();
  Mount();
  ASSERT_EQ(Shell("cp -a '" + Fork() + "' copy.lxz").err, "");
  if (Attribute(Here("copy.lxz"), "user.vantry.address") != Path())
    GTEST_SKIP() << "no attributes on this disk";
  EXPECT_EQ(Run({"uid", "copy.lxz"}).status, 2);
  EXPECT_EQ(Run({"uid", Fork()}).status, 0);
}

TEST_F(MountBeside, APathInAMountThatWasKilledIsToldFromOneThatIsNone) {
  Serve();
  Mount();
  SignalMount(SIGKILL);
  EXPECT_EQ(WaitForMount().status, -SIGKILL);
  const auto result = Run({"uid", Fork()});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("mount that has ended"));
  EXPECT_THAT(Run({"uid", Here("nothing")}).err, HasSubstr("neither a path"));
  ASSERT_EQ(Run({"unmount", Tree()}).status, 0);
  ClearAwayTemporaryFiles();
}

// As a mount in a container does, whose programs outside have no numbers in it.
TEST_F(MountBeside, AProgramWithoutAProcessNumberWrites) {
  if (geteuid() != 0) GTEST_SKIP() << "only root can begin a mount apart from other processes";
  Serve();
  CheckOut();
  Process mount(
      {"/usr/bin/unshare", "--pid", "--fork", "--kill-child", VTDIRECT_PROGRAM, "--server",
       "sim=" + server().url(), "mount", "--foreground", "--no-prompt", "--write", "//sim/", Tree()},
      ProcessOptions{environment_, Here(""), "", 0});
  ASSERT_TRUE(WaitUntil([&] { return AnswersAsMount() || !mount.Running(); }));
  if (!AnswersAsMount()) GTEST_SKIP() << mount.Wait().err;
  EXPECT_EQ(Shell("printf edited >'" + Fork() + "'").err, "");
  EXPECT_EQ(OnServer(Path()), "edited");
  EXPECT_EQ(Shell("fusermount3 -u \"$TREE\"").status, 0);
  static_cast<void>(mount.Wait());
}

TEST_F(MountBeside, SeveralProgramsThatWriteAtOnceCheckOutOnce) {
  Serve();
  Mount({"--write", "--auto-checkout", "--log", Home("log")});
  // By a pipe: of what several programs write into one memory file at once a word may be lost.
  const auto result =
      Shell("{ for i in 1 2 3 4 5 6; do (exec 9<>'" + Fork() + "' && echo open) & done; wait; } | cat");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "open\nopen\nopen\nopen\nopen\nopen\n");
  EXPECT_THAT(ReadFile(Home("log")), testing::Not(HasSubstr("cannot check out")));
}

}  // namespace
}  // namespace vtdirect_test
