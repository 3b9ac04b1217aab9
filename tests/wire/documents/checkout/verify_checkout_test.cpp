#include "documents/checkout/verify_checkout.h"

#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

constexpr const char* temporaryId = "D1001|W77|D1002|T";

// A document of which the connected user holds the checkout.
std::string CheckedOut(const std::string& id) {
  return R"({"id":")" + id +
         R"(","revision":"B","iteration":"3","context":{"id":"C5"},"epmMaster":{"number":"0042"},)"
         R"("pdmIterationState":{"isCheckout":true,"isCheckoutByYou":true,"isLatest":true,)"
         R"("checkoutByUser":"ada"}})";
}
std::string CheckedIn(const std::string& id) {
  return R"({"id":")" + id +
         R"(","revision":"B","iteration":"3","context":{"id":"C5","name":"Gadget"},"epmMaster":{"id":"M1"},)"
         R"("locationFolder":{"path":"/Gadget/Sub"},"pdmIterationState":{"isLatest":true}})";
}
std::string VersionsLine(const std::string& id) {
  return DocumentLine(id) + "/versions?contextId=C5";
}
const std::string searchLine = Get(documentsPath + "/search?number=0042&scope=C5");
// The search finds the document that a copy was taken from.
const std::string original = "[" + CheckedOut("D1001") + "]";
std::string HoldLine(const std::string& workspace) {
  return Get(workspacesPath + "/" + workspace + "/documents");
}

class Verifying : public FlowTest {
 protected:
  bool Verify(const char* id) {
    auto verified = VerifyCheckout(Begin(connection), ParseCheckoutId(id));
    if (!verified) return false;
    info = verified->info;
    state = verified->state;
    return true;
  }
  void ExpectState(bool inWorkspace, bool inUserWorkspace, bool checkedOut, bool checkedOutByYou) const {
    EXPECT_EQ(state.inWorkspace, inWorkspace);
    EXPECT_EQ(state.inUserWorkspace, inUserWorkspace);
    EXPECT_EQ(state.checkedOut, checkedOut);
    EXPECT_EQ(state.checkedOutByYou, checkedOutByYou);
  }
  FileInfo info;
  VtCheckoutState state;
};

TEST_F(Verifying, OfAPlainIdReadsTheDocumentAndItsState) {
  transport.Then(200, CheckedIn("D1")).Then(200, CheckedIn("D1")).Then(200, "[]");
  EXPECT_TRUE(Verify("D1"));
  EXPECT_EQ(transport.lines(), (Lines{DocumentLine("D1"), DocumentLine("D1"), VersionsLine("D1")}));
  EXPECT_EQ(info.id, "D1");
  ExpectState(false, false, false, false);
  EXPECT_TRUE(state.isLatest);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Verifying, OfAPlainIdFailsWithEitherRead) {
  transport.Then(404).Then(200, CheckedIn("D1")).Then(404);
  EXPECT_FALSE(Verify("D1"));
  EXPECT_FALSE(Verify("D1"));
  EXPECT_EQ(trace.lines(), Traces(2, Error("Failed to locate document D1 on server\n")));
}

TEST_F(Verifying, OfATemporaryCheckoutThatStandsChangesNothing) {
  transport.Then(200, CheckedOut("D1002"))
      .Then(200, original)
      .Then(200, R"([{"id":"D1002"}])")
      .Then(200, CheckedOut("D1001"))
      .Then(200, CheckedOut("D1001"));
  EXPECT_TRUE(Verify(temporaryId));
  EXPECT_EQ(transport.lines(), (Lines{DocumentLine("D1002"), searchLine, HoldLine("W77"),
                                      DocumentLine("D1001"), DocumentLine("D1001")}));
  EXPECT_EQ(info.id, temporaryId);
  ExpectState(true, false, true, true);
  EXPECT_EQ(state.checkedOutBy, "ada");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Verifying, OfACopyInAWorkspaceOfTheUsersAsksForTheCopy) {
  transport.Then(200, CheckedOut("D1002"))
      .Then(200, original)
      .Then(200, R"([{"id":"D1002"}])")
      .Then(200, CheckedOut("D1002"))
      .Then(200, CheckedOut("D1002"))
      .Then(200, original);
  EXPECT_TRUE(Verify("D1002|W12"));
  EXPECT_EQ(transport.lines(), (Lines{DocumentLine("D1002"), searchLine, HoldLine("W12"),
                                      DocumentLine("D1002"), DocumentLine("D1002"), searchLine}));
  EXPECT_EQ(info.id, "D1002|W12");
  ExpectState(true, true, true, true);
}

// The server knows of no checkout of it, and still it is the user's alone.
TEST_F(Verifying, OfADocumentThatWasNeverCheckedInIsTheUsers) {
  const char* fresh =
      R"({"id":"D1","revision":"A","iteration":"1","context":{"id":"C5"},"pdmIterationState":{"isLatest":true}})";
  const char* only = R"([{"id":"D1"}])";
  transport.Then(200, fresh)
      .Then(200, only)
      .Then(200, R"([{"id":"D1"}])")
      .Then(200, fresh)
      .Then(200, fresh)
      .Then(200, only);
  EXPECT_TRUE(Verify("D1|W12"));
  EXPECT_EQ(transport.lines(), (Lines{DocumentLine("D1"), VersionsLine("D1"), HoldLine("W12"),
                                      DocumentLine("D1"), DocumentLine("D1"), VersionsLine("D1")}));
  EXPECT_EQ(info.id, "D1|W12");
  ExpectState(true, true, true, true);
  EXPECT_FALSE(state.isLatest);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// Nothing refuses an id beforehand: what it lacks is asked for with an empty id.
TEST_F(Verifying, OfATemporaryCheckoutWithoutACopyTriesToRenewNothing) {
  transport.Then(404).Then(404).Then(404);
  EXPECT_FALSE(Verify("D1|W77||T"));
  EXPECT_EQ(transport.lines(), Lines(3, DocumentLine("")));
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Bad id data for checkout D1|W77||T\n"), Error("Failed to find document id \n"),
                    Error("Failed to locate document  on server\n")}));
}

TEST_F(Verifying, OfAWorkspaceWithoutADocumentFails) {
  transport.Then(404);
  EXPECT_FALSE(Verify("|W2"));
  EXPECT_EQ(transport.lines(), Lines{DocumentLine("")});
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Verifying, OfATemporaryCheckoutWithoutAWorkspaceReadsTheDocument) {
  transport.Then(200, CheckedIn("D1")).Then(200, CheckedIn("D1"));
  EXPECT_TRUE(Verify("D1||D3|T"));
  EXPECT_EQ(transport.lines(), (Lines{DocumentLine("D1"), DocumentLine("D1")}));
  ExpectState(true, false, false, false);
}

TEST_F(Verifying, OfAUsersCheckoutThatNoLongerStandsFails) {
  transport.Then(404);
  EXPECT_FALSE(Verify("D1002|W12"));
  transport.Then(200, CheckedOut("D1002")).Then(500);
  EXPECT_FALSE(Verify("D1002|W12"));
  transport.Then(200, CheckedOut("D1002")).Then(200, "[]");
  EXPECT_FALSE(Verify("D1002|W12"));
  transport.Then(200, CheckedOut("D1002")).Then(200, original).Then(200, "[]");
  EXPECT_FALSE(Verify("D1002|W12"));
  transport.Then(200, CheckedOut("D1002")).Then(200, original).Then(500);
  EXPECT_FALSE(Verify("D1002|W12"));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to find doc number 0042 with response: "),
                                   Error("Failed to get documents for workspace W12\n")}));
}

TEST_F(Verifying, RenewsATemporaryCheckoutWhoseCopyIsGone) {
  transport.Then(404).Then(200, "[]");
  ThenNonce();
  transport.Then(200)
      .Then(200, CheckedIn("D1001"))
      .Then(200, CheckedIn("D1001"))
      .Then(200, R"({"id":"W78"})")
      .Then(200, R"([{"id":"D1005","revision":"B","iteration":"3"}])")
      .Then(200, CheckedOut("D1001"));
  EXPECT_TRUE(Verify(temporaryId));
  EXPECT_EQ(transport.lines(),
            (Lines{DocumentLine("D1002"), HoldLine("W77"), Get(noncePath),
                   Post(workspacesPath + "/W77/delete"), DocumentLine("D1001"), DocumentLine("D1001"),
                   Post(workspacesPath), Post(workspacesPath + "/W78/checkout"), DocumentLine("D1001")}));
  EXPECT_EQ(info.id, "D1001|W78|D1005|T");
  ExpectState(true, false, true, true);
  EXPECT_EQ(trace.lines(), Traces{Miss("Created temporary workspace W78\n")});
}

TEST_F(Verifying, GivesWhatTheUndoLeftWhenTheCheckoutFails) {
  transport.Then(404).Then(200, R"([{"id":"D1002"}])");
  ThenNonce();
  transport.Then(200, "[" + CheckedIn("D1001") + "]").Then(200);
  // Somebody else was faster.
  transport.Then(200, R"({"pdmIterationState":{"isCheckout":true}})")
      .Then(
          200,
          R"({"id":"D1001","context":{"id":"C5"},"pdmIterationState":{"isCheckout":true,"checkoutByUser":"eve"}})")
      .Then(200, "[]");
  EXPECT_TRUE(Verify(temporaryId));
  EXPECT_EQ(info.id, "D1001");
  EXPECT_EQ(info.version, "B.3");
  ExpectState(false, false, true, false);
  EXPECT_EQ(state.checkedOutBy, "eve");
  EXPECT_EQ(transport.lines().back(), VersionsLine("D1001"));
  EXPECT_EQ(trace.lines(), Traces{Error("Document D1001 is already checked out\n")});
}

TEST_F(Verifying, OfATemporaryCheckoutWhoseDocumentIsGoneFails) {
  transport.Then(404).Then(200, "[]");
  ThenNonce();
  transport.Then(200).Then(404).Then(404).Then(404);
  EXPECT_FALSE(Verify(temporaryId));
  EXPECT_EQ(transport.lines(), (Lines{DocumentLine("D1002"), HoldLine("W77"), Get(noncePath),
                                      Post(workspacesPath + "/W77/delete"), DocumentLine("D1001"),
                                      DocumentLine(""), DocumentLine("")}));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to locate document D1001 on server\n"),
                                   Error("Failed to find document id \n"),
                                   Error("Failed to locate document  on server\n")}));
}

}  // namespace
}  // namespace vtdirect_test
