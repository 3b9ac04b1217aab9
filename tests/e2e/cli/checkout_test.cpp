#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/e2e/cli/checkout_fixture.h"

using testing::HasSubstr;
using testing::MatchesRegex;

namespace vtdirect_test {

class CheckoutOfADocument : public CheckoutTest {
 protected:
  void SetUp() override { Serve(); }

  ProcessResult Refuse(const std::vector<std::string>& words, int status = 1) {
    const std::string before = Book();
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, status) << testing::PrintToString(words);
    EXPECT_EQ(result.out, "");
    EXPECT_EQ(Book(), before);
    return result;
  }

  [[nodiscard]] std::string Fork(const std::string& id = "D1001") const {
    return server().Uid(id) + "&file=/fork.lxz";
  }
};

TEST_F(CheckoutOfADocument, PrintsAndKeepsTheUidOfTheWorkingCopy) {
  const ProcessResult result = Run({"checkout", forkPath});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, MatchesRegex(TemporaryUid("D1001", "fork.lxz") + "\n"));
  EXPECT_EQ(result.err, "vtdirect: checked out " + std::string(forkPath) +
                            "; put, checkin and undo find its working copy by this address as well\n");
  const std::string uid = result.out.substr(0, result.out.size() - 1);
  EXPECT_EQ(Book().substr(0, Book().rfind('\t')), bookHead + Fork() + "\t" + uid + "\tfork.lxz\tanna");
  EXPECT_THAT(Book().substr(Book().rfind('\t')),
              MatchesRegex("\t20[0-9]{2}-[01][0-9]-[0-3][0-9]T[0-2][0-9]:[0-5][0-9]:[0-5][0-9]Z\n"));
  struct stat facts = {};
  ASSERT_EQ(stat(BookPath().c_str(), &facts), 0);
  EXPECT_EQ(facts.st_mode & 0777U, 0600U);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(TemporaryWorkspaces(), 1U);
}

TEST_F(CheckoutOfADocument, EndsInACheckInByTheDocumentsAddress) {
  for (int round = 0; round < 3; ++round) {
    const std::string line = Run({"uid", forkPath}).out;
    const std::string document = line.substr(0, line.find('\n'));
    const std::string bare = document.substr(0, document.find('&'));
    CheckOut(forkPath);
    const ProcessResult result = Run({"checkin", round == 0 ? forkPath : round == 1 ? document : bare});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, Run({"uid", forkPath}).out);
    EXPECT_EQ(Book(), bookHead);
    EXPECT_EQ(TemporaryWorkspaces(), 0U);
  }
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_THAT(Run({"status", forkPath}).out, HasSubstr("up-to-date\tB.4\tB.4\tnone\t"));
}

TEST_F(CheckoutOfADocument, TellsTheVersionThatACheckInHasMade) {
  CheckOut(forkPath);
  const ProcessResult result = Run({"checkin", forkPath});
  EXPECT_EQ(result.err, "vtdirect: checked in " + std::string(forkPath) + "; it is version B.2 now\n");
  EXPECT_THAT(Run({"status", server().Uid("D1001")}).out, HasSubstr("outdated\tB.1\tB.2\t"));
}

TEST_F(CheckoutOfADocument, EndsInAnUndoThatLeavesTheDocumentAsItWas) {
  for (const std::string& address : {std::string(forkPath), Fork(), server().Uid("D1001")}) {
    CheckOut(forkPath);
    const ProcessResult result = Run({"undo", address});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_EQ(result.out, Fork() + "\n");
    EXPECT_EQ(result.err, "vtdirect: undid the checkout of " + address + "; it is version B.1 now\n");
    EXPECT_EQ(Book(), bookHead);
    EXPECT_EQ(HolderOf("D1001"), "");
    EXPECT_EQ(TemporaryWorkspaces(), 0U);
  }
}

TEST_F(CheckoutOfADocument, EndsByTheUidOfItsWorkingCopyWithoutWhatIsKeptToo) {
  const std::string first = CheckOut(forkPath);
  EXPECT_EQ(RunElsewhere({"undo", first}).out, Fork() + "\n");
  EXPECT_EQ(HolderOf("D1001"), "");
  const std::string second = CheckOut(forkPath);
  const ProcessResult result = RunElsewhere({"checkin", second});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(Run({"status", forkPath}).out, HasSubstr("up-to-date\tB.2\tB.2\tnone\t"));
}

TEST_F(CheckoutOfADocument, GoesToAWorkspaceOfOnesOwnByThePathThere) {
  const std::string uid = CheckOut(forkOnBench);
  EXPECT_THAT(uid, MatchesRegex("korvufenloom-vt://" + server().authority() +
                                "/\\?id=D[0-9]+\\|W301&file=/fork.lxz"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
  EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\tfork.lxz\tanna\t"));

  const ProcessResult result = Run({"checkin", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, MatchesRegex("korvufenloom-vt://" + server().authority() +
                                       "/\\?id=D[0-9]+\\|W301&file=/fork.lxz\n"));
  EXPECT_EQ(Book(), bookHead);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_THAT(Run({"status", forkPath}).out, HasSubstr("\tB.2\tB.2\t"));
}

TEST_F(CheckoutOfADocument, InAWorkspaceOfOnesOwnIsUndoneThere) {
  CheckOut(forkOnBench);
  const ProcessResult result = Run({"undo", forkOnBench});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, server().Uid("D1001|W301") + "&file=/fork.lxz\n");
  EXPECT_EQ(Book(), bookHead);
  EXPECT_EQ(HolderOf("D1001"), "");
}

TEST_F(CheckoutOfADocument, ThatWasMadeByOtherMeansEndsByTheIdOfItsWorkingCopy) {
  const ProcessResult result = Run({"checkin", "//sim/?id=D1026"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "vtdirect: checked in //sim/?id=D1026; it is version A.2 now\n");
  EXPECT_EQ(HolderOf("D1016"), "");
  EXPECT_THAT(Run({"status", server().Uid("D1016")}).out, HasSubstr("outdated\tA.1\tA.2\t"));
}

TEST_F(CheckoutOfADocument, ThatOneHasAlreadyTellsItsWorkingCopy) {
  const std::string uid = CheckOut(forkPath);
  const ProcessResult result = Refuse({"checkout", forkPath});
  EXPECT_EQ(result.err, "vtdirect: you have " + std::string(forkPath) +
                            " checked out already; its working copy is " + uid +
                            "; nothing was changed; go on with that, or \"vtdirect undo '" + uid +
                            "'\" gives it up\n");
  EXPECT_THAT(Refuse({"checkout", server().Uid("D1016")}).err,
              HasSubstr("checked out already, and its working copy is not kept here; nothing was changed; "
                        "\"vtdirect browse-url '" +
                        server().Uid("D1016") + "&file=/crank.lxz'\""));
}

TEST_F(CheckoutOfADocument, IsRefusedForAnOlderIterationWithTheNewest) {
  EXPECT_EQ(Refuse({"checkout", server().Uid("D1101")}).err,
            "vtdirect: " + server().Uid("D1101") +
                " is not the newest iteration; nothing was changed; "
                "\"vtdirect checkout '" +
                Fork() + "'\" checks out that one\n");
}

TEST_F(CheckoutOfADocument, IsRefusedForTheUidOfAWorkingCopyThatIsGone) {
  const std::string uid = CheckOut(forkPath);
  ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
  EXPECT_THAT(Refuse({"checkout", uid}).err, HasSubstr("is not there any more; nothing was changed; "
                                                       "\"vtdirect verify '" +
                                                       uid + "'\""));
  EXPECT_EQ(HolderOf("D1001"), "");
}

TEST_F(CheckoutOfADocument, IsRefusedWhereThereIsNone) {
  for (const char* command : {"checkout", "checkin", "undo", "verify"}) {
    EXPECT_THAT(Refuse({command, server().Uid("D9999")}, 6).err, HasSubstr("not found")) << command;
    Refuse({command, "//sim/Products/Trekking Bike/Folders/Frame/none.lxz"}, 6);
    Refuse({command, "//other/x"}, 9);
    Refuse({command, "nonsense"}, 2);
    Refuse({command}, 2);
  }
  for (const char* command : {"checkout", "checkin", "undo"}) {
    for (const char* folder : {"//sim/Products/Trekking Bike/Folders/Frame", "//sim/Products/"}) {
      EXPECT_THAT(Refuse({command, folder}).err,
                  HasSubstr(std::string(folder) + " is a folder, and only documents have working copies"));
    }
  }
}

TEST_F(CheckoutOfADocument, CannotEndWhereThereIsNone) {
  for (const char* command : {"checkin", "undo"}) {
    EXPECT_EQ(Refuse({command, forkPath}).err,
              "vtdirect: " + std::string(forkPath) + " is not checked out; nothing was changed\n");
    EXPECT_THAT(
        Refuse({command, server().Uid("D1016")}).err,
        HasSubstr("checked out, but its working copy is not kept here; nothing was changed; give the UID "
                  "of the working copy"));
  }
  EXPECT_EQ(HolderOf("D1016"), "anna");
}

TEST_F(CheckoutOfADocument, NeitherBeginsNorEndsByAPathWhereTheDocumentDoesNotStand) {
  const std::string wrong = "//sim/Products/Trekking Bike/Folders/Frame/gear.lxz";
  EXPECT_EQ(Run({"checkout", wrong}).status, 6);
  EXPECT_EQ(HolderOf("D1003"), "");
  CheckOut("//sim/Products/Trekking Bike/Folders/Drivetrain/gear.lxz");
  for (const char* command : {"checkin", "undo", "verify"}) {
    const ProcessResult result = Run({command, wrong});
    EXPECT_EQ(result.status, 6);
    EXPECT_THAT(result.err, HasSubstr(", is in korvufenloom-vfs://sim/Products/Trekking "
                                      "Bike/Folders/Drivetrain/; nothing was changed"));
  }
  EXPECT_EQ(HolderOf("D1003"), "anna");
}

TEST_F(CheckoutOfADocument, UndoesNothingOfWhatWasCheckedIn) {
  const std::string uid = CheckOut(forkPath);
  ASSERT_EQ(RunElsewhere({"checkin", uid}).status, 0);
  const std::string newest = Run({"uid", forkPath}).out;
  for (int times = 0; times < 2; ++times) {
    const ProcessResult result = Run({"undo", uid});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out, newest);
    EXPECT_EQ(result.err, "vtdirect: the checkout of " + uid +
                              " had ended before, and nothing was undone; it is version B.2 now\n");
    EXPECT_EQ(Book(), bookHead);
  }
  EXPECT_THAT(Run({"--json", "undo", uid}).out, HasSubstr("\"had_ended\":true"));
}

TEST_F(CheckoutOfADocument, IsNotUndoneByTheUidOfTheOneBefore) {
  const std::string first = CheckOut(forkPath);
  ASSERT_EQ(Run({"checkin", first}).status, 0);
  const std::string second = CheckOut(forkPath);
  const ProcessResult result = RunElsewhere({"undo", first});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr(" had ended before, and nothing was undone"));
  EXPECT_THAT(Run({"verify", second}).out, HasSubstr(second));
  EXPECT_EQ(TemporaryWorkspaces(), 1U);
}

TEST_F(CheckoutOfADocument, HasAnOddNameAllTheWay) {
  const std::string name = "odd%7c%5c%2f%3c%3e%3a%22%3f%2a%25name.lxz";
  const std::string path = "//sim/Products/Trekking Bike/Folders/Drivetrain/" + name;
  const std::string uid = CheckOut(path);
  EXPECT_THAT(Book(), HasSubstr("\t" + uid + "\t" + name + "\tanna\t"));
  EXPECT_THAT(Run({"checkouts"}).out, HasSubstr("\tanna\t" + name + "\t" + uid + "\n"));
  EXPECT_EQ(Run({"verify", path}).out, uid + "\n");
  EXPECT_EQ(Run({"checkin", path}).status, 0);
  EXPECT_EQ(Book(), bookHead);

  const std::string umlauts = "//sim/Products/Trekking Bike/Folders/Größen & Maße/Größentabelle Rahmen.lxz";
  CheckOut(umlauts);
  EXPECT_THAT(Run({"checkouts"}).out, HasSubstr("\tanna\tGrößentabelle Rahmen.lxz\t"));
  EXPECT_EQ(Run({"undo", umlauts}).status, 0);
  EXPECT_EQ(Book(), bookHead);
}

class CheckoutInEachGeneration : public CheckoutTest, public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(Generations, CheckoutInEachGeneration,
                         testing::Values("gateway", "schema1", "schema4", "schema5"));

TEST_P(CheckoutInEachGeneration, IsFoundByPathAndUidUntilItEnds) {
  Serve({"--generation", GetParam()});
  const std::string uid = CheckOut(forkPath);
  EXPECT_EQ(Run({"verify", forkPath}).out, uid + "\n");
  EXPECT_EQ(Run({"verify", server().Uid("D1001")}).out, uid + "\n");
  EXPECT_EQ(Run({"verify", uid}).out, uid + "\n");
  EXPECT_EQ(Run({"undo", forkPath}).out, server().Uid("D1001") + "&file=/fork.lxz\n");
  CheckOut(forkPath);
  EXPECT_EQ(Run({"checkin", forkPath}).status, 0);
  EXPECT_EQ(Book(), bookHead);
  EXPECT_THAT(Run({"status", forkPath}).out, HasSubstr("up-to-date\tB.2\tB.2\tnone\t"));
}

}  // namespace vtdirect_test
