#include "documents/reading/file_info.h"

#include "base/result.h"
#include "tests/wire/documents/connected_test.h"

namespace {

using namespace lxservices::cms_interface;
using vantry::ParseCheckoutId;
using namespace vtdirect_test;

using FileInfoReading = ConnectedTest;

TEST_F(FileInfoReading, ReadsTheFirstFieldAndKeepsTheWholeId) {
  transport.Then(200, R"({"id":"D1","revision":"A","iteration":"1","epmMaster":{"cadName":"fork.lxz"}})");
  FileInfo info;
  EXPECT_EQ(HandOver(vantry::GetFileInfo(Begin(connection), ParseCheckoutId("D1|W2|D3|T")), info), Ok);
  EXPECT_EQ(transport.requests(), Requests{Read("servlet/rest/v1/dkm/documents/D1")});
  EXPECT_EQ(info.id, "D1|W2|D3|T");
  EXPECT_EQ(info.version, "A.1");
  EXPECT_EQ(info.cadName, "fork.lxz");
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(FileInfoReading, TracesAndGivesARefusal) {
  transport.Then(404, "gone");
  FileInfo info;
  info.cadName = "kept";
  EXPECT_EQ(HandOver(vantry::GetFileInfo(Begin(connection), ParseCheckoutId("D1|W2")), info), Refused);
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to locate document D1|W2 on server\n"}}));
  EXPECT_EQ(info.cadName, "kept");
}

TEST_F(FileInfoReading, TracesAndGivesAFailedConnection) {
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  FileInfo info;
  EXPECT_EQ(HandOver(vantry::GetFileInfo(Begin(connection), ParseCheckoutId("D1")), info), ConnectionFailed);
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to locate document D1 on server\n"}}));
}

TEST_F(FileInfoReading, TakesABodyThatIsNoJsonForAnEmptyDocument) {
  transport.Then(200, "<html>");
  FileInfo info;
  EXPECT_EQ(HandOver(vantry::GetFileInfo(Begin(connection), ParseCheckoutId("D1")), info), Ok);
  EXPECT_EQ(info.id, "D1");
  EXPECT_EQ(info.version, ".");
}

}  // namespace
