#include "documents/checkout/checkout.h"

#include <algorithm>
#include <ctime>

#include "base/result.h"
#include "documents/workspaces/workspace_name.h"
#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

constexpr const char* documentAnswer =
    R"({"id":"SERVERS","context":{"id":"C5"},"pdmIterationState":{"isCheckout":false},
        "epmMaster":{"id":"M2002"}})";
constexpr const char* copyAnswer =
    R"([{"id":"D1002","revision":"B","iteration":"4","epmMaster":{"cadName":"pump.fnl"},
         "cadContent":{"contentSections":[{"fileSize":5},{"fileSize":7}]},
         "derivedSourceDependencies":[{"asStoredChildName":"bolt","source":{"id":"D7"}}]},{"id":"D9"}])";
const std::string documentLine = Get(documentsPath + "/D1001");

std::string CheckoutBody(const std::string& document, const std::string& master) {
  return R"({"objIdList":[")" + document +
         R"("],"dependenciesOption":"None","conflictResolutions":[)"
         R"({"code":"vn.epm.util.EPMConflictType.WORKASPACE_ADD_EXISTING_OBJECT",)"
         R"("resolutionOption":"vn.epm.util.EPMResolutionType.WORKSPACE_SUBSTITUTE_EXISTING_OBJECT",)"
         R"("appliedEntities":[{"type":"vn.epm.EPMDocumentMaster","field":"id","value":")" +
         master + R"("}]}]})";
}

class CheckingOut : public FlowTest {
 protected:
  CheckingOut() { info.id = "before"; }
  bool Checkout(const char* id) {
    return HandOver(CheckoutDocument(Begin(connection), ParseCheckoutId(id)), info);
  }
  FileInfo info;
};

TEST_F(CheckingOut, MakesATemporaryWorkspaceInTheDocumentsContext) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, R"({"id":"W77"})").Then(200, copyAnswer);
  EXPECT_TRUE(Checkout("D1001"));
  ASSERT_EQ(transport.requests().size(), 4u);
  EXPECT_EQ(transport.requests()[0], Read(documentsPath + "/D1001"));
  EXPECT_EQ(transport.requests()[1], ReadNonce());
  EXPECT_EQ(transport.requests()[2].line, Post(workspacesPath));
  EXPECT_TRUE(transport.requests()[2].body->starts_with(R"({"name":"FenloomTMP)"));
  EXPECT_TRUE(transport.requests()[2].body->ends_with(
      R"(","contextId":"C5","description":"ZVK Fenloom temporary workspace"})"));
  EXPECT_EQ(transport.requests()[3], Write(workspacesPath + "/W77/checkout", CheckoutBody("D1001", "M2002")));
  // The id that was given, and not the one that the server told.
  EXPECT_EQ(info.id, "D1001|W77|D1002|T");
  EXPECT_EQ(info.version, "B.4");
  EXPECT_EQ(info.cadName, "pump.fnl");
  EXPECT_EQ(info.size, 12u);
  EXPECT_THAT(info.dependencies, ElementsAre(Pair("bolt", "D7")));
  EXPECT_EQ(trace.lines(), Traces{Miss("Created temporary workspace W77\n")});
}

TEST_F(CheckingOut, NamesTheTemporaryWorkspaceAfterTheSecondOfTheCall) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, R"({"id":"W77"})").Then(200, copyAnswer);
  const auto first = static_cast<std::uint32_t>(std::time(nullptr));
  EXPECT_TRUE(Checkout("D1001"));
  const auto last = static_cast<std::uint32_t>(std::time(nullptr));
  const std::string body = transport.requests()[2].body.value_or("");
  bool isOfTheCall = false;
  for (std::uint32_t second = first; second <= last; ++second) {
    const std::string name = MakeWorkspaceName("FenloomTMP", second);
    isOfTheCall = isOfTheCall || body.starts_with(R"({"name":")" + name + "\"");
  }
  EXPECT_TRUE(isOfTheCall) << body << " between the seconds " << first << " and " << last;
}

// The document that a temporary checkout was made from, in its workspace, which is not this checkout's to
// delete.
TEST_F(CheckingOut, OfATemporaryCheckoutGoesToItsWorkspace) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, copyAnswer);
  EXPECT_TRUE(Checkout("D1001|W77|D1005|T"));
  EXPECT_EQ(transport.requests(),
            (Requests{Read(documentsPath + "/D1001"), ReadNonce(),
                      Write(workspacesPath + "/W77/checkout", CheckoutBody("D1001", "M2002"))}));
  EXPECT_EQ(info.id, "D1002|W77");
  transport.Then(200, documentAnswer).Then(409, "locked");
  EXPECT_FALSE(Checkout("D1001|W77|D1005|T"));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W77/checkout"));
  EXPECT_EQ(trace.lines(),
            Traces{Error("Failed to checkout document D1001 to workspace W77 with error 409 : locked\n")});
}

TEST_F(CheckingOut, GoesToTheWorkspaceThatTheIdNames) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, copyAnswer);
  EXPECT_TRUE(Checkout("D:1|W 2"));
  EXPECT_EQ(transport.requests(),
            (Requests{Read(documentsPath + "/D%3A1"), ReadNonce(),
                      Write(workspacesPath + "/W%202/checkout", CheckoutBody("D:1", "M2002"))}));
  EXPECT_EQ(info.id, "D1002|W 2");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CheckingOut, SendsAnEmptyMasterOfADocumentWithoutOne) {
  transport.Then(200, "{}");
  ThenNonce();
  transport.Then(200, copyAnswer);
  EXPECT_TRUE(Checkout("D1|W2"));
  EXPECT_EQ(transport.requests().back().body, CheckoutBody("D1", ""));
}

TEST_F(CheckingOut, RefusesWhatIsCheckedOutWhoeverHoldsIt) {
  transport.Then(200, R"({"pdmIterationState":{"isCheckout":true,"isCheckoutByYou":true}})")
      .Then(200, R"({"pdmIterationState":{"isCheckout":true,"isCheckoutByYou":false}})");
  EXPECT_FALSE(Checkout("D1001|W2"));
  EXPECT_FALSE(Checkout("D1001"));
  EXPECT_EQ(trace.lines(), (Traces{Error("Document D1001|W2 is already checked out\n"),
                                   Error("Document D1001 is already checked out\n")}));
  EXPECT_EQ(transport.lines(), (Lines{documentLine, documentLine}));
  EXPECT_EQ(info.id, "before");
}

// Only "isCheckout" counts.
TEST_F(CheckingOut, TakesADocumentThatIsSaidToBeTheUsersAndNotCheckedOut) {
  transport.Then(200, R"({"pdmIterationState":{"isCheckout":false,"isCheckoutByYou":true}})");
  ThenNonce();
  transport.Then(200, copyAnswer);
  EXPECT_TRUE(Checkout("D1001|W2"));
  EXPECT_EQ(transport.lines().back(), Post(workspacesPath + "/W2/checkout"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(CheckingOut, AsksEvenForAnEmptyId) {
  transport.Then(404).Then(404).Then(404);
  EXPECT_FALSE(Checkout(""));
  EXPECT_FALSE(Checkout(nullptr));
  EXPECT_FALSE(Checkout("|W2"));
  EXPECT_EQ(transport.lines(), Lines(3, Get(documentsPath + "/")));
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to find document id \n"), Error("Failed to find document id \n"),
                    Error("Failed to find document id |W2\n")}));
  transport.Then(200, R"({"pdmIterationState":{"isCheckout":true}})");
  EXPECT_FALSE(Checkout(nullptr));
  EXPECT_EQ(trace.lines().back(), Error("Document  is already checked out\n"));
}

TEST_F(CheckingOut, GivesUpWithoutAWorkspace) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(403).Then(200, "[]");
  EXPECT_FALSE(Checkout("D1001"));
  EXPECT_EQ(transport.lines(), (Lines{documentLine, Get(noncePath), Post(workspacesPath),
                                      Get(workspacesPath + "?contextId=C5")}));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to create temporary workspace\n")});
}

// The two forms differ for an answer without a document: hosts meet both.
TEST_F(CheckingOut, OfAnAnswerWithoutADocumentGivesAnIdWithoutACopy) {
  connection = NewConnection();
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, "[]");
  EXPECT_TRUE(Checkout("D1001|W77"));
  EXPECT_EQ(info.id, "|W77");
  for (const char* answer : {"[]", "{}", "7", "[7]"}) {
    info.id = "before";
    transport.Then(200, documentAnswer).Then(200, R"({"id":"W77"})").Then(200, answer);
    EXPECT_TRUE(Checkout("D1001"));
    EXPECT_EQ(info.id, "") << answer;
    EXPECT_EQ(info.version, ".");
  }
  EXPECT_EQ(trace.lines(), Traces(4, Miss("Created temporary workspace W77\n")));
}

TEST_F(CheckingOut, OfABodyThatIsNoJsonIsASuccessThatIsTraced) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, "<html>").Then(200, documentAnswer).Then(200, R"({"id":"W77"})").Then(200, "");
  EXPECT_TRUE(Checkout("D1001|W2"));
  EXPECT_EQ(info.id, "|W2");
  EXPECT_TRUE(Checkout("D1001"));
  EXPECT_EQ(info.id, "");
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to checkout document D1001 to workspace W2 with error 200 : \n"),
                    Miss("Created temporary workspace W77\n"),
                    Error("Failed to checkout document D1001 to workspace W77 with error 200 : \n")}));
}

TEST_F(CheckingOut, DeletesTheTemporaryWorkspaceOfACheckoutThatFailed) {
  transport.Then(200, documentAnswer);
  ThenNonce();
  transport.Then(200, R"({"id":"W77"})").Then(409, "locked").Then(200);
  EXPECT_FALSE(Checkout("D1001"));
  EXPECT_EQ(transport.requests().back(), Write(workspacesPath + "/W77/delete", "[]"));
  EXPECT_EQ(trace.lines(),
            (Traces{Miss("Created temporary workspace W77\n"),
                    Error("Failed to checkout document D1001 to workspace W77 with error 409 : locked\n")}));
  EXPECT_EQ(info.id, "before");
}

TEST_F(CheckingOut, SendsNoResolutionWithoutAMaster) {
  ThenNonce();
  transport.Then(200, copyAnswer);
  DocumentRecord result;
  EXPECT_TRUE(HandOver(PostCheckout(Begin(connection), "W2", "D1", std::nullopt), result));
  EXPECT_EQ(transport.requests().back().body, R"({"objIdList":["D1"],"dependenciesOption":"None"})");
  EXPECT_EQ(result.id, "D1002");
}

}  // namespace
}  // namespace vtdirect_test
