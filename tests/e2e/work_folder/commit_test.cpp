#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;

namespace vtdirect_test {

class CommitCommand : public WorkFolderTest {};

TEST_F(CommitCommand, ChecksOutStoresAndChecksInWhatWasChanged) {
  Clone();
  WriteFile(Fork(), "mine");
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(ForkOnServer(), "mine");
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
  EXPECT_EQ(Book(), bookHead);
  EXPECT_EQ(St("Frame"), "");
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "") << "there is nothing left to send";
}

TEST_F(CommitCommand, GoesOnWithACheckoutThatIsThere) {
  Clone();
  EXPECT_EQ(RunIn("Frame", {"checkout", "fork.lxz", "frame.lxz"}).status, 0);
  WriteFile(Fork(), "mine");
  EXPECT_EQ(St("Frame"), "modified\tB.1\tB.1\tby-you\tfork.lxz\nsame\tA.3\tA.3\tby-you\tframe.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(St("Frame"), "same\tA.3\tA.3\tby-you\tframe.lxz\n");
  EXPECT_EQ(RunIn("Frame", {"undo", "frame.lxz"}).status, 0);
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(CommitCommand, SendsTheNamedFilesAlone) {
  Clone();
  WriteFile(Fork(), "mine");
  WriteFile(Here("Frame/frame.lxz"), "mine too");
  EXPECT_EQ(RunIn("Frame", {"commit", "frame.lxz"}).out, "committed\tA.4\tframe.lxz\n");
  EXPECT_EQ(St("Frame"), "modified\tB.1\tB.1\t\tfork.lxz\n");
  WriteFile(Here("Frame/other"), "other");
  const ProcessResult unknown = RunIn("Frame", {"commit", "other"});
  EXPECT_EQ(unknown.status, 2);
  EXPECT_THAT(unknown.err, HasSubstr("other did not come from the server"));
  EXPECT_THAT(unknown.err, HasSubstr("\"vtdirect put 'other' ADDRESS\" creates a document of it"));
  EXPECT_THAT(RunIn("Frame", {"commit", "nothing"}).err, HasSubstr("vtdirect st --all shows"));
}

TEST_F(CommitCommand, FailsForANamedFileThatIsNotHere) {
  Clone();
  std::filesystem::remove(Fork());
  const ProcessResult result = RunIn("Frame", {"commit", "fork.lxz"});
  EXPECT_EQ(result.status, 8);
  EXPECT_EQ(result.err,
            "vtdirect: fork.lxz is not here; nothing of it was sent; vtdirect pull brings it back\n");
  EXPECT_EQ(RunIn("Frame", {"commit"}).status, 0) << "without a name only changed files are meant";
}

TEST_F(CommitCommand, SendsNothingOverANewerVersionAndGoesOnWithTheOthers) {
  Clone();
  StoreElsewhere("theirs");
  WriteFile(Fork(), "mine");
  WriteFile(Here("Frame/frame.lxz"), "mine too");
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(
      result.err,
      HasSubstr("conflict: fork.lxz was made from version B.1, and the server has version B.2; nothing "
                "was sent"));
  // Once more where it is seen, after all that went well.
  EXPECT_THAT(result.err,
              HasSubstr("vtdirect: 1 of 2 failed:\nvtdirect:   conflict: fork.lxz was made from"));
  EXPECT_EQ(result.out, "committed\tA.4\tframe.lxz\n");
  EXPECT_EQ(ForkOnServer(), "theirs");
  EXPECT_EQ(ReadFile(Fork()), "mine");
  EXPECT_EQ(HolderOf("D1001"), "");
}

// Between the listing and the check-out somebody else may be faster.
TEST_F(CommitCommand, LooksAgainWhenNobodyCanBeFasterAnyMore) {
  Clone();
  WriteFile(Fork(), "mine");
  ASSERT_EQ(RunIn("Frame", {"checkout", "fork.lxz"}).status, 0);
  ASSERT_EQ(RunIn("Frame", {"undo", "fork.lxz"}).status, 0);
  // The listing shows the old version, the document the new one.
  StoreElsewhere("theirs");
  const ProcessResult result = RunIn("Frame", {"checkout", "fork.lxz"});
  EXPECT_EQ(result.status, 1) << "an older version can't be checked out";
  EXPECT_EQ(RunIn("Frame", {"commit"}).status, 1);
  EXPECT_EQ(ForkOnServer(), "theirs");
}

TEST_F(CommitCommand, KnowsAVersionThatItSentAndDidNotKeep) {
  Clone();
  WriteFile(Fork(), "mine");
  StoreElsewhere("mine");
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "known\tB.2\tfork.lxz\n");
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(CommitCommand, IsRefusedWhileSomebodyElseHasIt) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "a";
  Clone({"--user", "anna:a", "--user", "bruno:b"});
  environment_["VTDIRECT_USER"] = "bruno";
  environment_["VTDIRECT_PASSWORD"] = "b";
  ASSERT_EQ(RunElsewhere({"checkout", forkPath}).status, 0);
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "a";
  WriteFile(Fork(), "mine");
  EXPECT_EQ(St("Frame"), "modified\tB.1\tB.1\tby-other (bruno)\tfork.lxz\n");
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("is checked out by bruno"));
  EXPECT_EQ(ReadFile(Fork()), "mine");
  // Of files that were not changed it is asked when that is wanted.
  EXPECT_EQ(RunIn("Frame", {"revert", "fork.lxz"}).status, 0);
  EXPECT_EQ(St("Frame"), "unknown\t\t\t\tfork.lxz.edited\n");
  EXPECT_THAT(RunIn("Frame", {"st", "--checkouts"}).out,
              HasSubstr("same\tB.1\tB.1\tby-other (bruno)\tfork.lxz\n"));
}

// The question that goes out before the listing is there is about the version that the file came from.
TEST_F(CommitCommand, IsToldWhoHasTheNewestVersion) {
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "a";
  const std::string port = std::to_string(UnusedPort());
  Clone({"--user", "anna:a", "--user", "bruno:b", "--upload-port", port});
  // The address that takes contents gets the login only when it is named as one that has the same.
  WriteHome(".config/vtdirect/config",
            "[server sim]\nurl = " + server().url() +
                "\nlogin_also_for = uploads\n[server uploads]\nurl = http://127.0.0.1:" + port + "/\n",
            0600);
  environment_["VTDIRECT_USER"] = "bruno";
  environment_["VTDIRECT_PASSWORD"] = "b";
  StoreElsewhere("newer");
  ASSERT_EQ(RunElsewhere({"checkout", forkPath}).status, 0);
  environment_["VTDIRECT_USER"] = "anna";
  environment_["VTDIRECT_PASSWORD"] = "a";
  WriteFile(Fork(), "mine");
  EXPECT_EQ(St("Frame"), "both\tB.1\tB.2\tby-other (bruno)\tfork.lxz\n");
}

}  // namespace vtdirect_test
