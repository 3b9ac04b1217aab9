#include <gmock/gmock.h>

#include <filesystem>

#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/work_folder/work_folder_fixture.h"

using testing::HasSubstr;
using testing::Not;

namespace vtdirect_test {

/// What `commit` leaves when it can't be sure of what it would do, or has done.
class CommitInDoubt : public WorkFolderTest {
 protected:
  void SetUp() override {
    Clone();
    WriteFile(Fork(), "mine");
  }

  // An answer of success with this body in place of that to a request that ends so.
  enum class Reaches { Server, Nobody };
  ProcessResult CommitWithAnswer(const std::string& step, const std::string& body, Reaches reaches) {
    const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
      if (!request.target.ends_with(step)) return peer.Send(forward());
      if (reaches == Reaches::Server) static_cast<void>(forward());
      peer.Answer(200, body);
    });
    environment_["http_proxy"] = meddler.Url();
    ProcessResult result = RunIn("Frame", {"commit"});
    environment_.erase("http_proxy");
    return result;
  }

  [[nodiscard]] std::string OpenEntries() const { return ReadFile(Home(".local/state/vtdirect/journal")); }

  std::string CheckOutFork() {
    const std::string uid = CheckOut(forkPath);
    EXPECT_THAT(Book(), HasSubstr(uid));
    return uid;
  }

  // By another program, of which nothing is kept here.
  void StoreIn(const std::string& workingCopy, const std::string& bytes) {
    WriteFile(Home("theirs"), bytes);
    ASSERT_EQ(RunElsewhere({"put", Home("theirs"), workingCopy}).status, 0);
  }

  // Checks nothing in, since the server says no.
  void CommitWithoutCheckin() {
    Restart({"--fault", "POST *checkin=409"});
    ASSERT_EQ(RunIn("Frame", {"commit"}).status, 1);
    Restart({});
  }
};

// A proxy may answer by itself.
TEST_F(CommitInDoubt, LosesNothingWhenACheckinIsAnsweredByNobodyWhoKnowsOfIt) {
  for (const char* body : {"{}", "[]", "<html>signed in</html>"}) {
    SCOPED_TRACE(body);
    const ProcessResult result = CommitWithAnswer("/checkin", body, Reaches::Nobody);
    EXPECT_EQ(result.status, 11) << result.err;
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("and whether it is checked in is not known"));
    EXPECT_THAT(OpenEntries(), HasSubstr("\tcheckin\t"));
    EXPECT_THAT(Book(), HasSubstr("\tfork.lxz\t"));
    EXPECT_NE(ForkOnServer(), "mine");
    EXPECT_THAT(St("Frame"), HasSubstr("modified\tB.1\tB.1\t"));
    EXPECT_EQ(RunIn("Frame", {"pull"}).status, 0);
    EXPECT_EQ(ReadFile(Fork()), "mine");
    EXPECT_EQ(Run({"recover"}).status, 0);
  }
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(ForkOnServer(), "mine");
}

TEST_F(CommitInDoubt, FindsTheIterationOfACheckinWhoseAnswerNamesNone) {
  const ProcessResult result = CommitWithAnswer("/checkin", "[]", Reaches::Server);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(Book(), bookHead);
  EXPECT_EQ(St("Frame"), "");
}

TEST_F(CommitInDoubt, ChecksNothingInThatIsNotKnownToBeStored) {
  const ProcessResult result = CommitWithAnswer("/store", "{}", Reaches::Nobody);
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(result.err, HasSubstr("whether the file is stored in it is not known"));
  EXPECT_THAT(OpenEntries(), HasSubstr("\tstore\t"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_THAT(server().Log(), Not(HasSubstr("/checkin")));
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(ForkOnServer(), "mine");
}

// What the copy has is the first commit's, whatever may have become of the second one.
TEST_F(CommitInDoubt, KnowsItsOwnStoreAfterAnotherOneThatFailed) {
  CommitWithoutCheckin();
  WriteFile(Fork(), "mine again");
  Restart({"--fault", "POST *store=503"});
  EXPECT_NE(RunIn("Frame", {"commit"}).status, 0);
  Restart({});
  WriteFile(Fork(), "mine at last");
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.out, "committed\tB.2\tfork.lxz\n") << result.err;
  EXPECT_EQ(ForkOnServer(), "mine at last");
}

TEST_F(CommitInDoubt, KnowsItsOwnStoreAfterARecoverHasSettledIt) {
  Restart({"--fault", "POST *store=lost-answer"});
  EXPECT_NE(RunIn("Frame", {"commit"}).status, 0);
  Restart({});
  const ProcessResult recovered = Run({"recover"});
  EXPECT_EQ(recovered.status, 0) << recovered.err;
  EXPECT_THAT(recovered.out, HasSubstr("is stored in "));
  EXPECT_THAT(OpenEntries(), Not(HasSubstr("\tstore\t")));
  WriteFile(Fork(), "mine at last");
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.out, "committed\tB.2\tfork.lxz\n") << result.err;
  EXPECT_EQ(ForkOnServer(), "mine at last");
}

TEST_F(CommitInDoubt, StoresNothingOverWhatOthersHaveStoredInTheWorkingCopy) {
  const std::string uid = CheckOutFork();
  StoreIn(uid, "theirs");
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.status, 1) << result.err;
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr("conflict: fork.lxz was made from version B.1, and something else was "
                                    "stored in the working copy " +
                                    uid + " since; nothing was sent; \"vtdirect get '" + uid +
                                    "' -o FILE\" fetches what is there; \"vtdirect put 'fork.lxz' '" + uid +
                                    "' --checkin\" stores the file over it"));
  EXPECT_EQ(Run({"get", uid, "-o", "-"}).out, "theirs");
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(RunIn("Frame", {"put", "fork.lxz", uid, "--checkin"}).status, 0) << "as it tells";
  EXPECT_EQ(ForkOnServer(), "mine");
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "known\tB.2\tfork.lxz\n");
}

TEST_F(CommitInDoubt, StoresNothingWhileTheWorkingCopyCanNotBeRead) {
  CheckOutFork();
  Restart({"--fault", "GET *streams*=503"});
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_NE(result.status, 0);
  EXPECT_THAT(result.err, HasSubstr("what is in its working copy, which was checked out before, could not be "
                                    "found out"));
  EXPECT_THAT(server().Log(), Not(HasSubstr("/store")));
  Restart({});
  EXPECT_EQ(RunIn("Frame", {"commit"}).status, 0);
}

TEST_F(CommitInDoubt, GoesOnWithWhatItHasStoredItself) {
  CommitWithoutCheckin();
  WriteFile(Fork(), "mine, and edited once more");
  EXPECT_EQ(RunIn("Frame", {"commit"}).out, "committed\tB.2\tfork.lxz\n");
  EXPECT_EQ(ForkOnServer(), "mine, and edited once more");
}

TEST_F(CommitInDoubt, ChecksNothingInThatAMountHasNotStoredYet) {
  const std::string uid = CheckOutFork();
  const std::string unstored = ".local/state/vtdirect/unstored/";
  WriteHome(unstored + "1.content", "written in a mount", 0600);
  WriteHome(unstored + "1.entry",
            "vtdirect-unstored 1\n" + std::string(forkPath) + "\n2026-01-31T09:00:00Z\nwhole\n\n" +
                server().url() + "\n" + uid + "\n",
            0600);
  const ProcessResult result = RunIn("Frame", {"commit"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("was written to in a mount, and the server does not have that yet; "
                                    "nothing was sent; \"vtdirect recover\" tells why"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  WriteFile(Here("f"), "f");
  const ProcessResult put = Run({"put", "f", forkPath, "--checkin"});
  EXPECT_EQ(put.status, 1);
  EXPECT_THAT(put.err, HasSubstr("nothing was sent"));
  EXPECT_THAT(server().Log(), Not(HasSubstr("/store")));
}

TEST_F(CommitInDoubt, SendsNoFileThatALinkLeadsTo) {
  WriteFile(Here("other"), "other");
  std::filesystem::remove(Fork());
  std::filesystem::create_symlink(Here("other"), Fork());
  for (const std::vector<std::string>& words :
       {std::vector<std::string>{"commit"}, {"commit", "fork.lxz"}, {"commit", "--dry-run"}}) {
    const ProcessResult result = RunIn("Frame", words);
    EXPECT_EQ(result.status, 8);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("fork.lxz is no regular file, or is reached by a symbolic link; "
                                      "nothing was sent"));
  }
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_THAT(server().Log(), Not(HasSubstr("/checkout")));
}

TEST_F(CommitInDoubt, SendsNoFilesOfADirectoryThatALinkLeadsTo) {
  ASSERT_EQ(Run({"clone", bikePath, "bike"}).status, 0);
  std::filesystem::remove_all(Here("bike/Frame"));
  std::filesystem::create_directory(Here("older"));
  WriteFile(Here("older/fork.lxz"), "older");
  std::filesystem::create_directory_symlink(Here("older"), Here("bike/Frame"));
  const ProcessResult result = RunIn("bike", {"commit"});
  EXPECT_EQ(result.status, 8) << result.out;
  EXPECT_THAT(result.err, HasSubstr("Frame/fork.lxz is no regular file, or is reached by a symbolic link"));
  EXPECT_NE(ForkOnServer(), "older");
}

// A question without an answer is no sign that nobody has it.
TEST_F(CommitInDoubt, IsToldByStWhenTheServerDoesNotTellWhoHasAFile) {
  Restart({"--fault", "GET *documents/*=503"});
  const ProcessResult result = RunIn("Frame", {"st"});
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_EQ(result.out, "modified\tB.1\tB.1\tunknown\tfork.lxz\n");
  EXPECT_EQ(result.err,
            "vtdirect: whether somebody has 1 file checked out could not be found out; the same command can "
            "be given again\n");
  const ProcessResult all = RunIn("Frame", {"st", "--checkouts"});
  EXPECT_EQ(all.status, 11);
  EXPECT_THAT(all.err, HasSubstr("whether somebody has 3 files checked out could not be found out"));
}

}  // namespace vtdirect_test
