#include <atomic>

#include "tests/e2e/cli/edit_fixture.h"
#include "tests/e2e/cli/meddler.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace vtdirect_test {

/// What others do while the editor is open, or between two runs that go on with one edit: their work is neither stored
/// over nor thrown away, and what the server does not tell is not taken for done.
class EditMeanwhile : public Edit {};

TEST_F(EditMeanwhile, UndoesNoCheckoutIntoWhichSomethingWasStoredMeanwhile) {
  const auto edit = StartInOpenEditor("true");
  Put("another's");
  const ProcessResult result = Close(*edit);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr("so the checkout was not undone; "));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), IsEmpty());
}

TEST_F(EditMeanwhile, UndoesNoCheckoutIntoWhichSomethingWasStoredAfterAnEditorThatFailed) {
  const auto edit = StartInOpenEditor("exit 3");
  Put("another's");
  EXPECT_EQ(Close(*edit).status, 1);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Newest(), "another's");
}

TEST_F(EditMeanwhile, StoresNothingOverWhatWasStoredMeanwhile) {
  const auto edit = StartInOpenEditor("printf 'edited\\n' > \"$1\"");
  Put("another's");
  const ProcessResult result = Close(*edit);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("conflict: something else was stored in the working copy "));
  EXPECT_THAT(result.err, HasSubstr("what was edited is kept in "));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
  UseEditor("touch \"$HOME/opened\"");
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  EXPECT_FALSE(std::filesystem::exists(Home("opened"))) << "what can't be stored is not edited either";
  EXPECT_EQ(Newest(), "another's");
}

TEST_F(EditMeanwhile, StoresNothingInTheUsersOwnCheckoutOverWhatWasStoredMeanwhile) {
  CheckOut(forkPath);
  const auto edit = StartInOpenEditor("printf 'edited\\n' > \"$1\"");
  Put("another's");
  EXPECT_EQ(Close(*edit).status, 1);
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

TEST_F(EditMeanwhile, StoresNothingOverAVersionOfACheckoutThatWasEndedMeanwhile) {
  const auto edit = StartInOpenEditor("printf 'edited\\n' > \"$1\"");
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  Put("another's");
  const ProcessResult result = Close(*edit);
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr(" has ended; nothing was stored; what was edited is kept in "));
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

TEST_F(EditMeanwhile, DoesNotUndoWhenWhatIsInTheWorkingCopyIsNotTold) {
  const Meddler meddler([this](Peer& peer, const WireRequest&, const Meddler::Forward& forward) {
    if (std::filesystem::exists(Home("end"))) return peer.Answer(503, "{}");
    peer.Send(forward());
  });
  environment_["http_proxy"] = meddler.Url();
  const auto edit = StartInOpenEditor("true");
  const ProcessResult result = Close(*edit);
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("what is in the working copy "));
  EXPECT_THAT(result.err, HasSubstr(" stays checked out"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  UseEditor("true");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(HolderOf("D1001"), "") << "it is this edit's checkout all the same";
}

// A signal has ended the edit that had checked the document out.
TEST_F(EditMeanwhile, EndsNoCheckoutButItsOwn) {
  EndBySignal(*StartInOpenEditor("true"));
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  CheckOut(forkPath);
  Put("another's");
  environment_["VISUAL"] = "/no/such/editor";
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  UseEditor("true");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Newest(), "another's");
  UseEditor("printf 'edited\\n' > \"$1\"");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_THAT(result.err, HasSubstr("; it is checked out, as it was before"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
}

TEST_F(EditMeanwhile, UndoesNotItsOwnCheckoutWhenSomethingWasStoredBetweenTwoEdits) {
  EndBySignal(*StartInOpenEditor("true"));
  Put("another's");
  UseEditor("true");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Newest(), "another's");
}

TEST_F(EditMeanwhile, StoresNothingOverAVersionThatAnotherCheckoutBeganWith) {
  UseEditor("printf 'edited\\n' > \"$1\"; exit 3");
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  Put("another's");
  CheckOut(forkPath);
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("conflict: what was edited was made from version B.1, and the server has "
                                    "version B.2"));
  EXPECT_NE(Book(), bookHead);
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

// What was stored is in no version, so the file's own record tells none.
TEST_F(EditMeanwhile, StoresNothingOverAVersionMadeAfterItsCheckInHadFailed) {
  Restart({"--fault", "POST */checkin=409*1"});
  ASSERT_NE(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  Put("another's");
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("conflict: what was edited was made from version B.1"));
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

TEST_F(EditMeanwhile, TellsHowToGoOnWhenItsCheckoutHasEndedElsewhere) {
  UseEditor("printf 'edited\\n' > \"$1\"; exit 3");
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  const std::string book = Book();
  const std::size_t begin = book.find('\t') + 1;
  const std::string uid = book.substr(begin, book.find('\t', begin) - begin);
  ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("the checkout " + uid + " has ended; nothing was stored; "));
  EXPECT_THAT(result.err, HasSubstr(" clears it away; what was edited is kept in "));
  EXPECT_EQ(Run({"undo", uid}).status, 0);
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(Newest(), edited);
}

TEST_F(EditMeanwhile, LeavesAnotherCheckoutOfTheSameVersionCheckedOut) {
  UseEditor("printf 'edited\\n' > \"$1\"; exit 3");
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  CheckOut(forkPath);
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Newest(), edited);
  EXPECT_EQ(HolderOf("D1001"), "anna");
}

// Nobody has stored in the second checkout, though the first one was stored in.
TEST_F(EditMeanwhile, GoesOnInAnotherCheckoutAfterItsCheckInWasRefused) {
  Restart({"--fault", "POST *checkin=409"});
  UseEditor("printf 'edited\\n' > \"$1\"");
  EXPECT_NE(Run({"edit", forkPath}).status, 0);
  Restart({});
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  CheckOut(forkPath);
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Run({"get", forkPath, "-o", "-"}).out, edited);
}

TEST_F(EditMeanwhile, ChangesNothingWhenTheServerDoesNotTellWhetherAnEditIsKept) {
  const std::string uid = server().Uid("D1001");
  UseEditor("printf 'edited\\n' > \"$1\"; exit 3");
  EXPECT_EQ(Run({"edit", uid}).status, 1);
  EXPECT_EQ(Run({"undo", uid}).status, 0);
  int refusals = 0;
  for (int failing = 1; failing < 6; ++failing) {
    std::atomic<int> requests = 0;
    const Meddler meddler([&](Peer& peer, const WireRequest&, const Meddler::Forward& forward) {
      if (requests++ < failing) return peer.Answer(503, "{}");
      peer.Send(forward());
    });
    environment_["http_proxy"] = meddler.Url();
    UseEditor("cp \"$1\" \"$HOME/seen\"; exit 3");
    const ProcessResult result = Run({"edit", uid});
    environment_.erase("http_proxy");
    if (result.err.find("is kept could not be found out") != std::string::npos) {
      EXPECT_THAT(result.err, HasSubstr("; nothing was changed; "));
      ++refusals;
    }
    if (std::filesystem::exists(Home("seen"))) {
      EXPECT_EQ(ReadFile(Home("seen")), edited) << failing << result.err;
      std::filesystem::remove(Home("seen"));
      EXPECT_EQ(Run({"undo", uid}).status, 0);
    }
    EXPECT_EQ(HolderOf("D1001"), "");
  }
  EXPECT_GT(refusals, 0);
}

// A proxy answers with a page of its own, and the server has never seen the check-in.
TEST_F(EditMeanwhile, KeepsItsFileWhenTheAnswerToTheCheckInNamesNoDocument) {
  const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    if (request.target.ends_with("/checkin")) return peer.Answer(200, "<html>Log in first</html>");
    peer.Send(forward());
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"edit", forkPath});
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(result.err, Not(HasSubstr("stored and checked in " + std::string(forkPath))));
  EXPECT_THAT(result.err, HasSubstr("what was edited is kept in " + Home(".local/state/vtdirect/edits/")));
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
  static_cast<void>(Run({"undo", forkPath}));
  UseEditor("true");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(Newest(), edited);
}

TEST_F(EditMeanwhile, KeepsItsFileWhenTheAnswerToALaterCheckInNamesNoDocument) {
  Restart({"--fault", "POST */checkin=409*1"});
  ASSERT_NE(Run({"edit", forkPath}).status, 0);
  UseEditor("true");
  const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    if (request.target.ends_with("/checkin")) return peer.Answer(200, "<html>Log in first</html>");
    peer.Send(forward());
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"edit", forkPath});
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 11) << result.err;
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
  static_cast<void>(Run({"undo", forkPath}));
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(Newest(), edited);
}

TEST_F(EditMeanwhile, LosesNothingWhenAPageTakesThePlaceOfTheAnswerToTheCheckIn) {
  const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    const std::string answer = forward();
    if (request.target.ends_with("/checkin")) return peer.Answer(200, "<html>Log in first</html>");
    peer.Send(answer);
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"edit", forkPath});
  environment_.erase("http_proxy");
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(Newest(), edited);
  EXPECT_TRUE(result.status == 0 || KeptContents() == std::vector<std::string>{edited}) << result.err;
}

}  // namespace vtdirect_test
