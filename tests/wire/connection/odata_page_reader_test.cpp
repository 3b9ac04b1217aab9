#include "connection/odata_page_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/scripted_transport.h"
#include "tests/support/temporary_directory.h"

namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using vtdirect_test::SentRequest;

const std::string server = "http://plm.example/vt";
const std::string readHeaders =
    "OData-Version: 4.0\r\nOData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n"
    "Accept: application/json";

std::string Page(const std::string& row, const std::string& nextLink = {}) {
  std::string text = R"({"value":[")" + row + R"("])";
  if (!nextLink.empty()) text += R"(,"@odata.nextLink":")" + nextLink + "\"";
  return text + "}";
}

class ODataPageReaderTest : public testing::Test {
 protected:
  // Reads as all callers do: while there is a page, and until its root is no object.
  std::vector<std::string> ReadAll(ODataPageReader& reader) {
    std::vector<std::string> rows;
    while (reader.Next()) {
      if (!reader.page().IsObject()) break;
      for (const auto& row : reader.page()["value"].GetArray()) rows.emplace_back(row.GetString());
    }
    return rows;
  }

  vtdirect_test::TemporaryDirectory directory;
  vtdirect_test::ScriptedTransport transport;
  std::vector<std::string> asked;
  std::shared_ptr<VtConnection> connection = std::make_shared<VtConnection>(server, [this](const char* url) {
    asked.emplace_back(url);
    return false;
  });
};

TEST_F(ODataPageReaderTest, ConstructionSendsNothing) {
  const ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_THAT(transport.requests(), IsEmpty());
  EXPECT_FALSE(reader.failed());
}

TEST_F(ODataPageReaderTest, ReadsOnePageAndEnds) {
  transport.Then(200, Page("a"));
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x?$filter=Name eq 'b c'");
  ASSERT_TRUE(reader.Next());
  EXPECT_FALSE(reader.failed());
  ASSERT_TRUE(reader.page().IsObject());
  EXPECT_STREQ(reader.page()["value"][0].GetString(), "a");
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{server, "GET /vt/servlet/odata/x?$filter=Name eq 'b c'", readHeaders,
                                      std::nullopt}));
  EXPECT_FALSE(reader.Next());
  EXPECT_TRUE(reader.page().IsNull());
  EXPECT_FALSE(reader.failed());
  EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(ODataPageReaderTest, AnEmptyPathIsTheEndAtOnce) {
  ODataPageReader reader(ServerContext(connection), "");
  EXPECT_FALSE(reader.Next());
  EXPECT_FALSE(reader.failed());
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(ODataPageReaderTest, FollowsNextLinksOverConnectionsOfTheirOwn) {
  transport.Then(200, Page("a", "http://plm.example/vt/servlet/odata/x?$skiptoken=2"))
      .Then(200, Page("b", "http://plm.example/vt/servlet/odata/x?$skiptoken=3"))
      .Then(200, Page("c"));
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_THAT(ReadAll(reader), ElementsAre("a", "b", "c"));
  EXPECT_FALSE(reader.failed());
  // The base of a next link has no path, so its request is the link's path as it is.
  EXPECT_THAT(transport.requests(),
              ElementsAre(SentRequest{server, "GET /vt/servlet/odata/x", readHeaders, std::nullopt},
                          SentRequest{"http://plm.example", "GET /vt/servlet/odata/x?$skiptoken=2",
                                      readHeaders, std::nullopt},
                          SentRequest{"http://plm.example", "GET /vt/servlet/odata/x?$skiptoken=3",
                                      readHeaders, std::nullopt}));
  EXPECT_THAT(transport.connections(), ElementsAre(server, "http://plm.example", "http://plm.example"));
}

TEST_F(ODataPageReaderTest, ANextLinkMayLeadToAnotherHostAndPort) {
  transport.Then(200, Page("a", "https://other.example:8443/odata/x?a=1&b=2"));
  vtdirect_test::Answer demanding{200, Page("b")};
  demanding.demands = 1;
  transport.Then(demanding);
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_THAT(ReadAll(reader), ElementsAre("a", "b"));
  EXPECT_EQ(transport.requests()[1],
            (SentRequest{"https://other.example:8443", "GET /odata/x?a=1&b=2", readHeaders, std::nullopt}));
  // Authentication is the host's, asked for the address that demands it.
  EXPECT_THAT(asked, ElementsAre("https://other.example:8443"));
}

TEST_F(ODataPageReaderTest, AFailedFirstPageGivesAnEmptyDocumentAndThenTheEnd) {
  for (const int status : {404, 500, 401, 302}) {
    transport.Then(status, Page("a", "http://plm.example/vt/next"));
    ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
    EXPECT_TRUE(reader.Next());
    EXPECT_TRUE(reader.failed());
    EXPECT_TRUE(reader.page().IsNull());
    EXPECT_FALSE(reader.Next());
    EXPECT_TRUE(reader.failed());
  }
  EXPECT_EQ(transport.requests().size(), 4U);
}

TEST_F(ODataPageReaderTest, ATransportFailureFailsThePage) {
  transport.ThenFail(du::http::ErrorCode::ProtocolFailure);
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_TRUE(reader.Next());
  EXPECT_TRUE(reader.failed());
}

TEST_F(ODataPageReaderTest, AFailedLaterPageKeepsWhatWasReadAndEnds) {
  transport.Then(200, Page("a", "http://plm.example/vt/2")).Then(500);
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_THAT(ReadAll(reader), ElementsAre("a"));
  EXPECT_TRUE(reader.failed());
  EXPECT_FALSE(reader.Next());
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(ODataPageReaderTest, APageThatIsNoJsonFails) {
  for (const char* body : {"", "<html>", R"({"value":["a"])", R"({"value":[]} x)"}) {
    transport.Then(200, body);
    ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
    EXPECT_TRUE(reader.Next()) << body;
    EXPECT_TRUE(reader.failed()) << body;
    EXPECT_TRUE(reader.page().IsNull()) << body;
    EXPECT_FALSE(reader.Next()) << body;
  }
}

TEST_F(ODataPageReaderTest, ARootThatIsNoObjectIsAPageWithoutANextLink) {
  for (const char* body : {"[]", "1", "\"@odata.nextLink\""}) {
    transport.Then(200, body);
    ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
    EXPECT_TRUE(reader.Next());
    EXPECT_FALSE(reader.failed());
    EXPECT_FALSE(reader.Next());
  }
}

TEST_F(ODataPageReaderTest, ANextLinkThatIsNoTextOrEmptyEndsThePaging) {
  for (const char* body :
       {R"({"value":[],"@odata.nextLink":1})", R"({"value":[],"@odata.nextLink":null})",
        R"({"value":[],"@odata.nextLink":""})", R"({"value":[],"nextLink":"http://h/x"})"}) {
    transport.Then(200, body);
    ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
    EXPECT_TRUE(reader.Next()) << body;
    EXPECT_FALSE(reader.failed()) << body;
    EXPECT_FALSE(reader.Next()) << body;
  }
}

TEST_F(ODataPageReaderTest, ANextLinkWithoutAServerFailsItsPage) {
  for (const char* link : {"/vt/servlet/odata/x?$skiptoken=2", "x?$skiptoken=2"}) {
    transport.Then(200, Page("a", link));
    ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
    EXPECT_THAT(ReadAll(reader), ElementsAre("a")) << link;
    EXPECT_TRUE(reader.failed()) << link;
    EXPECT_FALSE(reader.Next()) << link;
  }
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(ODataPageReaderTest, ANextLinkWithoutAPathAsksForTheRoot) {
  transport.Then(200, Page("a", "http://other.example")).Then(200, Page("b"));
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_THAT(ReadAll(reader), ElementsAre("a", "b"));
  EXPECT_EQ(transport.requests()[1].server, "http://other.example");
  EXPECT_EQ(transport.requests()[1].line, "GET ");
}

TEST_F(ODataPageReaderTest, TheSamePageAgainIsReadAsOftenAsTheServerLeadsToIt) {
  for (int turn = 0; turn < 50; ++turn) transport.Then(200, Page("a", "http://plm.example/vt/x"));
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  EXPECT_EQ(ReadAll(reader).size(), 50U);
  // The script ended, which is a failure of the transport.
  EXPECT_TRUE(reader.failed());
}

TEST_F(ODataPageReaderTest, APageTooLongForMemoryIsReadFromTheDiskAndLeavesNothing) {
  const std::string row(600000, 'r');
  transport.Then(200, Page(row, "http://plm.example/vt/2")).Then(200, Page("b"));
  ODataPageReader reader(ServerContext(connection), "servlet/odata/x");
  ASSERT_TRUE(reader.Next());
  EXPECT_EQ(reader.page()["value"][0].GetStringLength(), 600000U);
  EXPECT_THAT(directory.Entries(), IsEmpty());
  ASSERT_TRUE(reader.Next());
  EXPECT_STREQ(reader.page()["value"][0].GetString(), "b");
}

}  // namespace
