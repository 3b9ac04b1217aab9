#include <gmock/gmock.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;
using testing::MatchesRegex;

namespace vtdirect_test {

class Verify : public CheckoutTest {
 protected:
  void SetUp() override { Serve(); }

  const std::string path_ = forkPath;
};

TEST_F(Verify, TellsThatACheckoutStandsAndChangesNothing) {
  const std::string uid = CheckOut(path_);
  const std::string before = Book();
  for (const std::string& address : {path_, uid, server().Uid("D1001")}) {
    const ProcessResult result = Run({"verify", address});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, uid + "\n");
    EXPECT_EQ(result.err, "vtdirect: " + address + " is checked out by you, in a temporary workspace\n");
    EXPECT_EQ(Book(), before);
  }
  EXPECT_EQ(HolderOf("D1001"), "anna");
}

TEST_F(Verify, KeepsACheckoutThatWasNotKept) {
  const std::string uid = CheckOut(path_);
  ASSERT_EQ(RunElsewhere({"verify", uid}).status, 0);
  const ProcessResult listed = RunElsewhere({"checkouts"});
  EXPECT_THAT(listed.out, HasSubstr("\tanna\tfork.lxz\t" + uid + "\n"));
  EXPECT_EQ(RunElsewhere({"undo", path_}).status, 0);

  const std::string crank = "//sim/Products/Trekking Bike/Workspaces/Anna's bench/crank.lxz";
  for (const std::string& address : {crank, server().Uid("D1026")}) {
    const ProcessResult result = RunElsewhere({"verify", address});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, server().Uid("D1026|W301") + "&file=/crank.lxz\n");
    EXPECT_EQ(result.err, "vtdirect: " + address + " is checked out by you, in a workspace of yours\n");
    EXPECT_THAT(RunElsewhere({"checkouts"}).out, HasSubstr("\tanna\tcrank.lxz\t" + result.out));
    EXPECT_EQ(RunElsewhere({"checkouts", "--forget", server().Uid("D1026")}).status, 0);
  }
}

TEST_F(Verify, CannotGoOnWithTheDocumentAloneThatWasCheckedOutByOtherMeans) {
  const std::string document = server().Uid("D1016");
  const ProcessResult result = Run({"verify", document});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err,
              HasSubstr(document + " is checked out by you, and its working copy is not kept here; "
                                   "give the UID of that, or its path"));
  EXPECT_EQ(Book(), "");
  EXPECT_EQ(HolderOf("D1016"), "anna");
}

TEST_F(Verify, KeepsWhatWasStoredWhicheverQuestionFails) {
  WriteFile(Here("fork.lxz"), "an hour's work");
  const std::string uid = CheckOut(path_);
  ASSERT_EQ(Run({"put", "fork.lxz", path_}).status, 0);
  for (const char* fault :
       {"GET *documents/search*=503*1", "GET *documents/search*=stall*1", "GET *workspaces/W*/documents=500",
        "GET *workspaces/W*/documents=404", "GET *dkm/workspaces?*=drop", "GET *dkm/documents/D*=503*1",
        "GET *dkm/documents/D*=404*1", "GET *dkm/documents/D*=cut:10*1", "GET *=404"}) {
    for (const char* renew : {"--renew", "--quiet"}) {
      Restart({"--fault", fault});
      const ProcessResult result = Run({"--stall-timeout", "1", "verify", renew, path_});
      EXPECT_TRUE(result.status != 0 || result.out == uid + "\n") << fault << ": " << result.out;
      Restart({});
      EXPECT_EQ(Run({"verify", path_}).out, uid + "\n") << fault;
      EXPECT_EQ(TemporaryWorkspaces(), 1U) << fault;
    }
  }
  const std::string newest = Run({"checkin", path_}).out;
  EXPECT_EQ(Run({"get", newest.substr(0, newest.find('\n')), "-o", "-"}).out, "an hour's work");
}

TEST_F(Verify, TellsThatATemporaryCopyIsGoneAndChangesNothing) {
  const std::string old = CheckOut(path_);
  ASSERT_EQ(RunElsewhere({"undo", old}).status, 0);
  const std::string before = Book();
  const ProcessResult result = Run({"verify", path_});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(result.err, "vtdirect: " + path_ + " is not checked out; the working copy " + old +
                            " is gone, with all that was not checked in; \"vtdirect verify --renew '" +
                            path_ + "'\" checks the document out anew\n");
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
  EXPECT_EQ(Book(), before) << "so that it can still be renewed";
}

TEST_F(Verify, ChecksOutAnewWhenTheTemporaryWorkspaceIsGoneAndThatIsWanted) {
  const std::string old = CheckOut(path_);
  ASSERT_EQ(RunElsewhere({"undo", old}).status, 0);
  const ProcessResult result = Run({"verify", "--renew", path_});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, MatchesRegex(TemporaryUid("D1001", "fork.lxz") + "\n"));
  EXPECT_NE(result.out, old + "\n");
  EXPECT_EQ(result.err,
            "vtdirect: " + path_ + " is checked out by you, in a temporary workspace\n" +
                "vtdirect: warning: the working copy " + old +
                " was gone, with all that was not checked in; the document was checked out anew\n");
  const std::string renewed = result.out.substr(0, result.out.size() - 1);
  EXPECT_THAT(Book(), HasSubstr("\t" + renewed + "\t"));
  EXPECT_THAT(Book(), testing::Not(HasSubstr(old)));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(TemporaryWorkspaces(), 1U);
  EXPECT_EQ(Run({"checkin", path_}).status, 0);
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
}

TEST_F(Verify, DropsACheckoutThatWasCheckedInByOtherMeans) {
  const std::string uid = CheckOut(path_);
  const ProcessResult checkin = RunElsewhere({"checkin", uid});
  ASSERT_EQ(checkin.status, 0);
  const ProcessResult result = Run({"verify", server().Uid("D1001")});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, checkin.out) << "the newest iteration is what to go on with";
  EXPECT_EQ(result.err, "vtdirect: " + server().Uid("D1001") +
                            " is not checked out, and has a newer iteration; the checkout that was kept has "
                            "ended, and is dropped; \"vtdirect undo '" +
                            uid + "'\" clears away what may be left of its temporary workspace\n");
  EXPECT_EQ(Book(), bookHead);
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
}

TEST_F(Verify, FindsWhatIsKeptOfAnOlderIterationByTheDocumentsPath) {
  for (const std::string& address : {std::string(forkOnBench), path_}) {
    const std::string uid = CheckOut(address);
    const ProcessResult checkin = RunElsewhere({"checkin", uid});
    ASSERT_EQ(checkin.status, 0);
    const ProcessResult result = Run({"verify", address});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.out, checkin.out);
    EXPECT_THAT(result.err,
                HasSubstr("is not checked out, and has a newer iteration; the checkout that was kept "
                          "has ended, and is dropped"));
    EXPECT_EQ(Book(), bookHead);
  }
}

TEST_F(Verify, TellsThatADocumentInAWorkspaceIsNotCheckedOut) {
  const ProcessResult result = Run({"verify", forkOnBench});
  EXPECT_EQ(result.status, 1);
  EXPECT_EQ(result.out, server().Uid("D1001|W301") + "&file=/fork.lxz\n");
  EXPECT_EQ(result.err, "vtdirect: " + std::string(forkOnBench) + " is not checked out\n");
}

TEST_F(Verify, DropsWhatIsGoneFromAWorkspaceOfOnesOwn) {
  std::string uid = CheckOut(forkOnBench);
  ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
  const ProcessResult undone = Run({"verify", path_});
  EXPECT_EQ(undone.status, 1);
  EXPECT_EQ(undone.out, server().Uid("D1001|W301") + "&file=/fork.lxz\n");
  EXPECT_THAT(undone.err, HasSubstr("is not checked out; the checkout that was kept has ended"));
  EXPECT_EQ(Book(), bookHead);

  uid = CheckOut(forkOnBench);
  const ProcessResult checkin = RunElsewhere({"checkin", uid});
  ASSERT_EQ(checkin.status, 0);
  const ProcessResult checkedIn = Run({"verify", uid});
  EXPECT_EQ(checkedIn.status, 1);
  EXPECT_EQ(checkedIn.out, checkin.out);
  EXPECT_THAT(checkedIn.err, HasSubstr("is not checked out, and has a newer iteration; "));
  EXPECT_EQ(Book(), bookHead);
}

TEST_F(Verify, TellsOfWhatWasNeverCheckedOut) {
  const ProcessResult none = Run({"verify", path_});
  EXPECT_EQ(none.status, 1);
  EXPECT_EQ(none.out, server().Uid("D1001") + "&file=/fork.lxz\n");
  EXPECT_EQ(none.err, "vtdirect: " + path_ + " is not checked out\n");
  const ProcessResult brunos = Run({"verify", server().Uid("D1015")});
  EXPECT_EQ(brunos.status, 1);
  EXPECT_EQ(brunos.err, "vtdirect: " + server().Uid("D1015") + " is checked out by bruno\n");
  EXPECT_EQ(Book(), "");
}

TEST_F(Verify, DropsNothingForAServerThatCannotAnswer) {
  const std::string uid = CheckOut(path_);
  const std::string before = Book();
  Restart({"--fault", "* *=503"});
  for (const char* command : {"verify", "checkin", "undo"}) {
    const ProcessResult result = Run({command, uid});
    EXPECT_EQ(result.status, 3) << command;
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(Book(), before);
  }
  Restart({});
  EXPECT_EQ(Run({"verify", path_}).out, uid + "\n");
}

}  // namespace vtdirect_test
