#include "tests/wire/public/public_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;

constexpr const char* uid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/a.lxz";
constexpr const char* documentsPath = "GET /vt/servlet/rest/v1/dkm/documents/";

std::string Document(const std::string& id, const std::string& iteration, bool isLatest) {
  return R"({"id":")" + id + R"(","revision":"A","iteration":")" + iteration +
         R"(","context":{"id":"C5"},"pdmIterationState":{"isLatest":)" + (isLatest ? "true" : "false") +
         R"(},"epmMaster":{"id":"M1","name":"Gear","number":"0042","cadName":"a.lxz"}})";
}

class StatusQueries : public PublicTest {
 protected:
  // The document D1 of a server without OData, whose versions are these.
  void ScriptDetails(bool isLatest) {
    ScriptRestServer();
    transport.Then(200, Document("D1", "1", isLatest));
    transport.Then(
        200, "[" + Document("D1", "1", isLatest) + (isLatest ? "" : "," + Document("D2", "2", true)) + "]");
  }

  // The document that a search by the name a.lxz finds.
  void ScriptFoundByName(const std::string& id, const std::string& iteration) {
    transport.Then(200, R"([{"id":")" + id + R"(","attributes":{"number":"0042"}}])");
    transport.Then(200, Document(id, iteration, id == "D2"));
  }
  // A document that is read, with the versions A.1 and A.2 after it.
  void ScriptBothVersionsOf(const std::string& id, const std::string& iteration) {
    transport.Then(200, Document(id, iteration, id == "D2"));
    transport.Then(200, "[" + Document("D1", "1", false) + "," + Document("D2", "2", true) + "]");
  }
  static std::string VersionsOf(const std::string& id) {
    return documentsPath + id + "/versions?contextId=C5";
  }

  std::string current = "unset";
  std::string latest = "unset";
  std::string latestUid = "unset";
};

TEST_F(StatusQueries, TheNewestIterationIsGivenByVersionAndUid) {
  ScriptDetails(false);
  transport.Then(200, Document("D2", "2", true));
  EXPECT_TRUE(GetLatest(uid, latest, latestUid));
  EXPECT_EQ(latest, "A.2");
  EXPECT_EQ(latestUid, "korvufenloom-vt://plm.example/vt/?id=D2&file=/a.lxz");
}

TEST_F(StatusQueries, GetLatestLeavesItsOutputsOnFailure) {
  EXPECT_FALSE(GetLatest("//nowhere/a", latest, latestUid));
  ScriptRestServer();
  transport.Then(404);
  EXPECT_FALSE(GetLatest(uid, latest, latestUid));
  EXPECT_EQ(latest, "unset");
  EXPECT_EQ(latestUid, "unset");
}

TEST_F(StatusQueries, TheAddressOfTheNewestIterationIsItself) {
  ScriptDetails(true);
  EXPECT_EQ(GetLatestUPath(uid), uid);
}

TEST_F(StatusQueries, AVfsPathOfTheNewestIterationStaysAVfsPath) {
  ScriptDetails(true);
  EXPECT_EQ(GetLatestUPath("//plm/?id=D1&x=1"), "//plm/?id=D1&x=1");
}

TEST_F(StatusQueries, AnOlderIterationLeadsToTheUidOfTheNewest) {
  ScriptDetails(false);
  transport.Then(200, Document("D2", "2", true));
  EXPECT_EQ(GetLatestUPath("//plm/?id=D1"), "korvufenloom-vt://plm.example/vt/?id=D2&file=/a.lxz");
}

TEST_F(StatusQueries, ALocationPathOfTheNewestIterationStaysAsItCame) {
  const std::string path = "//plm/Products/Bike/Folders/Frames/a.lxz";
  ScriptRestServer();
  ScriptFoundByName("D1", "1");
  transport.Then(200, Document("D1", "1", true)).Then(200, "[" + Document("D1", "1", true) + "]");
  EXPECT_EQ(GetLatestUPath(path.c_str()), path);
  EXPECT_EQ(LinesFrom(4), (std::vector<std::string>{std::string(documentsPath) + "D1",
                                                    std::string(documentsPath) + "D1", VersionsOf("D1")}));
}

TEST_F(StatusQueries, ALocationPathWithTheNewestVersionStaysAsItCame) {
  const std::string path = "korvufenloom-vfs://plm/Products/Bike/Folders/Frames/a.lxz|A.2";
  ScriptRestServer();
  ScriptFoundByName("D2", "2");
  ScriptBothVersionsOf("D2", "2");
  ScriptBothVersionsOf("D2", "2");
  EXPECT_EQ(GetLatestUPath(path.c_str()), path);
}

TEST_F(StatusQueries, ALocationPathWithAnOlderVersionLeadsToTheUidOfTheNewest) {
  ScriptRestServer();
  ScriptFoundByName("D2", "2");
  ScriptBothVersionsOf("D2", "2");  // in which the path's version is found
  ScriptBothVersionsOf("D1", "1");  // in which the newest is found
  transport.Then(200, Document("D2", "2", true));
  EXPECT_EQ(GetLatestUPath("//plm/Products/Bike/Folders/Frames/a.lxz|A.1"),
            "korvufenloom-vt://plm.example/vt/?id=D2&file=/a.lxz");
  const std::string document = documentsPath;
  EXPECT_EQ(LinesFrom(4), (std::vector<std::string>{document + "D2", document + "D2", VersionsOf("D2"),
                                                    document + "D1", VersionsOf("D1"), document + "D2"}));
}

TEST_F(StatusQueries, ALocationPathWithAVersionThatIsNotThereLeadsNowhere) {
  ScriptRestServer();
  for (const char* version : {"A.3", "B.1", "A"}) {
    ScriptFoundByName("D2", "2");
    ScriptBothVersionsOf("D2", "2");
    const std::string path = std::string("//plm/Products/Bike/Folders/Frames/a.lxz|") + version;
    EXPECT_EQ(GetLatestUPath(path.c_str()), "") << version;
  }
}

TEST_F(StatusQueries, TheNewestIterationOfACopyInAWorkspaceIsItself) {
  const char* const copy = "korvufenloom-vt://plm.example/vt/?id=D1|W7";
  ScriptDetails(true);
  EXPECT_EQ(GetLatestUPath(copy), copy);
}

// The newest is taken to lie in the workspace of the one that was asked for.
TEST_F(StatusQueries, AnOlderIterationInAWorkspaceLeadsToTheNewestInThatWorkspace) {
  ScriptDetails(false);
  transport.Then(200, Document("D2", "2", true));
  EXPECT_EQ(GetLatestUPath("korvufenloom-vt://plm.example/vt/?id=D1|W7"),
            "korvufenloom-vt://plm.example/vt/?id=D2|W7&file=/a.lxz");
}

TEST_F(StatusQueries, GetLatestUPathIsEmptyOnEveryFailure) {
  EXPECT_EQ(GetLatestUPath("//nowhere/a"), "");
  EXPECT_EQ(GetLatestUPath(nullptr), "");
  ScriptDetails(false);
  transport.Then(404);
  EXPECT_EQ(GetLatestUPath(uid), "");
  transport.Then(500);
  EXPECT_EQ(GetLatestUPath(uid), "");
}

TEST_F(StatusQueries, TheStatusTellsTheNewestFromAnOlderIteration) {
  ScriptDetails(true);
  EXPECT_EQ(GetStatus(uid, current, latest, nullptr), 0);
  EXPECT_EQ(current, "A.1");
  EXPECT_EQ(latest, "A.1");
  EXPECT_EQ(transport.requests().size(), 5U);
}

TEST_F(StatusQueries, AnOlderIterationGivesTheVersionAndUidOfTheNewest) {
  ScriptDetails(false);
  transport.Then(200, Document("D2", "2", true));
  EXPECT_EQ(GetStatus(uid, current, latest, &latestUid), 1);
  EXPECT_EQ(current, "A.1");
  EXPECT_EQ(latest, "A.2");
  EXPECT_EQ(latestUid, "korvufenloom-vt://plm.example/vt/?id=D2&file=/a.lxz");
}

TEST_F(StatusQueries, OneTextForBothVersionsTellsAnOlderIterationTheSame) {
  ScriptDetails(false);
  std::string both;
  EXPECT_EQ(GetStatus(uid, both, both, nullptr), 1);
  EXPECT_EQ(both, "A.2");
}

TEST_F(StatusQueries, AVfsPathHasNoStatusAndSendsNothing) {
  const auto session = StartSession();
  EXPECT_EQ(GetStatus("//plm/?id=D1", current, latest, &latestUid), -1);
  EXPECT_EQ(GetStatus(nullptr, current, latest, &latestUid), -1);
  EXPECT_EQ(current, "unset");
  EXPECT_EQ(latest, "unset");
  EXPECT_EQ(latestUid, "unset");
  EXPECT_THAT(transport.requests(), IsEmpty());
  EXPECT_THAT(Traces(), IsEmpty());
  EXPECT_EQ(GetServerURL("//plm/"), "https://plm.example/vt/");
}

TEST_F(StatusQueries, AFailedStatusAsksForTheObjectOfAnEmptyId) {
  ScriptRestServer();
  transport.Then(404).Then(404);
  EXPECT_EQ(GetStatus(uid, current, latest, &latestUid), -1);
  EXPECT_EQ(current, "unset");
  EXPECT_EQ(latestUid, "");
  EXPECT_EQ(LinesFrom(3), (std::vector<std::string>{std::string(documentsPath) + "D1", documentsPath}));
}

TEST_F(StatusQueries, AServerThatCannotBeReachedIsWrittenOffForTheSession) {
  auto session = StartSession();
  ScriptRestServer();
  transport.ThenFail(du::http::ErrorCode::TimedOut);
  EXPECT_EQ(GetStatus(uid, current, latest, nullptr), -1);
  EXPECT_EQ(GetServerURL("//plm/"), "");
  EXPECT_EQ(GetStatus(uid, current, latest, nullptr), -1);
  EXPECT_EQ(transport.requests().size(), 4U);
  session.reset();
  EXPECT_EQ(GetServerURL("//plm/"), "https://plm.example/vt/");
}

TEST_F(StatusQueries, AnObjectThatIsNotThereWritesNothingOff) {
  const auto session = StartSession();
  ScriptRestServer();
  transport.Then(404);
  EXPECT_EQ(GetStatus(uid, current, latest, nullptr), -1);
  EXPECT_EQ(GetServerURL("//plm/"), "https://plm.example/vt/");
}

TEST_F(StatusQueries, WithoutASessionNothingIsRemembered) {
  ScriptRestServer();
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_EQ(GetStatus(uid, current, latest, nullptr), -1);
  EXPECT_EQ(GetServerURL("//plm/"), "https://plm.example/vt/");
}

TEST_F(StatusQueries, TheLinkContextIsTheServersKey) {
  std::string context = "unset";
  EXPECT_FALSE(GetLinkContext("//nowhere/a", context));
  EXPECT_EQ(context, "unset");
  EXPECT_TRUE(GetLinkContext("//plm/Products/x", context));
  EXPECT_EQ(context, "korvufenloom-vt://plm.example/vt/");
  EXPECT_TRUE(GetLinkContext(uid, context));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(StatusQueries, DetailsAreGivenForTheKeysThatTheHostPut) {
  ScriptRestServer();
  transport.Then(200, Document("D1", "1", true));
  std::map<VtDetails, std::string> details{
      {DetailName, "old"}, {DetailNumber, "old"}, {static_cast<VtDetails>(99), "kept"}};
  EXPECT_TRUE(ReadDetails(uid, details));
  EXPECT_EQ(details,
            (std::map<VtDetails, std::string>{
                {DetailName, "Gear"}, {DetailNumber, "0042"}, {static_cast<VtDetails>(99), "kept"}}));
}

TEST_F(StatusQueries, AnEmptyMapAsksTheServerAllTheSame) {
  ScriptRestServer();
  transport.Then(200, Document("D1", "1", true)).Then(404);
  std::map<VtDetails, std::string> details;
  EXPECT_TRUE(ReadDetails(uid, details));
  EXPECT_FALSE(ReadDetails(uid, details));
  EXPECT_THAT(details, IsEmpty());
}

TEST_F(StatusQueries, AMissingAttributeGivesTheEmptyText) {
  ScriptRestServer();
  transport.Then(200, R"({"id":"D1"})");
  std::map<VtDetails, std::string> details{{DetailName, "old"}};
  EXPECT_TRUE(ReadDetails(uid, details));
  EXPECT_EQ(details.at(DetailName), "");
}

TEST_F(StatusQueries, FailedDetailsLeaveTheMap) {
  ScriptRestServer();
  transport.Then(500);
  std::map<VtDetails, std::string> details{{DetailName, "old"}};
  EXPECT_FALSE(ReadDetails(uid, details));
  EXPECT_FALSE(ReadDetails("//nowhere/a", details));
  EXPECT_EQ(details.at(DetailName), "old");
}

}  // namespace
}  // namespace vtdirect_test
