#include "server/create_file_server.h"
#include "tests/wire/public/listed_server.h"

namespace {

using namespace lxservices::cms_interface;
using namespace vtdirect_test;

constexpr const char* schemaLines[] = {"GET /vt/servlet/odata/DataAdmin/$metadata",
                                       "GET /vt/servlet/odata/DynamicDocMgmt/$metadata",
                                       "GET /vt/servlet/odata/CADDocumentMgmt/$metadata"};

using ServerObject = ListedServerTest;
using ServerDetails = ListedServerTest;

TEST_F(ServerObject, IsMadeWithoutARequestAndEnteredNowhere) {
  const auto server = CreateFileServer("http://Other.example:81/x", [](const char*) { return false; });
  ASSERT_NE(server, nullptr);
  EXPECT_TRUE(transport.requests().empty());
  EXPECT_EQ(Nicknames(), Lines{"plm"});
  EXPECT_EQ(TableNow().servers.size(), 1u);
}

TEST_F(ServerObject, GivesItsNormalisedKeyAndItsUrlAsItWasGiven) {
  const auto server = CreateFileServer("http://Other.example:81/x", [](const char*) { return false; });
  EXPECT_EQ(server->GetServerKey(), "korvufenloom-vt://Other.example:81/x/");
  EXPECT_EQ(server->GetServerURL(), "http://Other.example:81/x");
}

TEST_F(ServerObject, AlwaysOffersCheckoutByItself) {
  const auto server = Plm();
  CheckoutServer* const checkout = server->GetCheckoutServer();
  ASSERT_NE(checkout, nullptr);
  EXPECT_EQ(dynamic_cast<void*>(checkout), dynamic_cast<void*>(server.get()));
  EXPECT_EQ(server->GetCheckoutServer(), checkout);
  EXPECT_TRUE(transport.requests().empty());
}

TEST_F(ServerObject, SaysTrueInItsPlace) {
  EXPECT_TRUE(Plm()->AlwaysTrue());
}

TEST_F(ServerObject, IsOfTheVantryKind) {
  EXPECT_NE(dynamic_cast<vantry::VantryFileServer*>(Plm().get()), nullptr);
}

TEST_F(ServerObject, IsReachableWhenItsSchemaIsRead) {
  ThenSchema();
  EXPECT_TRUE(Plm()->TestConnection());
  EXPECT_EQ(transport.lines(), Lines{schemaLines[1]});
}

TEST_F(ServerObject, IsReachableWhenItsContextsAreRead) {
  transport.Then(404).Then(200, "[]");
  EXPECT_TRUE(Plm()->TestConnection());
  EXPECT_EQ(transport.lines(), (Lines{schemaLines[1], "GET /vt/servlet/rest/v1/contexts"}));
}

TEST_F(ServerObject, IsNotReachableWhenNeitherIsRead) {
  transport.Then(404).Then(401);
  EXPECT_FALSE(Plm()->TestConnection());
}

TEST_F(ServerDetails, FindOutTheServicesFirstAndOnce) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(200, documentJson).Then(200, documentJson);
  FileInfo current;
  std::map<std::string, std::string> attributes;
  DocumentQuery query;
  query.current = &current;
  query.attributes = &attributes;
  EXPECT_EQ(Plm()->ReadDetails("D1|W2", query), Ok);
  EXPECT_EQ(Plm()->ReadDetails("D1", query), Ok);
  EXPECT_EQ(transport.lines(),
            (Lines{schemaLines[0], schemaLines[1], schemaLines[2], documentLine, documentLine}));
  EXPECT_EQ(transport.requests()[3].headers, "Accept: application/json");
  EXPECT_EQ(current.id, "D1");
  EXPECT_EQ(attributes, (std::map<std::string, std::string>{{"name", "Fork"}, {"number", "0042"}}));
}

TEST_F(ServerDetails, FillTheDocumentUnderTheGivenId) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(200, documentJson);
  FileInfo current;
  DocumentQuery query;
  query.current = &current;
  EXPECT_EQ(Plm()->ReadDetails("D1|W2|D3|T", query), Ok);
  EXPECT_EQ(transport.lines().back(), documentLine);
  EXPECT_EQ(current.id, "D1|W2|D3|T");
  EXPECT_EQ(current.version, "B.3");
  EXPECT_EQ(current.cadName, "fork 1.lxz");
  EXPECT_EQ(current.size, 5u);
}

TEST_F(ServerDetails, GiveOneRowForEachContentSection) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(200, R"({"epmMaster":{"cadName":"n"},"secondaryContents":[{"id":"X"}],
      "cadContent":{"contentSections":[{"id":"S1","streamId":17,"fileName":"{$CAD_NAME}.z","contentUrl":["u1","u2"]},
        7,{"fileName":"plain"}]}})");
  std::vector<SourceEntry> contents;
  DocumentQuery query;
  query.contents = &contents;
  EXPECT_EQ(Plm()->ReadDetails("D1", query), Ok);
  Lines rows;
  for (const auto& entry : contents) rows.push_back(entry.fileName + ";" + entry.url + ";" + entry.key);
  EXPECT_EQ(rows, (Lines{"n.z;u1;S1:17", ";;:0", "plain;;:0"}));
}

TEST_F(ServerDetails, ReadTheDocumentEvenWhenTheServicesCannotBeAsked) {
  transport.Then(500).Then(200, documentJson).Then(503).Then(200, documentJson);
  DocumentQuery query;
  EXPECT_EQ(Plm()->ReadDetails("D1", query), Ok);
  EXPECT_EQ(Plm()->ReadDetails("D1", query), Ok);
  EXPECT_EQ(transport.lines(), (Lines{schemaLines[0], documentLine, schemaLines[0], documentLine}));
}

TEST_F(ServerDetails, GoOnWithTheServiceWhereTheyStopped) {
  transport.Then(404).Then(500).Then(200, documentJson);
  ThenSchema();
  transport.Then(404).Then(200, documentJson);
  DocumentQuery query;
  EXPECT_EQ(Plm()->ReadDetails("D1", query), Ok);
  EXPECT_EQ(Plm()->ReadDetails("D1", query), Ok);
  EXPECT_EQ(transport.lines(), (Lines{schemaLines[0], schemaLines[1], documentLine, schemaLines[1],
                                      schemaLines[2], documentLine}));
}

TEST_F(ServerDetails, GiveTheStatusOfAFailedReadAndTraceIt) {
  for (int i = 0; i < 3; ++i) ThenSchema();
  transport.Then(404).ThenFail(du::http::ErrorCode::NoConnection);
  DocumentQuery query;
  FileInfo current;
  current.cadName = "kept";
  query.current = &current;
  EXPECT_EQ(Plm()->ReadDetails("D1|W2", query), Refused);
  EXPECT_EQ(Plm()->ReadDetails("D1|W2", query), ConnectionFailed);
  EXPECT_EQ(current.cadName, "kept");
  const TraceLine line{3, "VtDirect", "Failed to locate document D1|W2 on server\n"};
  EXPECT_EQ(trace.lines(), (Traces{line, line}));
}

TEST_F(ServerObject, ReadsAnObjectsSummaryWithoutAskingForTheServices) {
  transport.Then(200, documentJson);
  FileInfo info;
  EXPECT_EQ(Plm()->GetFileInfo("D1|W2", info), Ok);
  EXPECT_EQ(info.id, "D1|W2");
  EXPECT_EQ(transport.lines(), Lines{documentLine});
}

TEST_F(ServerObject, TakesANullIdForNone) {
  transport.Then(200, "{}").Then(404).Then(404).Then(404).Then(200, "{}").Then(200, "{}");
  FileInfo info;
  info.id = "before";
  DocumentQuery query;
  query.current = &info;
  EXPECT_EQ(Plm()->GetFileInfo(nullptr, info), Ok);
  EXPECT_EQ(info.id, "");
  EXPECT_EQ(Plm()->ReadDetails(nullptr, query), Ok);
  EXPECT_FALSE(Plm()->GetFile(nullptr, directory.File("copy").c_str(), info, {}));
  EXPECT_EQ(trace.lines().back(), (TraceLine{3, "VtDirect", "Failed to download file  with error: "}));
}

}  // namespace
