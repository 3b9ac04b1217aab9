#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>

#include "tests/e2e/cli/edit_fixture.h"
#include "tests/e2e/cli/meddler.h"
#include "tests/e2e/cli/server_document.h"

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

namespace vtdirect_test {

TEST_F(Edit, StoresWhatWasEditedAndChecksItIn) {
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(Newest(), edited);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(Book(), bookHead);
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
  EXPECT_EQ(result.out, Run({"uid", forkPath}).out);
  EXPECT_THAT(result.err, HasSubstr("stored and checked in " + std::string(forkPath)));
  EXPECT_TRUE(std::filesystem::is_empty(Home(".local/state/vtdirect/edits")));
  EXPECT_THAT(KeptContents(), IsEmpty());
}

TEST_F(Edit, SaysThatTheMetadataGoesAndStoresWhatItIsGiven) {
  const auto metadataIn = [this](const ProcessResult& result) {
    std::string files;
    for (const SecondaryContent& content : DocumentOf(server(), IdIn(result.out)).secondary) {
      if (content.category == "VCSINFO") files += content.fileName;
    }
    return files;
  };
  const ProcessResult plain = Run({"edit", forkPath});
  EXPECT_EQ(plain.status, 0) << plain.err;
  EXPECT_THAT(plain.err, HasSubstr("warning: if " + std::string(forkPath) +
                                   " had metadata, what was stored now has none; give --metadata FILE"));
  EXPECT_EQ(metadataIn(plain), "");
  UseEditor("printf 'edited again\\n' > \"$1\"");
  WriteFile(Here("metadata.json"), "{}");
  const ProcessResult kept = Run({"edit", forkPath, "--metadata", "metadata.json"});
  EXPECT_EQ(kept.status, 0) << kept.err;
  EXPECT_THAT(kept.err, Not(HasSubstr("warning")));
  EXPECT_EQ(metadataIn(kept), "cad-metadata.json");
}

TEST_F(Edit, SaysNothingOfMetadataWhenNothingWasStored) {
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, Not(HasSubstr("metadata")));
}

TEST_F(Edit, SaysThatThereIsNoSuchEditorAndThatTheCheckoutWasUndone) {
  environment_["VISUAL"] = "no-such-editor";
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("the editor no-such-editor was not found; nothing was stored, and the "
                                    "checkout was undone; set VISUAL or EDITOR"));
  EXPECT_EQ(HolderOf("D1001"), "");
}

TEST_F(Edit, SaysNothingOfMetadataWhereTheServerTakesNone) {
  Restart({"--fault", "GET *GetHVDFeatures()=status:200:{\"value\":[]}"});
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, Not(HasSubstr("metadata")));
}

TEST_F(Edit, TellsWhetherItCouldAndChangesNothing) {
  environment_.erase("VISUAL");
  const ProcessResult result = Run({"edit", "--dry-run", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, "would edit\t" + std::string(forkPath) + "\n");
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_FALSE(std::filesystem::exists(Home(".local/state/vtdirect/edits")));
  EXPECT_EQ(Run({"edit", "--dry-run", "//sim/?id=D4711"}).status, 6);
}

TEST_F(Edit, GivesTheEditorTheDocumentsBytesUnderTheDocumentsName) {
  UseEditor("cp \"$1\" \"$HOME/seen\"; basename \"$1\" > \"$HOME/name\"");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(ReadFile(Home("seen")), server().Get(forkContent));
  EXPECT_EQ(ReadFile(Home("name")), "fork.lxz\n");
}

TEST_F(Edit, UndoesTheCheckoutWhenNothingWasChanged) {
  UseEditor("true");
  const std::string before = Newest();
  const ProcessResult result = Run({"edit", "--json", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.out, HasSubstr("\"action\":\"unchanged\",\"checked_in\":false,\"checked_out\":false}"));
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(TemporaryWorkspaces(), 0U);
  EXPECT_EQ(Newest(), before);
  EXPECT_THAT(Run({"versions", forkPath}).out, HasSubstr("B.1\t"));
  EXPECT_THAT(Run({"versions", forkPath}).out, Not(HasSubstr("B.2\t")));
}

// What it is made of would take a pattern for several documents.
TEST_F(Edit, TakesNoPattern) {
  const ProcessResult result = Run({"edit", "//sim/Products/Trekking Bike/Folders/Frame/f*k.lxz"});
  EXPECT_EQ(result.status, 6);
  EXPECT_THAT(result.err, HasSubstr("not found: "));
  EXPECT_EQ(Newest(), server().Get(forkContent));
  EXPECT_EQ(HolderOf("D1001"), "");
}

TEST_F(Edit, LeavesWhatWasCheckedOutBeforeCheckedOut) {
  CheckOut(forkPath);
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_EQ(Newest(), edited);
  EXPECT_THAT(result.err, HasSubstr("; it is checked out, as it was before"));
  UseEditor("true");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(HolderOf("D1001"), "anna");
}

TEST_F(Edit, TakesTheEditorOfEDITORWithoutVISUALAndNoneWithoutBoth) {
  environment_["EDITOR"] = environment_["VISUAL"];
  environment_.erase("VISUAL");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(Newest(), edited);
  environment_.erase("EDITOR");
  const std::string before = server().Log();
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 2);
  EXPECT_THAT(result.err, HasSubstr("set VISUAL or EDITOR"));
  EXPECT_EQ(server().Log(), before);
}

TEST_F(Edit, KeepsWhatWasEditedWhenTheEditorFails) {
  UseEditor("printf 'edited\\n' > \"$1\"; exit 3");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("ended with status 3; nothing was stored; what was edited is kept in " +
                                    Home(".local/state/vtdirect/edits/")));
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
  UseEditor("cp \"$1\" \"$HOME/seen\"");
  const ProcessResult second = Run({"edit", forkPath});
  EXPECT_EQ(second.status, 0) << second.err;
  EXPECT_EQ(ReadFile(Home("seen")), edited);
  EXPECT_EQ(Newest(), edited);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_THAT(KeptContents(), IsEmpty());
}

TEST_F(Edit, UndoesTheCheckoutWhenTheEditorCannotBeStarted) {
  environment_["VISUAL"] = "/no/such/editor";
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_THAT(KeptContents(), IsEmpty());
}

TEST_F(Edit, StoresNothingOverAVersionThatSomebodyHasMadeMeanwhile) {
  UseEditor("printf 'edited\\n' > \"$1\"; exit 3");
  EXPECT_EQ(Run({"edit", forkPath}).status, 1);
  EXPECT_EQ(Run({"undo", forkPath}).status, 0);
  WriteFile(Here("f"), "another's");
  EXPECT_EQ(Run({"put", "f", forkPath}).status, 0);
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("conflict: what was edited was made from version B.1, and the server has "
                                    "version B.2"));
  EXPECT_EQ(HolderOf("D1001"), "");
  EXPECT_EQ(Newest(), "another's");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

// The store went through and the check-in did not; then somebody has undone the checkout with all that was in it.
TEST_F(Edit, GoesOnWithWhatWasStoredInAWorkingCopyThatIsGone) {
  Restart({"--fault", "POST */checkin=409*1"});
  ASSERT_NE(Run({"edit", forkPath}).status, 0);
  ASSERT_THAT(KeptContents(), testing::ElementsAre(edited));
  const std::string book = Book();
  const std::size_t begin = book.find('\t') + 1;
  const std::string uid = book.substr(begin, book.find('\t', begin) - begin);
  ASSERT_EQ(RunElsewhere({"undo", uid}).status, 0);
  static_cast<void>(Run({"undo", uid}));
  UseEditor("true");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_THAT(result.err, HasSubstr("going on with the edit that is kept"));
  EXPECT_TRUE(Newest() == edited || KeptContents() == std::vector<std::string>{edited}) << result.err;
}

// An edit has no option for links, so the command that stores them is one of put, with the file that is kept.
TEST_F(Edit, TellsTheCommandThatStoresALinkThatTheServerHasNotTaken) {
  std::atomic<bool> isStored = false;
  const Meddler meddler([&](Peer& peer, const WireRequest& request, const Meddler::Forward& forward) {
    std::string answer = forward();
    if (request.target.ends_with("/store")) isStored = true;
    const std::size_t member = answer.find("derivedSourceDependencies");
    if (isStored && request.method == "GET" && member != std::string::npos) answer[member] = 'x';
    peer.Send(answer);
  });
  environment_["http_proxy"] = meddler.Url();
  const ProcessResult result = Run({"edit", forkPath});
  environment_.erase("http_proxy");
  EXPECT_EQ(result.status, 11);
  EXPECT_THAT(result.err, HasSubstr("\"vtdirect put '" + Home(".local/state/vtdirect/edits/")));
  EXPECT_THAT(result.err, HasSubstr("' --link 'frame.lxz=" + server().Uid("D1002") +
                                    "&file=/frame.lxz' --checkin\" stores it again with the link"));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

TEST_F(Edit, RefusesASecondEditOfADocumentAtTheSameTime) {
  UseEditor("touch \"$HOME/begun\"; while [ ! -e \"$HOME/end\" ]; do sleep 0.02; done");
  const auto first = Start({"edit", forkPath});
  ASSERT_TRUE(WaitUntil([this] { return std::filesystem::exists(Home("begun")); }));
  const ProcessResult second = Run({"edit", forkPath});
  EXPECT_EQ(second.status, 1);
  EXPECT_THAT(second.err, HasSubstr("another vtdirect edits this document now"));
  WriteHome("end", "", 0644);
  EXPECT_EQ(first->Wait().status, 0);
}

// Ctrl-C in an editor is the editor's.
TEST_F(Edit, IsNotEndedByAnInterruptAtTheTerminal) {
  UseEditor(
      "touch \"$HOME/begun\"; while [ ! -e \"$HOME/end\" ]; do sleep 0.02; done; printf 'edited\\n' > "
      "\"$1\"");
  const auto edit = Start({"edit", forkPath});
  ASSERT_TRUE(WaitUntil([this] { return std::filesystem::exists(Home("begun")); }));
  edit->Signal(SIGINT);
  SleepMilliseconds(400);
  ASSERT_TRUE(edit->Running());
  WriteHome("end", "", 0644);
  EXPECT_EQ(edit->Wait().status, 0);
  EXPECT_EQ(Newest(), edited);
}

TEST_F(Edit, SaysWhereTheFileIsWhenASignalEndsIt) {
  UseEditor(
      "printf 'edited\\n' > \"$1\"; touch \"$HOME/begun\"; while [ ! -e \"$HOME/end\" ]; do sleep 0.02; "
      "done");
  const auto edit = Start({"edit", forkPath});
  ASSERT_TRUE(WaitUntil([this] { return std::filesystem::exists(Home("begun")); }));
  edit->Signal(SIGTERM);
  const auto result = edit->Wait();
  WriteHome("end", "", 0644);
  EXPECT_EQ(result.status, 143);
  EXPECT_THAT(result.err,
              HasSubstr("is checked out, and what was edited is in " + Home(".local/state/vtdirect/edits/")));
  UseEditor("true");
  EXPECT_EQ(Run({"edit", forkPath}).status, 0);
  EXPECT_EQ(Newest(), edited);
  EXPECT_EQ(HolderOf("D1001"), "");
}

TEST_F(Edit, UndoesNoCheckoutWhenTheEditorLeavesAnotherFile) {
  for (const char* const end : {"0", "3"}) {
    UseEditor("printf 'edited\\n' > \"$(dirname \"$1\")/.fork.lxz.swp\"; exit " + std::string(end));
    const ProcessResult result = Run({"edit", forkPath});
    EXPECT_NE(result.status, 0);
    EXPECT_THAT(result.err, HasSubstr("what it has left is in " + Home(".local/state/vtdirect/edits/")));
    EXPECT_EQ(HolderOf("D1001"), "anna") << end;
    EXPECT_THAT(KeptContents(), testing::Contains(edited));
    // It has been told of, so it keeps nobody from ending the next edit.
    UseEditor("true");
    const ProcessResult next = Run({"edit", forkPath});
    EXPECT_EQ(next.status, 0) << next.err;
    EXPECT_THAT(next.err, HasSubstr("what the editor has left beside the file stays in "));
    EXPECT_EQ(HolderOf("D1001"), "");
    EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
    std::filesystem::remove_all(Home(".local/state/vtdirect/edits"));
  }
}

TEST_F(Edit, UndoesNoCheckoutWhenTheEditorHasMovedTheFileAway) {
  UseEditor("printf 'edited\\n' > \"$1.saved\"; rm \"$1\"");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 8);
  EXPECT_THAT(result.err, HasSubstr("that can be read; nothing was stored, and " + std::string(forkPath) +
                                    " stays checked out; what it has left is in "));
  EXPECT_EQ(HolderOf("D1001"), "anna");
  EXPECT_THAT(KeptContents(), testing::ElementsAre(edited));
}

TEST_F(Edit, UndoesNoCheckoutWhenTheFileIsGoneOrCannotBeRead) {
  for (const char* const script : {"rm \"$1\"; exit 3", "rm \"$1\"; mkdir \"$1\"; exit 3"}) {
    UseEditor(script);
    EXPECT_EQ(Run({"edit", forkPath}).status, 1);
    EXPECT_EQ(HolderOf("D1001"), "anna") << script;
    EXPECT_EQ(Run({"undo", forkPath}).status, 0);
    std::filesystem::remove_all(Home(".local/state/vtdirect/edits"));
  }
}

TEST_F(Edit, KeepsOtherFilesOfTheEditorWhenItHasStored) {
  UseEditor("cp \"$1\" \"$1~\"; touch \"$(dirname \"$1\")/.vtdirect-killed\"; printf 'edited\\n' > \"$1\"");
  const ProcessResult result = Run({"edit", forkPath});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(KeptContents(), testing::ElementsAre(server().Get(forkContent)));
  EXPECT_EQ(Newest(), edited);
}

/// Every request of an edit fails in every way, and the program is killed before and after each. Afterwards what
/// was edited is on the server or in the file that is kept, and the same command, given again, brings it there.
class LosingNoEdit : public Edit {
 protected:
  void ExpectNothingIsLost() {
    const bool wasEdited = std::filesystem::exists(Home(".local/edited"));
    const std::vector<std::string> kept = KeptContents();
    const bool isKept = std::find(kept.begin(), kept.end(), edited) != kept.end();
    const bool isOnServer = Newest() == edited;
    const bool isTold = result_.err.find("/edits/") != std::string::npos;
    EXPECT_TRUE(!wasEdited || isKept || isOnServer) << result_.err;
    // Of a killed program nobody can be told anything.
    EXPECT_TRUE(isOnServer || !isKept || isTold || result_.status <= 0) << result_.err;
    const ProcessResult again = Run({"edit", forkPath});
    EXPECT_EQ(again.status, 0) << result_.err << "then\n" << recovered_.err << "then\n" << again.err;
    EXPECT_EQ(Newest(), edited);
    EXPECT_THAT(KeptContents(), IsEmpty());
    // A checkout that only recover has found may be the user's own, and so it stays.
    const bool isHeld = HolderOf("D1001") == "anna";
    EXPECT_TRUE(!isHeld || Run({"checkin", forkPath}).status == 0);
    EXPECT_EQ(Newest(), edited);
    std::filesystem::remove(Home(".local/edited"));
  }
};

TEST_F(LosingNoEdit, WhicheverRequestFailsInWhicheverWay) {
  UseEditor("printf 'edited\\n' > \"$1\"; touch \"$HOME/.local/edited\"");
  KeepBeginning();
  MeetEveryAccident({"edit", forkPath}, [this] {
    ExpectRecovery();
    ExpectNothingIsLost();
  });
}

}  // namespace vtdirect_test
