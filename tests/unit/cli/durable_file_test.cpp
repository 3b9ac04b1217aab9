#include "hosts/cli/files/durable_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tests/support/temporary_directory.h"

using testing::ElementsAre;
using vtdirect_test::ReadFile;
using vtdirect_test::WriteFile;

namespace vtdirect_cli {
namespace {

using Condition = DurableFile::Condition;
using Permissions = DurableFile::Permissions;

[[nodiscard]] mode_t ModeOf(const std::string& path) {
  struct stat facts = {};
  EXPECT_EQ(stat(path.c_str(), &facts), 0);
  return facts.st_mode & 07777U;
}

[[nodiscard]] std::optional<struct stat> FactsOf(const std::string& path) {
  struct stat facts = {};
  return stat(path.c_str(), &facts) == 0 ? std::optional(facts) : std::nullopt;
}

class DurableFileTest : public testing::Test {
 protected:
  [[nodiscard]] std::string File(const std::string& name) const { return directory_.File(name); }

  [[nodiscard]] int Replace(const std::string& name, Permissions permissions = Permissions::OfTarget,
                            Condition condition = Condition::Anything,
                            const std::optional<struct stat>& before = std::nullopt) const {
    DurableFile file(File(name));
    EXPECT_EQ(file.error(), 0);
    WriteFile(file.path(), "new");
    return file.Commit(permissions, condition, before);
  }

  vtdirect_test::TemporaryDirectory directory_;
};

}  // namespace

TEST_F(DurableFileTest, LeavesTheTargetAsItWasUntilTheCommit) {
  WriteFile(File("f"), "old");
  {
    DurableFile file(File("f"));
    WriteFile(file.path(), "new");
    EXPECT_EQ(ReadFile(File("f")), "old");
    EXPECT_EQ(file.Commit(Permissions::OfTarget), 0);
  }
  EXPECT_EQ(ReadFile(File("f")), "new");
  EXPECT_THAT(directory_.Entries(), ElementsAre("f"));
}

TEST_F(DurableFileTest, IsGoneWithoutACommit) {
  WriteFile(File("f"), "old");
  {
    const DurableFile file(File("f"));
    WriteFile(file.path(), "half");
  }
  EXPECT_EQ(ReadFile(File("f")), "old");
  EXPECT_THAT(directory_.Entries(), ElementsAre("f"));
}

TEST_F(DurableFileTest, IsReadableByItsOwnerAloneWhilePending) {
  const DurableFile file(File("f"));
  EXPECT_EQ(ModeOf(file.path()), 0600U);
}

TEST_F(DurableFileTest, GetsThePermissionsThatTheUmaskLeaves) {
  const mode_t before = umask(027);
  EXPECT_EQ(Replace("f"), 0);
  EXPECT_EQ(umask(before), 027U);
  EXPECT_EQ(ModeOf(File("f")), 0640U);
}

TEST_F(DurableFileTest, KeepsThePermissionsOfTheTarget) {
  WriteFile(File("f"), "old");
  ASSERT_EQ(chmod(File("f").c_str(), 0604), 0);
  EXPECT_EQ(Replace("f"), 0);
  EXPECT_EQ(ModeOf(File("f")), 0604U);
}

TEST_F(DurableFileTest, OfItsOwnerIsReadByNobodyElseWhateverTheTargetAllowed) {
  WriteFile(File("f"), "old");
  ASSERT_EQ(chmod(File("f").c_str(), 0644), 0);
  EXPECT_EQ(Replace("f", Permissions::OfOwner), 0);
  EXPECT_EQ(ModeOf(File("f")), 0600U);
}

TEST_F(DurableFileTest, TakesNoPlaceThatAnotherFileHasComeToTake) {
  WriteFile(File("f"), "other");
  EXPECT_EQ(Replace("f", Permissions::OfTarget, Condition::AsBefore), EEXIST);
  EXPECT_EQ(ReadFile(File("f")), "other");
  EXPECT_THAT(directory_.Entries(), ElementsAre("f"));
  EXPECT_EQ(Replace("g", Permissions::OfTarget, Condition::AsBefore), 0);
  EXPECT_EQ(ReadFile(File("g")), "new");
}

TEST_F(DurableFileTest, TakesNoPlaceOfAFileThatWasWrittenToMeanwhile) {
  WriteFile(File("f"), "old");
  const auto before = FactsOf(File("f"));
  ASSERT_TRUE(before);
  EXPECT_EQ(Replace("f", Permissions::OfTarget, Condition::AsBefore, before), 0);
  EXPECT_EQ(Replace("f", Permissions::OfTarget, Condition::AsBefore, before), ESTALE);
  ASSERT_EQ(unlink(File("f").c_str()), 0);
  EXPECT_EQ(Replace("f", Permissions::OfTarget, Condition::AsBefore, before), ESTALE);
  EXPECT_THAT(directory_.Entries(), testing::IsEmpty());
}

TEST_F(DurableFileTest, NeedsADirectoryThatIsThere) {
  DurableFile file(File("none/f"));
  EXPECT_EQ(file.error(), ENOENT);
  EXPECT_EQ(file.Commit(Permissions::OfTarget), ENOENT);
}

TEST_F(DurableFileTest, ReplacesTheFileThatALinkLeadsTo) {
  WriteFile(File("real"), "old");
  ASSERT_EQ(symlink("real", File("link").c_str()), 0);
  EXPECT_EQ(ReplaceDurably(File("link"), "new"), 0);
  EXPECT_EQ(ReadFile(File("real")), "new");
  EXPECT_EQ(ModeOf(File("real")), 0600U);
  EXPECT_THAT(directory_.Entries(), ElementsAre("link", "real"));
}

}  // namespace vtdirect_cli
