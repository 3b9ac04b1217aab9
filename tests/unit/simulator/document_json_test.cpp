#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

constexpr const char* documentsPath = "/servlet/rest/v1/dkm/documents/";

TEST_F(SimulatorTest, DocumentHasItsScalarsContextAndMaster) {
  const auto document = GetJson(std::string(documentsPath) + "D1001");
  EXPECT_STREQ(document["id"].GetString(), "D1001");
  EXPECT_STREQ(document["revision"].GetString(), "B");
  EXPECT_STREQ(document["iteration"].GetString(), "1");  // a text, although it counts
  EXPECT_STREQ(document["authAppVersion"].GetString(), "310");
  EXPECT_STREQ(document["ndVersion"].GetString(), "J-01");
  EXPECT_TRUE(document["isDerived"].GetBool());
  EXPECT_STREQ(document["context"]["id"].GetString(), "OR:vn.product.Product:101");
  EXPECT_STREQ(document["context"]["name"].GetString(), "Trekking Bike");
  EXPECT_STREQ(document["context"]["type"].GetString(), "Product");
  const auto& master = document["epmMaster"];
  EXPECT_STREQ(master["id"].GetString(), "M2001");
  EXPECT_STREQ(master["name"].GetString(), "Fork");
  EXPECT_STREQ(master["number"].GetString(), "0000100001");
  EXPECT_STREQ(master["category"].GetString(), "iso");
  EXPECT_STREQ(master["subCategory"].GetString(), "FENLET");
  EXPECT_STREQ(master["cadName"].GetString(), "fork.lxz");
  EXPECT_STREQ(master["authoringApplication"].GetString(), "MERIDOX");
}

TEST_F(SimulatorTest, DocumentTellsWhereItStandsWithoutTheRootFolder) {
  const auto document = GetJson(std::string(documentsPath) + "D1004");
  EXPECT_STREQ(document["locationFolder"]["id"].GetString(), "OR:vn.folder.SubFolder:213");
  EXPECT_STREQ(document["locationFolder"]["name"].GetString(), "Chains");
  EXPECT_STREQ(document["locationFolder"]["path"].GetString(), "/Trekking Bike/Drivetrain/Chains");
}

TEST_F(SimulatorTest, DocumentInARootFolderStandsRightUnderItsContext) {
  const auto document = GetJson(std::string(documentsPath) + "D1009");
  EXPECT_STREQ(document["locationFolder"]["id"].GetString(), "OR:vn.folder.Cabinet:201");
  EXPECT_STREQ(document["locationFolder"]["path"].GetString(), "/Trekking Bike");
}

TEST_F(SimulatorTest, ContentCarriesNumbersAndAnAbsoluteAddressMadeOfTheHostHeader) {
  const auto document = GetJson(std::string(documentsPath) + "D1001");
  const auto& cadContent = document["cadContent"];
  EXPECT_FALSE(cadContent["isSectioned"].GetBool());
  ASSERT_EQ(cadContent["contentSections"].Size(), 1U);
  const auto& section = cadContent["contentSections"][0];
  EXPECT_STREQ(section["category"].GetString(), "FENLET");
  EXPECT_STREQ(section["fileName"].GetString(), "{$CAD_NAME}");
  ASSERT_TRUE(section["streamId"].IsUint64());
  EXPECT_EQ(section["streamId"].GetUint64(), 10010U);
  ASSERT_TRUE(section["fileSize"].IsUint64());
  EXPECT_EQ(section["fileSize"].GetUint64(), std::filesystem::file_size(directory_ / "data/content/10010"));
  ASSERT_EQ(section["contentUrl"].Size(), 1U);
  EXPECT_STREQ(section["contentUrl"][0].GetString(),
               "http://sim.example:8080/servlet/rest/v1/content/streams/10010/fork.lxz");
}

TEST_F(SimulatorTest, CodebaseUrlAndPrefixStandInContentAddresses) {
  options_.prefix = "/vt";
  auto document = GetJson("/vt/servlet/rest/v1/dkm/documents/D1002");
  EXPECT_STREQ(document["cadContent"]["contentSections"][0]["contentUrl"][0].GetString(),
               "http://sim.example:8080/vt/servlet/rest/v1/content/streams/10020/frame.lxz");
  options_.codebaseUrl = "https://pdm.example/app";
  Start();
  document = GetJson("/vt/servlet/rest/v1/dkm/documents/D1002");
  EXPECT_STREQ(document["cadContent"]["contentSections"][0]["contentUrl"][0].GetString(),
               "https://pdm.example/app/servlet/rest/v1/content/streams/10020/frame.lxz");
}

TEST_F(SimulatorTest, UnusableHostHeaderIsNotRepeated) {
  Start().SetOwnAddress("127.0.0.1:99");
  Request request;
  request.method = "GET";
  request.target = std::string(documentsPath) + "D1002";
  request.user = "anna";
  request.host = "evil/\"><";
  EXPECT_NE(simulator_->Handle(request).body.find("\"http://127.0.0.1:99/servlet/"), std::string::npos);
}

TEST_F(SimulatorTest, NameWithTheTenForbiddenCharactersIsEscapedInItsAddress) {
  const auto document = GetJson(std::string(documentsPath) + "D1007");
  EXPECT_STREQ(document["epmMaster"]["cadName"].GetString(), "odd|\\/<>:\"?*%name.lxz");
  const std::string url = document["cadContent"]["contentSections"][0]["contentUrl"][0].GetString();
  EXPECT_EQ(url.substr(url.rfind('/')), "/odd%7C%5C%2F%3C%3E%3A%22%3F%2A%25name.lxz");
  const std::string path = url.substr(url.find("/servlet"));
  EXPECT_EQ(Get(path).file->path, directory_ / "data/content/10070");
}

TEST_F(SimulatorTest, SecondaryContentsAttributesAndDependenciesAreTold) {
  const auto document = GetJson(std::string(documentsPath) + "D1001");
  const auto& contents = document["secondaryContents"];
  ASSERT_EQ(contents.Size(), 2U);
  EXPECT_STREQ(contents[0]["category"].GetString(), "VIEWABLE");
  EXPECT_TRUE(contents[0]["isForwardable"].GetBool());
  EXPECT_FALSE(contents[0]["isHidden"].GetBool());
  EXPECT_STREQ(contents[1]["category"].GetString(), "VCSINFO");
  EXPECT_STREQ(contents[1]["fileName"].GetString(), "cad-metadata.json");
  EXPECT_TRUE(contents[1]["isHidden"].GetBool());

  const auto& attribute = document["fileBasedAttributes"][0];
  EXPECT_STREQ(attribute["parameterDefinition"]["parameterName"].GetString(), "ZVK_DD_LANGUAGE");
  EXPECT_STREQ(attribute["parameterDefinition"]["attributeName"].GetString(), "ZVK_DD_LANGUAGE");
  EXPECT_STREQ(attribute["parameterDefinition"]["valueType"].GetString(), "String");
  EXPECT_STREQ(attribute["parameterValue"]["value"].GetString(), "en");

  ASSERT_EQ(document["derivedSourceDependencies"].Size(), 1U);
  const auto& dependency = document["derivedSourceDependencies"][0];
  EXPECT_STREQ(dependency["asStoredChildName"].GetString(), "frame.lxz");
  EXPECT_STREQ(dependency["source"]["id"].GetString(), "D1002");
  EXPECT_STREQ(dependency["source"]["epmMaster"]["cadName"].GetString(), "frame.lxz");
  EXPECT_TRUE(dependency["source"]["revNum"].IsInt());
}

TEST_F(SimulatorTest, SectionedDocumentListsItsSectionsInOrder) {
  const auto document = GetJson(std::string(documentsPath) + "D1012");
  EXPECT_TRUE(document["cadContent"]["isSectioned"].GetBool());
  ASSERT_EQ(document["cadContent"]["contentSections"].Size(), 2U);
  EXPECT_STREQ(document["cadContent"]["contentSections"][0]["category"].GetString(), "GEOMETRY");
  EXPECT_STREQ(document["cadContent"]["contentSections"][1]["category"].GetString(), "APPEARANCE");
}

TEST_F(SimulatorTest, CheckoutShowsOnBothItsEndsAndAsOnesOwnToItsOwnerAlone) {
  for (const char* id : {"D1016", "D1026"}) {
    const auto document = GetJson(std::string(documentsPath) + id);
    const auto& state = document["pdmIterationState"];
    EXPECT_TRUE(state["isCheckout"].GetBool()) << id;
    EXPECT_TRUE(state["isCheckoutByYou"].GetBool()) << id;
    EXPECT_STREQ(state["checkoutByUser"].GetString(), "anna");
    EXPECT_STREQ(state["checkoutToFolderName"].GetString(), "Anna's bench");
  }
  const auto other = GetJson(std::string(documentsPath) + "D1016", "bruno");
  EXPECT_TRUE(other["pdmIterationState"]["isCheckout"].GetBool());
  EXPECT_FALSE(other["pdmIterationState"]["isCheckoutByYou"].GetBool());
}

TEST_F(SimulatorTest, WorkingCopyIsHiddenFromOthers) {
  EXPECT_EQ(Get(std::string(documentsPath) + "D1026", "bruno").status, 404);
  EXPECT_EQ(Get(std::string(documentsPath) + "D1025", "bruno").status, 200);
}

TEST_F(SimulatorTest, VersionsComeNewestFirstAndTenIsNewerThanNine) {
  const auto versions =
      GetJson(std::string(documentsPath) + "D1114/versions?contextId=OR%3Avn.product.Product%3A101");
  ASSERT_EQ(versions.Size(), 10U);
  EXPECT_STREQ(versions[0]["id"].GetString(), "D1014");
  EXPECT_STREQ(versions[0]["iteration"].GetString(), "10");
  EXPECT_TRUE(versions[0]["pdmIterationState"]["isLatest"].GetBool());
  EXPECT_STREQ(versions[1]["iteration"].GetString(), "9");
  EXPECT_FALSE(versions[1]["pdmIterationState"]["isLatest"].GetBool());
  EXPECT_STREQ(versions[9]["id"].GetString(), "D1114");
  EXPECT_STREQ(versions[9]["epmMaster"]["cadName"].GetString(), "chain.lxz");
}

TEST_F(SimulatorTest, VersionsLeaveWorkingCopiesOut) {
  const auto versions =
      GetJson(std::string(documentsPath) + "D1026/versions?contextId=OR:vn.product.Product:101");
  ASSERT_EQ(versions.Size(), 1U);
  EXPECT_STREQ(versions[0]["id"].GetString(), "D1016");
}

TEST_F(SimulatorTest, DocumentThatNeverLeftItsWorkspaceIsItsOnlyVersionAndStandsNowhere) {
  const auto versions =
      GetJson(std::string(documentsPath) + "D1017/versions?contextId=OR:vn.product.Product:101");
  ASSERT_EQ(versions.Size(), 1U);
  EXPECT_STREQ(versions[0]["id"].GetString(), "D1017");
  EXPECT_FALSE(GetJson(std::string(documentsPath) + "D1017").HasMember("locationFolder"));
}

TEST_F(SimulatorTest, VersionsNeedTheDocumentsOwnContext) {
  EXPECT_EQ(Get(std::string(documentsPath) + "D1001/versions").status, 400);
  EXPECT_EQ(Get(std::string(documentsPath) + "D1001/versions?contextId=OR:vn.product.Product:102").status,
            404);
}

TEST_F(SimulatorTest, SearchByNumberFindsVersionsAndOnesOwnWorkingCopy) {
  const std::string search = std::string(documentsPath) + "search?number=";
  EXPECT_EQ(GetJson(search + "0000100001").Size(), 3U);
  EXPECT_EQ(GetJson(search + "0000100016").Size(), 2U);
  EXPECT_EQ(GetJson(search + "0000100016", "bruno").Size(), 1U);
  EXPECT_EQ(GetJson(search + "0000%201000%2006").Size(), 1U);
  EXPECT_EQ(GetJson(search + "nothing").Size(), 0U);
  EXPECT_EQ(Get(std::string(documentsPath) + "search").status, 400);
}

TEST_F(SimulatorTest, SearchScopeKeepsToOneContext) {
  const std::string search = std::string(documentsPath) + "search?number=0000200013&scope=";
  EXPECT_EQ(GetJson(search + "OR%3Avn.product.Product%3A102").Size(), 1U);
  EXPECT_EQ(GetJson(search + "OR%3Avn.product.Product%3A101").Size(), 0U);
  EXPECT_EQ(GetJson(search).Size(), 1U);
}

TEST_F(SimulatorTest, UnknownDocumentIsRefusedWithAReason) {
  const Response response = Get(std::string(documentsPath) + "D1'%20OR%20'1'='1");
  EXPECT_EQ(response.status, 404);
  rapidjson::Document reason;
  reason.Parse(response.body.c_str());
  EXPECT_STREQ(reason["error"]["code"].GetString(), "no-such-document");
  EXPECT_TRUE(reason["error"]["message"].IsString());
}

TEST_F(SimulatorTest, ObjectQueryGivesABareArrayOfLatestVersions) {
  const std::string query = "/servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=";
  const auto gears = GetJson(query + "CADName%20eq%20'gear.lxz'");
  ASSERT_TRUE(gears.IsArray());
  ASSERT_EQ(gears.Size(), 2U);
  EXPECT_STREQ(gears[0]["attributes"]["number"].GetString(), "0000100003");
  EXPECT_STREQ(gears[0]["id"].GetString(), "D1003");
  EXPECT_STREQ(gears[1]["attributes"]["number"].GetString(), "0000200013");
  EXPECT_EQ(GetJson(query + "CADName%20eq%20'O'Ring%2012mm.lxz'").Size(), 1U);
  EXPECT_EQ(GetJson(query + "CADName%20eq%20'O''Ring%2012mm.lxz'").Size(), 1U);
  EXPECT_EQ(Get(query + "CADName%20ne%20'x'").status, 400);
  EXPECT_EQ(Get("/servlet/rest/objects?typeId=other&$filter=CADName%20eq%20'x'").status, 400);
}

TEST_F(SimulatorTest, ContentIsAFileAndNothingElseIsReachable) {
  const Response response = Get("/servlet/rest/v1/content/streams/10010/any%20name");
  ASSERT_TRUE(response.file);
  EXPECT_EQ(response.file->path, directory_ / "data/content/10010");
  EXPECT_EQ(Get("/servlet/rest/v1/content/streams/..%2Fvantry-sim.db/x").status, 400);
  EXPECT_EQ(Get("/servlet/rest/v1/content/streams/99999/x").status, 404);
  EXPECT_EQ(Get("/servlet/rest/v1/content/streams/-1/x").status, 400);
}

}  // namespace
}  // namespace vantry_sim
