#include <gmock/gmock.h>

#include <regex>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

// The example of a unit for systemd, with the program of this build in the place of the installed one.
class MountUnit : public MountTest {
 protected:
  [[nodiscard]] static std::string Unit() {
    return std::regex_replace(ReadFile(SERVICE_UNIT), std::regex("/usr/bin/vtdirect"), VTDIRECT_PROGRAM);
  }
  // What follows "KEY=" in the unit, as a user's systemd runs it.
  [[nodiscard]] std::string Command(const std::string& key) const {
    const std::string unit = Unit();
    std::smatch found;
    if (!std::regex_search(unit, found, std::regex("(^|\n)" + key + "=([^\n]*)"))) return "false";
    return std::regex_replace(found[2].str(), std::regex("%h"), "\"$HOME\"");
  }
};

TEST_F(MountUnit, IsOneThatSystemdUnderstands) {
  if (Shell("command -v systemd-analyze").status != 0) GTEST_SKIP() << "there is no systemd-analyze";
  WriteFile(Here("vtdirect-mount.service"), Unit());
  // A user's manager wants the directory of a login.
  const std::string line =
      "mkdir -pm 700 run && XDG_RUNTIME_DIR=$PWD/run systemd-analyze --user --man=no verify "
      "\"$PWD/vtdirect-mount.service\"";
  const auto result = Shell(line);
  EXPECT_EQ(result.status, 0);
  EXPECT_EQ(result.err, "");
  // It is asked about this very file: a key that it does not know is told.
  WriteFile(Here("vtdirect-mount.service"),
            std::regex_replace(Unit(), std::regex("RestartSec"), "RestartSek"));
  EXPECT_THAT(Shell(line).err, testing::HasSubstr("RestartSek"));
}

TEST_F(MountUnit, MountsByItsCommandsRefreshesAndEnds) {
  Serve();
  WriteHome(".config/vtdirect/config", "[servers]\nplm = " + server().url() + "\n", 0600);
  EXPECT_EQ(Shell(Command("ExecStartPre")).status, 0);
  Process unit({"/bin/bash", "-c", "exec " + Command("ExecStart")},
               ProcessOptions{environment_, Here(""), "", 0});
  const std::string file = Home("plm/") + forkAddress;
  ASSERT_TRUE(WaitUntil([&] { return ErrorOfReading(file) == 0 || !unit.Running(); }));
  ASSERT_TRUE(unit.Running()) << unit.Wait().err;
  EXPECT_EQ(Text(file), server().Get(forkContent));
  // A reload reaches the process that systemd knows, and it goes on. By itself it would ask after 10 seconds.
  const std::size_t before = Asked("FolderContents");
  unit.Signal(SIGHUP);
  EXPECT_TRUE(WaitUntil(
      [&] { return !Names(Home("plm/") + frameFolder).empty() && Asked("FolderContents") > before; }, 5'000));
  unit.Signal(SIGTERM);
  EXPECT_EQ(unit.Wait().status, 0);
  EXPECT_THAT(Names(Home("plm")), testing::IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
