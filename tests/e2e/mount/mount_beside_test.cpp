#include <fcntl.h>
#include <gmock/gmock.h>
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

TEST_F(MountBeside, SeveralProgramsThatWriteAtOnceCheckOutOnce) {
  Serve();
  Mount({"--write", "--auto-checkout", "--log", Home("log")});
  const auto result = Shell("for i in 1 2 3 4 5 6; do (exec 9<>'" + Fork() + "' && echo open) & done; wait");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "open\nopen\nopen\nopen\nopen\nopen\n");
  EXPECT_THAT(ReadFile(Home("log")), testing::Not(HasSubstr("cannot check out")));
}

}  // namespace
}  // namespace vtdirect_test
