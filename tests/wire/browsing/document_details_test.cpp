#include "browsing/document_details.h"

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class DocumentDetails : public LocationTest {
 protected:
  Status Ask(const char* id) {
    return GetDocumentDetails(Begin(connection, services), ParseCheckoutId(id), query);
  }
  DocumentQuery query;
};

auto Is(const std::string& id, const std::string& version) {
  return testing::AllOf(testing::Field(&VersionEntry::id, id),
                        testing::Field(&VersionEntry::version, version));
}

TEST_F(DocumentDetails, ReadTheDocumentEvenWhenNothingIsAsked) {
  wire.Then(200, Json({}));
  EXPECT_EQ(Ask("D1|W2"), Ok);
  EXPECT_THAT(wire.requests(),
              ElementsAre(SentRequest{serverUrl, Get(DocumentPath("D1")), "Accept: application/json", {}}));
  ExpectQuiet();
}

TEST_F(DocumentDetails, GiveTheStatusOfAFailedReadAndTraceTheWholeId) {
  LatestInfo latest;
  query.latest = &latest;
  wire.Then(404).ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_EQ(Ask("D1|W2"), Refused);
  EXPECT_EQ(Ask("D1|W2|D3|T"), ConnectionFailed);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(DocumentPath("D1")), Get(DocumentPath("D1"))));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1|W2 on server\n"),
                                    Error("Failed to locate document D1|W2|D3|T on server\n")));
}

TEST_F(DocumentDetails, GiveTheDocumentItselfWithTheIdAsItCame) {
  FileInfo current;
  query.current = &current;
  wire.Then(200, Json({.revision = "B", .iteration = "3"}));
  EXPECT_EQ(Ask("D1|W2"), Ok);
  EXPECT_EQ(current.id, "D1|W2");
  EXPECT_EQ(current.version, "B.3");
  EXPECT_EQ(current.cadName, "gear.lxz");
  EXPECT_EQ(wire.requests().size(), 1u);
}

TEST_F(DocumentDetails, ListEveryVersionInTheServersOrderByOneRequest) {
  std::vector<VersionEntry> versions;
  query.versions = &versions;
  wire.Then(200, Json({}));
  wire.Then(200, Docs({{.id = "D3", .iteration = "3", .isLatest = true}, {.id = "D2", .iteration = "2"}}));
  EXPECT_EQ(Ask("D1"), Ok);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(DocumentPath("D1")), Get(VersionsPath("D1"))));
  EXPECT_THAT(versions, ElementsAre(Is("D3", "A.3"), Is("D2", "A.2")));
  ExpectQuiet();
}

TEST_F(DocumentDetails, ListVersionsInTheWorkspaceOfTheIdButNotInATemporaryOne) {
  std::vector<VersionEntry> versions;
  query.versions = &versions;
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D3"}}));
  EXPECT_EQ(Ask("D1|W2"), Ok);
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D4"}}));
  EXPECT_EQ(Ask("D1|W2|D3|T"), Ok);
  EXPECT_THAT(versions, ElementsAre(Is("D3|W2", "A.1"), Is("D4", "A.1")));
}

TEST_F(DocumentDetails, IgnoreAFailedListOfVersions) {
  std::vector<VersionEntry> versions;
  std::map<std::string, std::string> attributes;
  query.versions = &versions;
  query.attributes = &attributes;
  wire.Then(200, Json({})).Then(500, "broken");
  EXPECT_EQ(Ask("D1"), Ok);
  EXPECT_THAT(versions, IsEmpty());
  EXPECT_THAT(attributes, ElementsAre(Pair("name", "Gear"), Pair("number", "0042")));
  ExpectQuiet();
}

TEST_F(DocumentDetails, ReadOneListForBothTheNewestVersionAndAllVersions) {
  std::vector<VersionEntry> versions;
  LatestInfo latest;
  query.versions = &versions;
  query.latest = &latest;
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D2", .iteration = "2", .isLatest = true}}));
  EXPECT_EQ(Ask("D1"), Ok);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(DocumentPath("D1")), Get(VersionsPath("D1"))));
  EXPECT_EQ(latest.id, "D2");
  EXPECT_THAT(versions, ElementsAre(Is("D2", "A.2")));
}

TEST_F(DocumentDetails, ReadTheListBehindTheSearchesAndLeaveASettledNewestVersionAlone) {
  services.dynamicDocPresent = services.dynamicDocV2 = true;
  std::vector<VersionEntry> versions;
  LatestInfo latest;
  query.versions = &versions;
  query.latest = &latest;
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.2", ""}}));
  wire.Then(200, Docs({{.id = "D7", .iteration = "7", .isLatest = true}}));
  EXPECT_EQ(Ask("D1"), Ok);
  EXPECT_THAT(wire.lines(),
              ElementsAre(Get(DocumentPath("D1")), Get(DynamicV2Path("gear.lxz")), Get(VersionsPath("D1"))));
  EXPECT_EQ(latest.id, "D9");
  EXPECT_EQ(latest.version, "A.2");
  EXPECT_THAT(versions, ElementsAre(Is("D7", "A.7")));
}

TEST_F(DocumentDetails, MakeNoSearchWhenTheVersionsAloneAreAsked) {
  services.dynamicDocPresent = services.dynamicDocV2 = true;
  std::vector<VersionEntry> versions;
  query.versions = &versions;
  wire.Then(200, Json({})).Then(200, "[]");
  EXPECT_EQ(Ask("D1"), Ok);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(DocumentPath("D1")), Get(VersionsPath("D1"))));
}

TEST_F(DocumentDetails, EscapeIdAndContextInTheListsRequest) {
  std::vector<VersionEntry> versions;
  query.versions = &versions;
  wire.Then(200, Json({.contextId = "OR:c 5"})).Then(200, "[]");
  EXPECT_EQ(Ask("VR:d:1"), Ok);
  EXPECT_THAT(wire.lines(),
              ElementsAre(Get(DocumentPath("VR%3Ad%3A1")), Get(VersionsPath("VR%3Ad%3A1", "OR%3Ac%205"))));
}

TEST_F(DocumentDetails, GiveOneRowForEachContentSection) {
  std::vector<SourceEntry> contents;
  query.contents = &contents;
  wire.Then(200, R"({"id":"D1","epmMaster":{"cadName":"gear.lxz"},"cadContent":{"contentSections":[
      {"id":"S1","streamId":17,"fileName":"{$CAD_NAME}-{$CAD_NAME}.x","contentUrl":["u1","u2"]},
      {"id":"S2","streamId":18446744073709551615,"fileName":"plain","contentUrl":[]},
      5]},"secondaryContents":[{"id":"S9"}]})");
  EXPECT_EQ(Ask("D1"), Ok);
  ASSERT_EQ(contents.size(), 3u);
  EXPECT_EQ(contents[0].fileName, "gear.lxz-gear.lxz.x");
  EXPECT_EQ(contents[0].url, "u1");
  EXPECT_EQ(contents[0].key, "S1:17");
  EXPECT_EQ(contents[1].fileName, "plain");
  EXPECT_EQ(contents[1].url, "");
  EXPECT_EQ(contents[1].key, "S2:18446744073709551615");
  EXPECT_EQ(contents[2].key, ":0");
}

TEST_F(DocumentDetails, ExpandNoPlaceholderInsideTheNameItself) {
  std::vector<SourceEntry> contents;
  query.contents = &contents;
  wire.Then(200, R"({"epmMaster":{"cadName":"{$CAD_NAME}"},"cadContent":{"contentSections":[
      {"fileName":"a{$CAD_NAME}b"}]}})");
  EXPECT_EQ(Ask("D1"), Ok);
  ASSERT_EQ(contents.size(), 1u);
  EXPECT_EQ(contents[0].fileName, "a{$CAD_NAME}b");
}

TEST_F(DocumentDetails, RefreshTheServicesFirstWhenAServerIsAsked) {
  LatestInfo latest;
  query.latest = &latest;
  AnswerSchemas(5, 2, 1);
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.2", ""}}));
  EXPECT_EQ(server->ReadDetails("D1", query), Ok);
  EXPECT_THAT(wire.lines(), Join(SchemaLines(), {Get(DocumentPath("D1")), Get(DynamicV2Path("gear.lxz"))}));
  wire.ClearRequests();
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.2", ""}}));
  EXPECT_EQ(server->ReadDetails("D1", query), Ok);
  EXPECT_THAT(wire.lines(), ElementsAre(Get(DocumentPath("D1")), Get(DynamicV2Path("gear.lxz"))));
}

TEST_F(DocumentDetails, AskTheFirstVersionOfTheDynamicServiceOnASchemaOfVersionOne) {
  LatestInfo latest;
  query.latest = &latest;
  AnswerSchemas(4, 1, 0);
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.2", ""}}));
  EXPECT_EQ(server->ReadDetails("D1", query), Ok);
  EXPECT_EQ(wire.lines().back(), Get(DynamicV1Path("gear.lxz")));
}

}  // namespace
}  // namespace vtdirect_test
