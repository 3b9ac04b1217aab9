#include <gmock/gmock.h>

#include "tests/wire/public/listed_server.h"

// Checkouts in temporary workspaces, found by what the server tells alone.
namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;
using testing::IsEmpty;

using TemporaryCheckouts = ListedServerTest;

constexpr const char* workspacesOfC5 = "GET /vt/servlet/rest/v1/dkm/workspaces?contextId=C5";

std::string Document(const std::string& id, const std::string& master, bool byYou,
                     const std::string& folder = "") {
  return R"({"id":")" + id + R"(","context":{"id":"C5"},"revision":"B","iteration":"3",)" +
         R"("pdmIterationState":{"isCheckout":true,"isCheckoutByYou":)" + (byYou ? "true" : "false") +
         R"(,"checkoutToFolderName":")" + folder + R"("},"epmMaster":{"id":")" + master +
         R"(","number":"0042","cadName":"fork 1.lxz"}})";
}

const std::string workspaces =
    R"([{"id":"W1","name":"Mine"},{"id":"W2","name":"FenloomTMP2"},{"id":"W3","name":"FenloomTMP3"}])";

TEST_F(TemporaryCheckouts, OfADocumentAreLookedForInTheTemporaryWorkspacesOfItsContext) {
  transport.Then(200, Document("D1", "M1", true)).Then(200, workspaces);
  transport.Then(200, List({Document("D8", "M8", true)}));  // W2: of another document
  transport.Then(200, List({Document("D2", "M1", true)}));  // W3
  transport.Then(200, List({Document("D2", "M1", true), Document("D1", "M1", true)}));  // the search
  const auto found = FindTemporaryCheckouts(uidOfD1);
  ASSERT_TRUE(found.has_value());
  ASSERT_EQ(found->size(), 1u);
  EXPECT_EQ(found->front().uid, "korvufenloom-vt://plm.example/vt/?id=D1|W3|D2|T&file=/fork%201.lxz");
  EXPECT_EQ(found->front().workspaceName, "FenloomTMP3");
  EXPECT_EQ(found->front().documentNumber, "0042");
  EXPECT_EQ(found->front().fileName, "fork 1.lxz");
  EXPECT_EQ(found->front().version, "B.3");
  EXPECT_EQ(transport.lines(),
            (Lines{documentLine, workspacesOfC5, "GET /vt/servlet/rest/v1/dkm/workspaces/W2/documents",
                   "GET /vt/servlet/rest/v1/dkm/workspaces/W3/documents",
                   "GET /vt/servlet/rest/v1/dkm/documents/search?number=0042&scope=C5"}));
}

TEST_F(TemporaryCheckouts, OfADocumentThatNamesItsWorkspaceAreLookedForThereAlone) {
  transport.Then(200, Document("D1", "M1", true, "FenloomTMP3")).Then(200, workspaces).Then(200, "[]");
  const auto found = FindTemporaryCheckouts(uidOfD1);
  ASSERT_TRUE(found.has_value());
  EXPECT_THAT(*found, IsEmpty());
  EXPECT_EQ(transport.lines().back(), "GET /vt/servlet/rest/v1/dkm/workspaces/W3/documents");
}

TEST_F(TemporaryCheckouts, AreNotWhatLiesInAWorkspaceWithoutBeingCheckedOutByTheUser) {
  transport.Then(200, Document("D1", "M1", false)).Then(200, R"([{"id":"W2","name":"FenloomTMP2"}])");
  transport.Then(200, List({Document("D2", "M1", false), "7"}));
  const auto found = FindTemporaryCheckouts(uidOfD1);
  ASSERT_TRUE(found.has_value());
  EXPECT_THAT(*found, IsEmpty());
}

TEST_F(TemporaryCheckouts, WithoutAnOriginalHaveNoUid) {
  transport.Then(200, Document("D1", "M1", true)).Then(200, R"([{"id":"W2","name":"FenloomTMP2"}])");
  transport.Then(200, List({Document("D2", "M1", true)})).Then(200, "[]");
  const auto found = FindTemporaryCheckouts(uidOfD1);
  ASSERT_TRUE(found.has_value());
  ASSERT_EQ(found->size(), 1u);
  EXPECT_EQ(found->front().uid, "");
  EXPECT_EQ(found->front().workspaceName, "FenloomTMP2");
}

TEST_F(TemporaryCheckouts, AreKnownByTheConfiguredPrefix) {
  SetAppConfig(ConfigTempWorkspacePrefix, "MYTMP");
  transport.Then(200, Document("D1", "M1", true));
  transport.Then(200, R"([{"id":"W2","name":"FenloomTMP2"},{"id":"W3","name":"MYTMP"}])").Then(200, "[]");
  EXPECT_TRUE(FindTemporaryCheckouts(uidOfD1).has_value());
  EXPECT_EQ(transport.lines().back(), "GET /vt/servlet/rest/v1/dkm/workspaces/W3/documents");
}

TEST_F(TemporaryCheckouts, OfAServerAreLookedForInAllItsContexts) {
  transport.Then(200, R"({"items":[{"id":"C5"},{"id":"C6"}]})");
  transport.Then(200, "[]").Then(200, R"([{"id":"W2","name":"FenloomTMP2"}])");
  transport.Then(200, List({Document("D2", "M1", true), Document("D3", "M1", true)}));
  transport.Then(200, List({Document("D1", "M1", true)})).Then(200, List({Document("D1", "M1", true)}));
  const auto found = FindTemporaryCheckouts("korvufenloom-vt://plm.example/vt/");
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->size(), 2u);
  EXPECT_EQ(transport.lines(), (Lines{"GET /vt/servlet/rest/v1/contexts", workspacesOfC5,
                                      "GET /vt/servlet/rest/v1/dkm/workspaces?contextId=C6",
                                      "GET /vt/servlet/rest/v1/dkm/workspaces/W2/documents",
                                      "GET /vt/servlet/rest/v1/dkm/documents/search?number=0042&scope=C6",
                                      "GET /vt/servlet/rest/v1/dkm/documents/search?number=0042&scope=C6"}));
}

// An empty list would say that nothing is checked out, which nobody knows then.
TEST_F(TemporaryCheckouts, AreUnknownWhenAnyRequestFails) {
  const std::vector<std::string> answers{Document("D1", "M1", true), R"([{"id":"W2","name":"FenloomTMP2"}])",
                                         List({Document("D2", "M1", true)}),
                                         List({Document("D1", "M1", true)})};
  for (std::size_t failing = 0; failing < answers.size(); ++failing) {
    for (std::size_t step = 0; step < failing; ++step) transport.Then(200, answers[step]);
    transport.Then(500);
    EXPECT_FALSE(FindTemporaryCheckouts(uidOfD1).has_value()) << failing;
    EXPECT_EQ(transport.unanswered(), 0u);
  }
}

TEST_F(TemporaryCheckouts, OfADirectoryBelowTheContextAreNone) {
  transport.Then(404).Then(404).Then(404).Then(404).Then(404).Then(404).Then(404).Then(404).Then(404);
  EXPECT_FALSE(FindTemporaryCheckouts("//plm/Products/Bike/Folders/").has_value());
  EXPECT_FALSE(FindTemporaryCheckouts("//elsewhere/").has_value());
  EXPECT_FALSE(FindTemporaryCheckouts(nullptr).has_value());
}

}  // namespace
