#include "documents/reading/document_reads.h"

#include "base/result.h"
#include "tests/wire/documents/connected_test.h"

namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using namespace vtdirect_test;

using DocumentReading = ConnectedTest;
using JsonReading = ConnectedTest;
using NumberSearch = ConnectedTest;

TEST_F(DocumentReading, SendsOneGetWithoutANonce) {
  transport.Then(200, R"({"id":"D1001","revision":"B"})");
  DocumentRecord record;
  EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1001"), record), Ok);
  EXPECT_EQ(transport.requests(), Requests{Read("servlet/rest/v1/dkm/documents/D1001")});
  EXPECT_EQ(transport.clientMarks(), Lines{"X-Zvk-Connected: 1"});
  EXPECT_EQ(record.id, "D1001");
  EXPECT_EQ(record.revision, "B");
}

TEST_F(DocumentReading, EscapesTheIdAlone) {
  transport.Then(200, "{}");
  DocumentRecord record;
  EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "OR:vn.doc 1/\xc3\xbc|W?&#%"), record), Ok);
  EXPECT_EQ(transport.lines(),
            Lines{"GET /vt/servlet/rest/v1/dkm/documents/OR%3Avn.doc%201%2F%C3%BC%7CW%3F%26%23%25"});
}

TEST_F(DocumentReading, CountsEveryAnswerFrom200To299AsRead) {
  for (const int status : {200, 201, 204, 206, 299}) {
    transport.Then(status, R"({"id":"D1"})");
    DocumentRecord record;
    EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), Ok) << status;
    EXPECT_EQ(record.id, "D1") << status;
  }
}

TEST_F(DocumentReading, IsRefusedByEveryOtherAnswer) {
  for (const int status : {199, 300, 302, 400, 401, 403, 404, 500, 503}) {
    transport.Then(status, R"({"id":"D1"})");
    DocumentRecord record;
    EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), Refused) << status;
    EXPECT_EQ(record.id, "") << status;
  }
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(DocumentReading, FailsToConnectWithoutAUsableExchange) {
  using du::http::ErrorCode;
  for (const auto error : {ErrorCode::NoConnection, ErrorCode::TimedOut, ErrorCode::TlsFailure,
                           ErrorCode::TooLarge, ErrorCode::ProtocolFailure}) {
    transport.ThenFail(error);
    DocumentRecord record;
    EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), ConnectionFailed);
  }
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(DocumentReading, FailsToConnectWhenNoConnectionCanBeMade) {
  transport.RefuseConnections(2);
  const auto refused = std::make_shared<VtConnection>(serverUrl, [](const char*) { return false; });
  DocumentRecord record;
  EXPECT_EQ(HandOver(ReadDocument(Begin(refused), "D1"), record), ConnectionFailed);
  EXPECT_TRUE(transport.requests().empty());
}

TEST_F(DocumentReading, TakesABodyThatIsNoJsonForAnEmptyRecord) {
  for (const char* body : {"", "{", "<html>", "{\"id\":\"D1\"} x", "\"D1\"", "[]", "null"}) {
    transport.Then(200, body);
    DocumentRecord record;
    EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), Ok) << body;
    EXPECT_EQ(record.id, "") << body;
  }
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(DocumentReading, ReadsABodyThatGoesThroughATemporaryFileAndLeavesNone) {
  transport.Then(200, R"({"filler":")" + std::string(600'000, 'x') + R"(","id":"D1"})");
  DocumentRecord record;
  EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), Ok);
  EXPECT_EQ(record.id, "D1");
  EXPECT_TRUE(directory.Entries().empty());
}

TEST_F(DocumentReading, SurvivesADocumentNestedBeyondAllMeasure) {
  transport.Then(200, R"({"id":"D1","context":)" + std::string(200'000, '['));
  DocumentRecord record;
  EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), Ok);
  EXPECT_EQ(record.id, "");
}

TEST_F(DocumentReading, AsksForCredentialsWithTheServersUrl) {
  transport.Then(Answer{200, R"({"id":"D1"})", du::http::ErrorCode::Done, 1});
  DocumentRecord record;
  EXPECT_EQ(HandOver(ReadDocument(Begin(connection), "D1"), record), Ok);
  EXPECT_EQ(askedFor, Lines{serverUrl});
}

TEST_F(JsonReading, SendsTheReadOfADocument) {
  transport.Then(200, R"({"id":"D 1","more":[1]})");
  rapidjson::Document document;
  EXPECT_TRUE(HandOver(ReadDocumentJson(Begin(connection), "D 1"), document));
  EXPECT_EQ(transport.requests(), Requests{Read("servlet/rest/v1/dkm/documents/D%201")});
  ASSERT_TRUE(document.IsObject());
  EXPECT_EQ(document["more"][0].GetInt(), 1);
}

// The answer's memory is gone by the time that the caller looks at the values.
TEST_F(JsonReading, GivesValuesThatOutliveTheAnswer) {
  const std::string text(400, 'v');
  transport.Then(200, R"({"id":")" + text + R"("})");
  rapidjson::Document document;
  EXPECT_TRUE(HandOver(ReadDocumentJson(Begin(connection), "D1"), document));
  EXPECT_EQ(document["id"].GetString(), text);
}

TEST_F(JsonReading, LeavesTheDocumentNullForABodyThatIsNoJson) {
  transport.Then(200, "{\"id\":").Then(204);
  for (int i = 0; i < 2; ++i) {
    rapidjson::Document document;
    EXPECT_TRUE(HandOver(ReadDocumentJson(Begin(connection), "D1"), document));
    EXPECT_TRUE(document.IsNull());
  }
}

TEST_F(JsonReading, FailsOutsideSuccess) {
  transport.Then(404, "{}").Then(300, "{}").ThenFail(du::http::ErrorCode::TimedOut);
  for (int i = 0; i < 3; ++i) {
    rapidjson::Document document;
    EXPECT_FALSE(HandOver(ReadDocumentJson(Begin(connection), "D1"), document));
    EXPECT_TRUE(document.IsNull());
  }
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(NumberSearch, SendsNumberAndScope) {
  transport.Then(200, R"([{"id":"D1","locationFolder":{"id":"F1"}},{"id":"D2"}])");
  std::vector<DocumentRecord> documents;
  EXPECT_TRUE(HandOver(SearchDocuments(Begin(connection), "0042", "S1"), documents));
  EXPECT_EQ(transport.requests(),
            Requests{Read("servlet/rest/v1/dkm/documents/search?number=0042&scope=S1")});
  ASSERT_EQ(documents.size(), 2u);
  EXPECT_EQ(documents[0].id, "D1");
  EXPECT_EQ(documents[0].folderId, "F1");
  EXPECT_EQ(documents[1].id, "D2");
}

TEST_F(NumberSearch, SendsNoScopeForAnEmptyOne) {
  transport.Then(200, "[]").Then(200, "[]");
  std::vector<DocumentRecord> documents;
  EXPECT_TRUE(HandOver(SearchDocuments(Begin(connection), "1", ""), documents));
  EXPECT_TRUE(HandOver(SearchDocuments(Begin(connection), "1", ""), documents));
  EXPECT_EQ(transport.lines(), (Lines{"GET /vt/servlet/rest/v1/dkm/documents/search?number=1",
                                      "GET /vt/servlet/rest/v1/dkm/documents/search?number=1"}));
}

TEST_F(NumberSearch, EscapesNumberAndScope) {
  transport.Then(200, "[]");
  std::vector<DocumentRecord> documents;
  EXPECT_TRUE(HandOver(SearchDocuments(Begin(connection), "00 42&a", "OR:x/1"), documents));
  EXPECT_EQ(transport.lines(),
            Lines{"GET /vt/servlet/rest/v1/dkm/documents/search?number=00%2042%26a&scope=OR%3Ax%2F1"});
}

TEST_F(NumberSearch, KeepsABlankRecordForAnElementThatIsNoObject) {
  transport.Then(200, R"([7,{"id":"D2"},null])");
  std::vector<DocumentRecord> documents;
  EXPECT_TRUE(HandOver(SearchDocuments(Begin(connection), "1", ""), documents));
  ASSERT_EQ(documents.size(), 3u);
  EXPECT_EQ(documents[0].id, "");
  EXPECT_EQ(documents[1].id, "D2");
  EXPECT_EQ(documents[2].id, "");
}

TEST_F(NumberSearch, TakesWhatIsNoArrayForAnEmptyList) {
  for (const char* body : {"{}", R"({"items":[{"id":"D1"}]})", "x", ""}) {
    transport.Then(200, body);
    std::vector<DocumentRecord> documents;
    EXPECT_TRUE(HandOver(SearchDocuments(Begin(connection), "1", ""), documents)) << body;
    EXPECT_TRUE(documents.empty()) << body;
  }
  EXPECT_TRUE(trace.lines().empty());
}

TEST_F(NumberSearch, TracesARefusalWithTheAnswerAndNoLineEnd) {
  transport.Then(404, "no such number");
  std::vector<DocumentRecord> documents;
  EXPECT_FALSE(HandOver(SearchDocuments(Begin(connection), "00 42", "S1"), documents));
  EXPECT_EQ(trace.lines(),
            (Traces{{3, "VtDirect", "Failed to find doc number 00 42 with response: no such number"}}));
  EXPECT_TRUE(documents.empty());
}

TEST_F(NumberSearch, TracesTheFirst1024BytesOfALongAnswer) {
  transport.Then(500, std::string(5000, 'e'));
  std::vector<DocumentRecord> documents;
  EXPECT_FALSE(HandOver(SearchDocuments(Begin(connection), "1", ""), documents));
  EXPECT_EQ(
      trace.lines(),
      (Traces{{3, "VtDirect", "Failed to find doc number 1 with response: " + std::string(1024, 'e')}}));
}

TEST_F(NumberSearch, TracesAnExchangeThatFailed) {
  transport.ThenFail(du::http::ErrorCode::NoConnection);
  std::vector<DocumentRecord> documents;
  EXPECT_FALSE(HandOver(SearchDocuments(Begin(connection), "1", ""), documents));
  EXPECT_EQ(trace.lines(), (Traces{{3, "VtDirect", "Failed to find doc number 1 with response: "}}));
}

}  // namespace
