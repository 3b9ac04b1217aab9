#include "browsing/document_search.h"

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

class DocumentSearch : public LocationTest {};

auto Is(const std::string& id, const std::string& version, bool checkedOut) {
  return testing::AllOf(testing::Field(&DocCandidate::id, id),
                        testing::Field(&DocCandidate::version, version),
                        testing::Field(&DocCandidate::checkedOut, checkedOut));
}

constexpr const char* odataReadHeaders =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n"
    "Accept: application/json";

TEST_F(DocumentSearch, FindsCadDocumentsByTheirFileName) {
  wire.Then(200, Candidates({{"D1", "A.1", ""}, {"D2", "B.2", "checked out"}}));
  EXPECT_THAT(SearchCadDocuments(Begin(connection), "gear.lxz"),
              ElementsAre(Is("D1", "A.1", false), Is("D2", "B.2", true)));
  ASSERT_EQ(wire.requests().size(), 1u);
  EXPECT_EQ(wire.requests()[0].line,
            "GET /vt/servlet/odata/v1/CADDocumentMgmt/CADDocuments?$filter=FileName eq 'gear.lxz'"
            "&$orderby=Version desc&$select=ID,Version,CheckOutStatus&zvk.search.latestversion=true");
  EXPECT_EQ(wire.requests()[0].headers, odataReadHeaders);
  EXPECT_EQ(wire.requests()[0].body, std::nullopt);
  ExpectQuiet();
}

TEST_F(DocumentSearch, FindsDynamicDocumentsOfTheSecondServiceVersionByTheirCadName) {
  wire.Then(200, Candidates({{"D1", "A.1", ""}}));
  EXPECT_THAT(SearchDynamicDocumentsV2(Begin(connection), "gear.lxz"), ElementsAre(Is("D1", "A.1", false)));
  EXPECT_THAT(
      wire.lines(),
      ElementsAre("GET /vt/servlet/odata/v2/DynamicDocMgmt/DynamicDocuments?$filter=CADName eq 'gear.lxz'"
                  "&$orderby=Version desc&$select=ID,Version,CheckOutStatus&zvk.search.latestversion=true"));
  EXPECT_EQ(wire.requests()[0].headers, odataReadHeaders);
  ExpectQuiet();
}

TEST_F(DocumentSearch, FindsEveryVersionByTheFirstServiceVersionWhichHasNoSwitchForTheNewest) {
  wire.Then(200, Candidates({{"D2", "A.2", ""}, {"D1", "A.1", ""}}));
  EXPECT_THAT(SearchDynamicDocumentsV1(Begin(connection), "gear.lxz"),
              ElementsAre(Is("D2", "A.2", false), Is("D1", "A.1", false)));
  EXPECT_THAT(
      wire.lines(),
      ElementsAre("GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=CADName eq 'gear.lxz'"
                  "&$orderby=Version desc&$select=ID,Version,CheckOutStatus"));
  ExpectQuiet();
}

TEST_F(DocumentSearch, EscapesTheNameAloneAndDoublesNoApostrophe) {
  wire.Then(200, Candidates({})).Then(200, Candidates({})).Then(200, Candidates({}));
  EXPECT_THAT(SearchCadDocuments(Begin(connection), "big gear's & more.lxz"), IsEmpty());
  EXPECT_THAT(SearchDynamicDocumentsV2(Begin(connection), "a/b"), IsEmpty());
  EXPECT_THAT(SearchDynamicDocumentsV1(Begin(connection), "a%b"), IsEmpty());
  EXPECT_THAT(wire.lines(),
              ElementsAre("GET /vt/servlet/odata/v1/CADDocumentMgmt/CADDocuments?$filter=FileName eq "
                          "'big%20gear%27s%20%26%20more.lxz'"
                          "&$orderby=Version desc&$select=ID,Version,CheckOutStatus&zvk.search.latestversion="
                          "true",
                          Get(DynamicV2Path("a%2Fb")), Get(DynamicV1Path("a%25b"))));
}

TEST_F(DocumentSearch, DropsRowsWithoutThreeTexts) {
  wire.Then(
      200, Rows({R"({"ID":"D1","Version":"A.1","CheckOutStatus":null})", R"({"ID":"D2","Version":"A.1"})",
                 R"({"ID":3,"Version":"A.1","CheckOutStatus":""})",
                 R"({"ID":"D4","Version":1,"CheckOutStatus":""})", R"({"Version":"A.1","CheckOutStatus":""})",
                 R"("D6")", "null", "[]", R"({"ID":"D5","Version":"A.2","CheckOutStatus":"x"})"}));
  EXPECT_THAT(SearchCadDocuments(Begin(connection), "n"), ElementsAre(Is("D5", "A.2", true)));
  ExpectQuiet();
}

TEST_F(DocumentSearch, ReadsAllPagesAndFollowsALinkToAnotherHost) {
  wire.Then(200, RowsAfterLink("https://two.example/odata/page?2",
                               {R"({"ID":"D1","Version":"A.1","CheckOutStatus":""})"}));
  wire.Then(200, R"({"value":null,"@odata.nextLink":"https://two.example/odata/page?3"})");
  wire.Then(200, Candidates({{"D3", "A.3", ""}}));
  EXPECT_THAT(SearchDynamicDocumentsV2(Begin(connection), "n"),
              ElementsAre(Is("D1", "A.1", false), Is("D3", "A.3", false)));
  ASSERT_EQ(wire.requests().size(), 3u);
  EXPECT_EQ(wire.requests()[1].server, "https://two.example");
  EXPECT_EQ(wire.requests()[1].line, "GET /odata/page?2");
  EXPECT_EQ(wire.requests()[2].line, "GET /odata/page?3");
}

TEST_F(DocumentSearch, KeepsWhatItFoundBeforeAPageThatFails) {
  wire.Then(200, RowsAfterLink("https://plm.example/vt/two",
                               {R"({"ID":"D1","Version":"A.1","CheckOutStatus":""})"}));
  wire.Then(500, "broken");
  EXPECT_THAT(SearchDynamicDocumentsV2(Begin(connection), "n"), ElementsAre(Is("D1", "A.1", false)));
  wire.Then(200, "[]");
  EXPECT_THAT(SearchDynamicDocumentsV2(Begin(connection), "n"), IsEmpty());
  wire.ThenFail(du::http::ErrorCode::NoConnection);
  EXPECT_THAT(SearchDynamicDocumentsV2(Begin(connection), "n"), IsEmpty());
  ExpectQuiet();
}

TEST_F(DocumentSearch, SearchesAFolderWithTheWholeFilterEscaped) {
  wire.Then(200, Rows({R"({"CADName":"big gear","ID":"D7","Version":"B.2"})"}));
  const VersionEntry found =
      SearchFolderByCadName(Begin(connection), "big gear", "Containers('C100')/Folders('F1')");
  EXPECT_EQ(found.id, "D7");
  EXPECT_EQ(found.version, "B.2");
  ASSERT_EQ(wire.requests().size(), 1u);
  EXPECT_EQ(wire.requests()[0].line,
            "GET /vt/servlet/odata/v4/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
            "ZVK.DynamicDocMgmt.DynamicDocument?$filter=CADName%20eq%20%27big%20gear%27"
            "&$orderby=Version desc&$select=CADName,ID,Version&$top=1");
  EXPECT_EQ(wire.requests()[0].headers, odataReadHeaders);
}

TEST_F(DocumentSearch, TakesTheFirstRowOfAFolderWithIdAndVersionAndReadsNoFurther) {
  wire.Then(200,
            RowsAfterLink("https://plm.example/vt/two", {R"({"ID":"D1"})", R"({"ID":"D2","Version":null})"}));
  wire.Then(200, RowsAfterLink("https://plm.example/vt/three",
                               {R"({"ID":"D3","Version":"A.1"})", R"({"ID":"D4","Version":"A.2"})"}));
  const VersionEntry found = SearchFolderByCadName(Begin(connection), "n", "R");
  EXPECT_EQ(found.id, "D3");
  EXPECT_EQ(found.version, "A.1");
  EXPECT_EQ(wire.requests().size(), 2u);
}

TEST_F(DocumentSearch, GivesNothingForAFolderWithoutTheDocument) {
  wire.Then(200, Rows({})).Then(404);
  EXPECT_EQ(SearchFolderByCadName(Begin(connection), "n", "R").id, "");
  EXPECT_EQ(SearchFolderByCadName(Begin(connection), "n", "R").id, "");
  ExpectQuiet();
}

}  // namespace
}  // namespace vtdirect_test
