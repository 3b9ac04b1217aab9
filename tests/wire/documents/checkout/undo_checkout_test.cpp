#include "documents/checkout/undo_checkout.h"

#include "base/result.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

constexpr const char* temporaryId = "D1001|W77|D1002|T";
const std::string listPath = workspacesPath + "/W77/documents";
const std::string undoPath = workspacesPath + "/W77/undocheckout";
const std::string deletePath = workspacesPath + "/W77/delete";
const std::string documentPath = documentsPath + "/D1001";

constexpr const char* holdingAnswer = R"([{"id":"D5"},{"id":"D1002"}])";
constexpr const char* undoneAnswer =
    R"([{"id":"D1001","revision":"B","iteration":"3","epmMaster":{"cadName":"pump.fnl"}},{"id":"D9"}])";
constexpr const char* documentAnswer =
    R"({"id":"D1001","revision":"B","iteration":"3","epmMaster":{"cadName":"pump.fnl"}})";

class Undoing : public FlowTest {
 protected:
  Undoing() { info.id = "before"; }
  bool Undo(const char* id) {
    return HandOver(UndoCheckoutDocument(Begin(connection), ParseCheckoutId(id)), info);
  }
  FileInfo info;
};

TEST_F(Undoing, OfATemporaryCheckoutDeletesTheWorkspace) {
  transport.Then(200, holdingAnswer);
  ThenNonce();
  transport.Then(200, undoneAnswer).Then(200);
  EXPECT_TRUE(Undo(temporaryId));
  EXPECT_EQ(transport.requests(),
            (Requests{Read(listPath), ReadNonce(), Write(undoPath, R"({"objIdList":["D1002"]})"),
                      Write(deletePath, "[]")}));
  EXPECT_EQ(info.id, "D1001");
  EXPECT_EQ(info.version, "B.3");
  EXPECT_EQ(info.cadName, "pump.fnl");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Undoing, InAWorkspaceOfTheUsersIsOneRequest) {
  ThenNonce();
  transport.Then(200, undoneAnswer);
  EXPECT_TRUE(Undo("D2|W12"));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadNonce(), Write(workspacesPath + "/W12/undocheckout", R"({"objIdList":["D2"]})")}));
  EXPECT_EQ(info.id, "D1001|W12");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Undoing, ReadsTheDocumentWhenTheAnswerHasNone) {
  ThenNonce();
  for (const char* answer : {"[]", "{}", "<html>", R"([{"revision":"X"}])"}) {
    transport.Then(200, answer).Then(200, R"({"id":"D2","revision":"B","iteration":"3"})");
    EXPECT_TRUE(Undo("D2|W12"));
    EXPECT_EQ(transport.lines().back(), Get(documentsPath + "/D2"));
    EXPECT_EQ(info.id, "D2|W12") << answer;
    EXPECT_EQ(info.version, "B.3") << answer;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Undoing, IsSkippedWhenTheWorkspaceNoLongerHoldsTheCopy) {
  transport.Then(200, R"([{"id":"D1001"}])");
  ThenNonce();
  transport.Then(200).Then(200, documentAnswer);
  EXPECT_TRUE(Undo(temporaryId));
  EXPECT_EQ(transport.lines(), (Lines{Get(listPath), Get(noncePath), Post(deletePath), Get(documentPath)}));
  EXPECT_EQ(info.id, "D1001");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Undoing, IsSkippedWhenTheWorkspaceCannotBeListed) {
  transport.Then(500);
  ThenNonce();
  transport.Then(200).Then(200, documentAnswer);
  EXPECT_TRUE(Undo(temporaryId));
  EXPECT_EQ(transport.lines(), (Lines{Get(listPath), Get(noncePath), Post(deletePath), Get(documentPath)}));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to get documents for workspace W77\n")});
}

// The deletion of the workspace is what frees the document, so the host is told of a success.
TEST_F(Undoing, ThatIsRefusedInATemporaryWorkspaceDeletesItAllTheSame) {
  transport.Then(200, holdingAnswer);
  ThenNonce();
  transport.Then(409, "no").Then(200).Then(200, documentAnswer);
  EXPECT_TRUE(Undo(temporaryId));
  EXPECT_EQ(transport.lines(),
            (Lines{Get(listPath), Get(noncePath), Post(undoPath), Post(deletePath), Get(documentPath)}));
  EXPECT_EQ(info.id, "D1001");
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to undo check-out of document with error 409 : no\n"),
                    Error("Failed to undo checkout of D1002 from temporary workspace W77\n")}));
}

TEST_F(Undoing, ThatIsRefusedInAWorkspaceOfTheUsersFails) {
  ThenNonce();
  transport.Then(409, "no");
  EXPECT_FALSE(Undo("D2|W12"));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to undo check-out of document with error 409 : no\n"),
                                   Error("Failed to undo checkout of D2 from temporary workspace W12\n")}));
  EXPECT_EQ(info.id, "before");
}

TEST_F(Undoing, FailsOnlyForADocumentThatCannotBeRead) {
  transport.Then(200, holdingAnswer);
  ThenNonce();
  transport.Then(409, "no").Then(500).Then(404);
  EXPECT_FALSE(Undo(temporaryId));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to undo check-out of document with error 409 : no\n"),
                                   Error("Failed to undo checkout of D1002 from temporary workspace W77\n"),
                                   Error("Failed to delete temporary workspace W77\n"),
                                   Error("Failed to locate document D1001 on server\n")}));
  EXPECT_EQ(info.id, "before");
}

TEST_F(Undoing, InAWorkspaceOfTheUsersFailsForADocumentThatCannotBeReadBehindIt) {
  ThenNonce();
  transport.Then(200, "[]").Then(404);
  EXPECT_FALSE(Undo("D2|W12"));
  EXPECT_EQ(transport.lines().back(), Get(documentsPath + "/D2"));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to locate document D2 on server\n")});
  EXPECT_EQ(info.id, "before");
}

TEST_F(Undoing, RefusesAnIdThatIsNoneOfACheckout) {
  Traces expected;
  for (const char* id : {"D1", "", "|W2", "D1|W77||T"}) {
    EXPECT_FALSE(Undo(id)) << id;
    expected.push_back(Error(std::string("Bad id data for checkout ") + id + "\n"));
  }
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_EQ(trace.lines(), expected);
}

TEST_F(Undoing, CanDropTheAnswer) {
  ThenNonce();
  transport.Then(200, undoneAnswer).Then(500);
  EXPECT_TRUE(PostUndoCheckout(Begin(connection), "W2", "D1"));
  EXPECT_FALSE(PostUndoCheckout(Begin(connection), "W2", "D1"));
}

}  // namespace
}  // namespace vtdirect_test
