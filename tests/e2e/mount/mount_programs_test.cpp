#include <gmock/gmock.h>

#include "tests/e2e/mount/mount_fixture.h"

namespace vtdirect_test {
namespace {

using testing::HasSubstr;

// Real programs on a real mount, each with the result that it has on a disk.
class MountPrograms : public MountTest {
 protected:
  void SetUp() override {
    MountTest::SetUp();
    if (IsSkipped()) return;
    Serve();
    Mount();
  }
  // Skipped with a word where the program is missing.
  [[nodiscard]] bool Has(const std::string& program) { return Shell("command -v " + program).status == 0; }
};

TEST_F(MountPrograms, LsAndFindWalkTheWholeTree) {
  const auto list = Shell("ls -lR \"$TREE\" > list; grep -c '^-r--r--r--' list");
  EXPECT_EQ(list.err, "");
  const auto find = Shell("find \"$TREE\" -type f | wc -l");
  EXPECT_EQ(find.err, "");
  EXPECT_EQ(list.out, find.out);
  EXPECT_EQ(Shell("find \"$TREE\" -name .versions").out, "");
  EXPECT_EQ(Shell("find \"$TREE\" -type f -name 'gear.lxz' | wc -l").out, "2\n");
}

TEST_F(MountPrograms, CpKeepsBytesAndTimes) {
  const auto result = Shell(
      "cp -a \"$TREE/Products/Trekking Bike/Folders/Drivetrain\" copy && "
      "diff -r \"$TREE/Products/Trekking Bike/Folders/Drivetrain\" copy && "
      "stat -c %Y copy/gear.lxz \"$TREE/Products/Trekking Bike/Folders/Drivetrain/gear.lxz\" "
      "| sort -u | wc -l");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "1\n");
}

TEST_F(MountPrograms, TarPacksWhatIsThere) {
  const auto result = Shell(
      "tar -C \"$TREE/Products/Trekking Bike\" -cf all.tar Folders && mkdir out && "
      "tar -C out -xf all.tar && diff -r \"$TREE/Products/Trekking Bike/Folders\" out/Folders");
  EXPECT_EQ(result.status, 0) << result.out << result.err;
}

TEST_F(MountPrograms, RsyncSendsNothingTheSecondTime) {
  if (!Has("rsync")) GTEST_SKIP() << "there is no rsync";
  const std::string line = "rsync -a --itemize-changes \"$TREE/Products/Trekking Bike/Folders/\" copy/";
  const auto first = Shell(line);
  EXPECT_EQ(first.status, 0) << first.err;
  EXPECT_THAT(first.out, HasSubstr(">f+++++++++ Frame/fork.lxz"));
  const auto second = Shell(line);
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_EQ(second.out, "");
}

TEST_F(MountPrograms, GrepFindsAWordInTheContents) {
  const auto result = Shell("cd \"$TREE/Products/Trekking Bike/Folders/Frame\" && grep -rl 'version A.3'");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "frame.lxz\n");
}

TEST_F(MountPrograms, GitInAFolderAboveSeesFilesThatItDoesNotKnow) {
  if (!Has("git")) GTEST_SKIP() << "there is no git";
  const auto result =
      Shell("cd ~ && git init -q . && git status --porcelain -uall -- tree | grep -c fork.lxz");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "2\n");
}

TEST_F(MountPrograms, VimShowsADocumentAndSaysThatItIsReadOnly) {
  if (!Has("vim")) GTEST_SKIP() << "there is no vim";
  const auto result = Shell("vim -es -n -u NONE -c '1print' -c 'echo &readonly' -c 'qa!' \"$TREE/" +
                            std::string(forkAddress) + "\" 2>&1");
  EXPECT_THAT(result.out, HasSubstr("FENLET DRAWING"));
}

TEST_F(MountPrograms, SixteenReadersAtOnceGetTheSameBytes) {
  const auto result = Shell(
      "cd \"$TREE/Products/Trekking Bike/Folders\" && for i in $(seq 16); do "
      "find . -type f -print0 | sort -z | xargs -0 cat | sha256sum & done | sort -u | wc -l; wait");
  EXPECT_EQ(result.err, "");
  EXPECT_EQ(result.out, "1\n");
}

}  // namespace
}  // namespace vtdirect_test
