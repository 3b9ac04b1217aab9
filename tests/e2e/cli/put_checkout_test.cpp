#include <gmock/gmock.h>

#include "tests/e2e/cli/put_fixture.h"

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::Pair;
using testing::SizeIs;

namespace vtdirect_test {
namespace {

const std::string frameFolder = "//sim/Products/Trekking Bike/Folders/Frame/";
const std::string framePath = frameFolder + "frame.lxz";

}  // namespace

/// Stores into a checkout in a temporary workspace, which the program keeps.
class PutIntoCheckout : public PutTest {
 protected:
  void Checkout(const std::string& address, const std::vector<std::string>& options = {}) {
    Serve(options);
    WriteFile(Here("f"), "content");
    WriteFile(Here("view"), "viewable");
    WriteFile(Here("meta"), "metadata");
    const ProcessResult result = Run({"checkout", address});
    ASSERT_EQ(result.status, 0) << result.err;
    copy_ = result.out.substr(0, result.out.size() - 1);
  }

  [[nodiscard]] std::string Book() const { return ReadFile(Home(".local/state/vtdirect/checkouts")); }
  /// The id of the working copy: the third of "document|workspace|copy|T".
  [[nodiscard]] std::string CopyId() const {
    const std::size_t second = copy_.find('|', copy_.find('|') + 1);
    return copy_.substr(second + 1, copy_.find('|', second + 1) - second - 1);
  }

  std::string copy_;  ///< UID of the working copy
};

TEST_F(PutIntoCheckout, LeavesItCheckedOutUnlessToldToCheckIn) {
  Checkout(framePath);
  const ProcessResult stored = Run({"put", "f", framePath});
  EXPECT_EQ(stored.status, 0) << stored.err;
  EXPECT_EQ(stored.out, copy_ + "\n");
  EXPECT_EQ(DocumentOf(server(), CopyId()).bytes, "content");
  EXPECT_EQ(DocumentOf(server(), "D1002").checkedOutBy, "anna");
  EXPECT_THAT(Book(), HasSubstr(CopyId()));

  WriteFile(Here("f"), "second content");
  const ProcessResult again = Run({"put", "f", server().Uid("D1002"), "--language", "de"});
  EXPECT_EQ(again.out, copy_ + "\n");

  WriteFile(Here("f"), "third content");
  const ProcessResult checkedIn = Run({"put", "f", frameFolder + "frame.lxz", "--checkin", "--json"});
  EXPECT_EQ(checkedIn.status, 0) << checkedIn.err;
  EXPECT_THAT(checkedIn.out, HasSubstr("\"checked_in\":true,\"checkout\":\"none\"}"));
  const ServerDocument document = DocumentOf(server(), IdIn(checkedIn.out));
  EXPECT_EQ(document.version, "A.4");
  EXPECT_EQ(document.bytes, "third content");
  EXPECT_EQ(document.attributes.at("ZVK_DD_LANGUAGE"), "de");
  EXPECT_EQ(document.checkedOutBy, "");
  EXPECT_THAT(Book(), Not(HasSubstr(CopyId())));
  EXPECT_EQ(Content(framePath), "third content");
}

TEST_F(PutIntoCheckout, StoresAllThereIsAndLeavesItCheckedOut) {
  Checkout(framePath);
  const std::string before = DocumentOf(server(), "D1002").bytes;
  const ProcessResult stored = Run({"put", "f", framePath, "--viewable", "view", "--metadata", "meta",
                                    "--language", "de", "--link", "gear=" + server().Uid("D1003")});
  EXPECT_EQ(stored.status, 0) << stored.err;
  EXPECT_EQ(stored.out, copy_ + "\n");
  EXPECT_THAT(stored.err, Not(HasSubstr("warning")));
  const ServerDocument copy = DocumentOf(server(), CopyId());
  EXPECT_EQ(copy.bytes, "content");
  ASSERT_THAT(copy.secondary, SizeIs(2));
  EXPECT_EQ(copy.secondary[0].bytes, "viewable");
  EXPECT_EQ(copy.secondary[1].bytes, "metadata");
  EXPECT_THAT(copy.sources, ElementsAre(Pair("gear", "D1003")));
  EXPECT_EQ(DocumentOf(server(), "D1002").bytes, before);
  EXPECT_EQ(DocumentOf(server(), "D1002").checkedOutBy, "anna");
  EXPECT_THAT(Book(), HasSubstr("\t" + copy_ + "\t"));
  EXPECT_EQ(Run({"links", framePath}).out, "gear\t" + server().Uid("D1003") + "&file=/gear.lxz\n");

  const std::string checkedIn = Run({"checkin", framePath}).out;
  const ServerDocument document = DocumentOf(server(), IdIn(checkedIn));
  EXPECT_EQ(document.version, "A.4");
  EXPECT_EQ(document.bytes, "content");
  EXPECT_THAT(document.secondary, SizeIs(2));
  EXPECT_THAT(document.sources, ElementsAre(Pair("gear", "D1003")));
  EXPECT_EQ(document.checkedOutBy, "");
}

// What the document was when it was checked out does not count any more.
TEST_F(PutIntoCheckout, KeepsTheLinksThatTheWorkingCopyHasByNow) {
  Checkout(framePath);
  ASSERT_EQ(Run({"put", "f", framePath, "--link", "gear=" + server().Uid("D1003")}).status, 0);
  WriteFile(Here("f"), "second content");
  EXPECT_EQ(Run({"put", "f", framePath}).out, copy_ + "\n");
  EXPECT_EQ(DocumentOf(server(), CopyId()).bytes, "second content");
  EXPECT_THAT(DocumentOf(server(), CopyId()).sources, ElementsAre(Pair("gear", "D1003")));
  EXPECT_EQ(Run({"put", "f", framePath, "--link", "gear="}).out, copy_ + "\n");
  EXPECT_THAT(DocumentOf(server(), CopyId()).sources, IsEmpty());
  EXPECT_EQ(DocumentOf(server(), "D1002").checkedOutBy, "anna");
}

TEST_F(PutIntoCheckout, WithAViewableThatFailsAtTheStoreLeavesTheCheckout) {
  Checkout(framePath, {"--fault", "POST */store=503*1"});
  const ProcessResult failed = Run({"put", "f", framePath, "--viewable", "view"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.err, HasSubstr("storing into the working copy " + copy_ + " from f failed"));
  EXPECT_THAT(failed.err,
              HasSubstr("; you still have it checked out, and whether the file is stored in it is "
                        "not known; the same command can be given again"));
  EXPECT_EQ(Run({"put", "f", framePath, "--viewable", "view"}).out, copy_ + "\n");
}

// The library asks a search whether it has a working copy before it. Without an answer it must not take the
// copy for a document and iterate or check it in.
TEST_F(PutIntoCheckout, WithAViewableNeedsNoSearchForTheCopy) {
  Checkout(framePath, {"--fault", "GET *documents/search*=503"});
  const ProcessResult stored = Run({"put", "f", framePath, "--viewable", "view"});
  EXPECT_EQ(stored.status, 0) << stored.err;
  EXPECT_EQ(DocumentOf(server(), CopyId()).bytes, "content");
  EXPECT_THAT(DocumentOf(server(), CopyId()).secondary, SizeIs(1));
  EXPECT_EQ(DocumentOf(server(), "D1002").checkedOutBy, "anna");
  EXPECT_EQ(DocumentOf(server(), "D1002").version, "A.3");
  EXPECT_THAT(Book(), HasSubstr("\t" + copy_ + "\t"));
}

TEST_F(PutIntoCheckout, StoresAllThereIsTogetherWithTheCheckIn) {
  Checkout(framePath);
  const ProcessResult result =
      Run({"put", "f", framePath, "--viewable", "view", "--metadata", "meta", "--language", "de", "--link",
           "gear=" + server().Uid("D1003"), "--checkin"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_THAT(result.err, HasSubstr(", and checked in\n"));
  const ServerDocument document = DocumentOf(server(), IdIn(result.out));
  EXPECT_EQ(document.version, "A.4");
  EXPECT_EQ(document.bytes, "content");
  ASSERT_THAT(document.secondary, SizeIs(2));
  EXPECT_EQ(document.secondary[0].bytes, "viewable");
  EXPECT_EQ(document.secondary[1].bytes, "metadata");
  EXPECT_EQ(document.attributes.at("ZVK_DD_LANGUAGE"), "de");
  EXPECT_THAT(document.sources, ElementsAre(Pair("gear", "D1003")));
  EXPECT_EQ(document.checkedOutBy, "");
  EXPECT_THAT(Book(), Not(HasSubstr(CopyId())));
}

TEST_F(PutIntoCheckout, KeepsTheLinksOfADocumentThatHasSome) {
  Checkout(frameFolder + "fork.lxz");
  EXPECT_EQ(Run({"put", "f", frameFolder + "fork.lxz"}).out, copy_ + "\n");
  EXPECT_THAT(DocumentOf(server(), CopyId()).sources, ElementsAre(Pair("frame.lxz", "D1002")));
  const ProcessResult result = Run({"put", "f", frameFolder + "fork.lxz", "--checkin"});
  EXPECT_EQ(result.status, 0) << result.err;
  const ServerDocument document = DocumentOf(server(), IdIn(result.out));
  EXPECT_EQ(document.bytes, "content");
  EXPECT_THAT(document.sources, ElementsAre(Pair("frame.lxz", "D1002")));
  EXPECT_EQ(document.attributes.at("ZVK_DD_PAINT"), "Nachtblau");
}

TEST_F(PutIntoCheckout, OfAnotherKindStoresTheContentAlone) {
  Checkout(framePath);
  const ProcessResult result = Run({"put", "f", framePath, "--kind", "general", "--force"});
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.out, copy_ + "\n");
  EXPECT_EQ(DocumentOf(server(), CopyId()).bytes, "content");
}

TEST_F(PutIntoCheckout, ThatFailsAtTheStoreLeavesTheCheckout) {
  Checkout(framePath, {"--fault", "POST */store=503*1"});
  const ProcessResult failed = Run({"put", "f", framePath, "--checkin"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.err, HasSubstr("storing into the working copy " + copy_ + " from f failed"));
  EXPECT_THAT(failed.err, HasSubstr("; you still have it checked out, and whether the file is stored"));
  EXPECT_EQ(DocumentOf(server(), "D1002").checkedOutBy, "anna");
  EXPECT_EQ(Run({"put", "f", framePath, "--checkin"}).status, 0);
  EXPECT_EQ(Content(framePath), "content");
}

// The library tells one failure for the store and the check-in after it. What was refused is the second.
TEST_F(PutIntoCheckout, WithAViewableThatIsRefusedAtTheCheckInDoesNotSayThatNothingIsStored) {
  Checkout(framePath, {"--fault", "POST */checkin=409*1"});
  const ProcessResult failed = Run({"put", "f", framePath, "--viewable", "view", "--checkin"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.err,
              HasSubstr("the file is stored in the working copy " + copy_ + ", but checking it in failed"));
  EXPECT_THAT(failed.err, HasSubstr("; you still have it checked out; "));
  EXPECT_EQ(DocumentOf(server(), CopyId()).bytes, "content");
}

TEST_F(PutIntoCheckout, TellsOfTheWorkspaceThatStays) {
  for (const std::vector<std::string>& more : {std::vector<std::string>{}, {"--viewable", "view"}}) {
    Checkout(framePath, {"--fault", "POST */delete=500*1"});
    std::vector<std::string> words{"put", "f", framePath, "--checkin"};
    words.insert(words.end(), more.begin(), more.end());
    const ProcessResult result = Run(words);
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(
        result.err,
        HasSubstr(
            "warning: the temporary workspace could not be deleted (delete a workspace: refused, HTTP 500"));
  }
}

TEST_F(PutIntoCheckout, ThatFailsAtTheCheckInLeavesTheStoredCopy) {
  Checkout(framePath, {"--fault", "POST */checkin=503*1"});
  const ProcessResult failed = Run({"put", "f", framePath, "--checkin"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.err, HasSubstr("the file is stored in the working copy " + copy_));
  EXPECT_EQ(DocumentOf(server(), CopyId()).bytes, "content");
  EXPECT_THAT(Book(), HasSubstr(CopyId()));
  EXPECT_EQ(Run({"checkin", framePath}).status, 0);
  EXPECT_EQ(Content(framePath), "content");
}

TEST_F(PutIntoCheckout, WithAViewableThatFailsAtTheCheckInIsToldFromTheStore) {
  Checkout(framePath, {"--fault", "POST */checkin=503*1"});
  const ProcessResult failed = Run({"put", "f", framePath, "--checkin", "--viewable", "view"});
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.err,
              HasSubstr("the file is stored in the working copy " + copy_ + ", but checking it in failed"));
  EXPECT_EQ(Run({"put", "f", framePath, "--checkin", "--viewable", "view"}).status, 0);
  EXPECT_EQ(Content(framePath), "content");
}

// The server checks in, and its answer is lost.
TEST_F(PutIntoCheckout, WithAViewableWhoseCheckInWasNotConfirmedSaysThatItIsNotCheckedOut) {
  Checkout(framePath, {"--fault", "POST */checkin=cut:10"});
  const ProcessResult together = Run({"put", "f", framePath, "--checkin", "--viewable", "view"});
  EXPECT_EQ(together.status, 1);
  EXPECT_THAT(together.err, HasSubstr("it is not seen to be checked out any more; "));
  EXPECT_EQ(Content(framePath), "content");
}

TEST_F(PutIntoCheckout, WhoseSeparateCheckInWasNotConfirmedSaysThatItIsNotCheckedOut) {
  Checkout(framePath, {"--fault", "POST */checkin=cut:10"});
  const ProcessResult apart = Run({"put", "f", framePath, "--checkin"});
  EXPECT_EQ(apart.status, 1);
  EXPECT_THAT(apart.err, HasSubstr("it is not seen to be checked out any more; "));
  EXPECT_EQ(Content(framePath), "content");
}

TEST_F(PutIntoCheckout, ThatHasEndedElsewhereIsRefused) {
  Checkout(framePath);
  environment_["XDG_STATE_HOME"] = Home("elsewhere");
  ASSERT_EQ(Run({"undo", copy_}).status, 0);
  environment_.erase("XDG_STATE_HOME");
  const ProcessResult result = Run({"put", "f", framePath});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.err, HasSubstr("the checkout " + copy_ +
                                    " that is kept here has ended; nothing "
                                    "was sent"));
}

TEST_F(PutIntoCheckout, TellsItsLinksAndThePageThatEditsItsAttributes) {
  Checkout(frameFolder + "fork.lxz");
  EXPECT_EQ(Run({"links", frameFolder + "fork.lxz"}).out,
            "frame.lxz\t" + server().Uid("D1002") + "&file=/frame.lxz\n");
  const ProcessResult page = Run({"edit-url", frameFolder + "fork.lxz"});
  EXPECT_EQ(page.status, 0) << page.err;
  EXPECT_THAT(page.out, HasSubstr("action=MULTIEDITATTR&oid=D1001&wsName=FenloomTMP"));
}

}  // namespace vtdirect_test
