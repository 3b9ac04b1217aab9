#include "base/result.h"
#include "documents/reading/document_reads.h"
#include "tests/wire/documents/connected_test.h"

namespace {

using lxservices::cms_interface::HandOver;
using namespace lxservices::cms_interface::vantry;
using namespace vtdirect_test;

using VersionReading = ConnectedTest;

TEST_F(VersionReading, SendsIdAndContext) {
  transport.Then(200, "[]");
  std::vector<DocumentSummary> versions;
  EXPECT_TRUE(HandOver(ReadDocumentVersions(Begin(connection), "D1001", "C5"), versions));
  EXPECT_EQ(transport.requests(),
            Requests{Read("servlet/rest/v1/dkm/documents/D1001/versions?contextId=C5")});
}

TEST_F(VersionReading, EscapesIdAndContext) {
  transport.Then(200, "[]");
  std::vector<DocumentSummary> versions;
  EXPECT_TRUE(HandOver(ReadDocumentVersions(Begin(connection), "D/1", "C 5&x"), versions));
  EXPECT_EQ(transport.lines(),
            Lines{"GET /vt/servlet/rest/v1/dkm/documents/D%2F1/versions?contextId=C%205%26x"});
}

TEST_F(VersionReading, GivesTheServersOrderWithMasters) {
  transport.Then(200, R"([{"id":"D3","revision":"B","iteration":"1","epmMaster":{"id":"M1"}},
                          {"id":"D1","revision":"A","iteration":"1"},
                          {"id":"D2","revision":"A","iteration":"2"}])");
  std::vector<DocumentSummary> versions;
  EXPECT_TRUE(HandOver(ReadDocumentVersions(Begin(connection), "D1", "C1"), versions));
  ASSERT_EQ(versions.size(), 3u);
  EXPECT_EQ(versions[0].id + versions[1].id + versions[2].id, "D3D1D2");
  EXPECT_EQ(versions[0].master.id, "M1");
  EXPECT_EQ(versions[2].iteration, "2");
}

TEST_F(VersionReading, PassesOverElementsThatAreNoObjects) {
  transport.Then(200, R"([7,{"id":"D1"},null,"x",[]])");
  std::vector<DocumentSummary> versions;
  EXPECT_TRUE(HandOver(ReadDocumentVersions(Begin(connection), "D1", "C1"), versions));
  ASSERT_EQ(versions.size(), 1u);
  EXPECT_EQ(versions[0].id, "D1");
}

TEST_F(VersionReading, TakesWhatIsNoArrayForAnEmptyList) {
  for (const char* body : {"{}", "x", "", "7"}) {
    transport.Then(200, body);
    std::vector<DocumentSummary> versions;
    EXPECT_TRUE(HandOver(ReadDocumentVersions(Begin(connection), "D1", "C1"), versions)) << body;
    EXPECT_TRUE(versions.empty()) << body;
  }
}

TEST_F(VersionReading, FailsOutsideSuccessWithoutATrace) {
  transport.Then(404, R"([{"id":"D1"}])").ThenFail(du::http::ErrorCode::NoConnection);
  std::vector<DocumentSummary> versions;
  EXPECT_FALSE(HandOver(ReadDocumentVersions(Begin(connection), "D1", "C1"), versions));
  EXPECT_FALSE(HandOver(ReadDocumentVersions(Begin(connection), "D1", "C1"), versions));
  EXPECT_TRUE(versions.empty());
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace
