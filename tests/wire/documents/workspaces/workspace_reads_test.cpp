#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/result.h"
#include "base/settings.h"
#include "documents/workspaces/workspaces.h"
#include "tests/support/operation.h"
#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"
#include "tests/support/trace_recorder.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* serverUrl = "https://plm.example/vt";

class WorkspaceReads : public testing::Test {
 protected:
  static SentRequest Read(const std::string& path) {
    return {serverUrl, "GET /vt/servlet/rest/v1/dkm/workspaces" + path, "Accept: application/json", {}};
  }
  static std::vector<std::string> Names(const WorkspaceList& list) {
    std::vector<std::string> names;
    for (const auto& workspace : list) names.push_back(workspace.id + " " + workspace.name);
    return names;
  }

  TemporaryDirectory directory;
  TraceRecorder trace;
  ScriptedTransport transport;
  std::shared_ptr<VtConnection> connection =
      std::make_shared<VtConnection>(serverUrl, [](const char*) { return false; });
};

constexpr const char* three =
    R"([{"id":"W1","name":"mine","description":"d","contextId":"C5"},{"id":"W2","name":"FenloomTMP0a1b2c3d"},
        {"id":"W3","name":"MYTMP1"}])";

TEST_F(WorkspaceReads, AllWorkspacesOfAContextAreListedInTheServersOrder) {
  transport.Then(200, three);
  WorkspaceList list;
  EXPECT_TRUE(HandOver(ListWorkspaces(Begin(connection), "C:5"), list));
  EXPECT_THAT(Names(list), ElementsAre("W1 mine", "W2 FenloomTMP0a1b2c3d", "W3 MYTMP1"));
  EXPECT_EQ(list.front().description, "d");
  EXPECT_EQ(list.front().contextId, "C5");
  EXPECT_EQ(transport.requests(), std::vector<SentRequest>{Read("?contextId=C%3A5")});
}

TEST_F(WorkspaceReads, AnElementThatIsNoObjectStandsInTheListAsABlank) {
  transport.Then(200, R"([7,{"id":"W1","name":"mine"},null,{"id":7,"name":["x"]}])");
  WorkspaceList list;
  EXPECT_TRUE(HandOver(ListWorkspaces(Begin(connection), "C5"), list));
  EXPECT_THAT(Names(list), ElementsAre(" ", "W1 mine", " ", " "));
}

TEST_F(WorkspaceReads, AnythingButAnArrayIsAnEmptyList) {
  transport.Then(200, R"({"items":[]})").Then(200, "{").Then(204);
  WorkspaceList list;
  for (int answer = 0; answer < 3; ++answer)
    EXPECT_TRUE(HandOver(ListWorkspaces(Begin(connection), "C5"), list));
  EXPECT_THAT(list, IsEmpty());
}

TEST_F(WorkspaceReads, ARefusalOrABrokenExchangeIsAFailure) {
  transport.Then(401, three).Then(500).ThenFail(du::http::ErrorCode::TimedOut).Then(404).Then(403);
  WorkspaceList list;
  DocumentList documents;
  for (int answer = 0; answer < 3; ++answer)
    EXPECT_FALSE(HandOver(ListWorkspaces(Begin(connection), "C5"), list));
  EXPECT_FALSE(HandOver(ListUserWorkspaces(Begin(connection), "C5"), list));
  EXPECT_FALSE(HandOver(ListWorkspaceDocuments(Begin(connection), "W1"), documents));
  EXPECT_THAT(list, IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(WorkspaceReads, TheUsersAreThoseWithoutTheTemporaryPrefix) {
  transport.Then(200, three);
  WorkspaceList list;
  EXPECT_TRUE(HandOver(ListUserWorkspaces(Begin(connection), "C5"), list));
  EXPECT_THAT(Names(list), ElementsAre("W1 mine", "W3 MYTMP1"));
}

TEST_F(WorkspaceReads, TheTemporaryPrefixStandsAtTheBeginningInTheseLetters) {
  transport.Then(200, R"([{"id":"W1","name":"my FenloomTMP"},{"id":"W2","name":"fenloomtmp1"},
                          {"id":"W3","name":"FenloomTM"},{"id":"W4","name":"FenloomTMP"}])");
  WorkspaceList list;
  EXPECT_TRUE(HandOver(ListUserWorkspaces(Begin(connection), "C5"), list));
  EXPECT_THAT(Names(list), ElementsAre("W1 my FenloomTMP", "W2 fenloomtmp1", "W3 FenloomTM"));
}

TEST_F(WorkspaceReads, TheTemporaryPrefixIsTheHosts) {
  SetTemporaryWorkspacePrefix("MYTMP");
  transport.Then(200, three);
  WorkspaceList list;
  EXPECT_TRUE(HandOver(ListUserWorkspaces(Begin(connection), "C5"), list));
  EXPECT_THAT(Names(list), ElementsAre("W1 mine", "W2 FenloomTMP0a1b2c3d"));
}

TEST_F(WorkspaceReads, TheDocumentsOfAWorkspaceAreListed) {
  transport.Then(200,
                 R"([{"id":"D1","revision":"A","iteration":"1","epmMaster":{"cadName":"gear.lxz"}},"x"])");
  DocumentList documents;
  EXPECT_TRUE(HandOver(ListWorkspaceDocuments(Begin(connection), "W|1"), documents));
  ASSERT_EQ(documents.size(), 2U);
  EXPECT_EQ(documents.front().id, "D1");
  EXPECT_EQ(documents.front().master.cadName, "gear.lxz");
  EXPECT_EQ(documents.back().id, "");
  EXPECT_EQ(transport.requests(), std::vector<SentRequest>{Read("/W%7C1/documents")});
}

TEST_F(WorkspaceReads, AWorkspaceHoldsADocumentOfExactlyThatId) {
  const char* documents = R"([{"id":"D10"},{"id":"D1"}])";
  transport.Then(200, documents).Then(200, documents).Then(200, R"([{"id":"D1\u0000"}])");
  EXPECT_TRUE(WorkspaceHoldsDocument(Begin(connection), "D1", "W1"));
  EXPECT_FALSE(WorkspaceHoldsDocument(Begin(connection), "D", "W1"));
  EXPECT_FALSE(WorkspaceHoldsDocument(Begin(connection), "D1", "W1"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(WorkspaceReads, AFailedListOfDocumentsIsTracedAndCountsAsNotHeld) {
  transport.Then(500);
  EXPECT_FALSE(WorkspaceHoldsDocument(Begin(connection), "D1", "W1"));
  EXPECT_THAT(trace.lines(),
              ElementsAre(TraceLine{3, "VtDirect", "Failed to get documents for workspace W1\n"}));
}

TEST_F(WorkspaceReads, AUsersWorkspaceIsFoundByItsId) {
  transport.Then(200, three).Then(200, three).Then(200, three).Then(500);
  WorkspaceRecord workspace;
  EXPECT_TRUE(HandOver(FindUserWorkspace(Begin(connection), "C5", "W3"), workspace));
  EXPECT_EQ(workspace.name, "MYTMP1");
  EXPECT_FALSE(HandOver(FindUserWorkspace(Begin(connection), "C5", "W2"), workspace));  // a temporary one
  EXPECT_FALSE(HandOver(FindUserWorkspace(Begin(connection), "C5", "W9"), workspace));
  EXPECT_FALSE(HandOver(FindUserWorkspace(Begin(connection), "C5", "W1"), workspace));
  EXPECT_EQ(workspace.id, "W3");
}

TEST_F(WorkspaceReads, TheFirstUsersWorkspaceThatHoldsADocumentIsFound) {
  transport
      .Then(200, R"([{"id":"W0","name":"FenloomTMP"},{"id":"W1","name":"a"},{"id":"W2","name":"b"},
                          {"id":"W3","name":"c"},{"id":"W4","name":"d"}])")
      .Then(500)
      .Then(200, R"([{"id":"D9"}])")
      .Then(200, R"([{"id":"D1"}])");
  WorkspaceRecord workspace;
  EXPECT_TRUE(HandOver(FindWorkspaceOfDocument(Begin(connection), "D1", "C5"), workspace));
  EXPECT_EQ(workspace.id, "W3");
  EXPECT_EQ(transport.requests(), (std::vector<SentRequest>{Read("?contextId=C5"), Read("/W1/documents"),
                                                            Read("/W2/documents"), Read("/W3/documents")}));
  EXPECT_THAT(trace.lines(),
              ElementsAre(TraceLine{3, "VtDirect", "Failed to get documents for workspace W1\n"}));
}

TEST_F(WorkspaceReads, ADocumentInNoWorkspaceIsNotFound) {
  transport.Then(200, R"([{"id":"W1","name":"a"}])").Then(200, "[]").Then(500);
  WorkspaceRecord workspace;
  workspace.id = "old";
  EXPECT_FALSE(HandOver(FindWorkspaceOfDocument(Begin(connection), "D1", "C5"), workspace));
  EXPECT_FALSE(HandOver(FindWorkspaceOfDocument(Begin(connection), "D1", "C5"), workspace));
  EXPECT_EQ(workspace.id, "old");
}

}  // namespace
}  // namespace vtdirect_test
