#include "translation/xliff_link.h"

#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

class XliffLink : public XliffTest {
 protected:
  bool Link() { return LinkXliffDocument(Begin(connection), "D1", "X2"); }
  bool LinkAnswered(const Answer& answer) {
    transport.Then(answer);
    return Link();
  }
};

TEST_F(XliffLink, IsOneODataPostWithTheNonce) {
  ThenToken();
  transport.Then(200, linkedAnswer);
  EXPECT_TRUE(Link());
  EXPECT_EQ(transport.requests(),
            (Requests{ReadPage("servlet/odata/v1/ZVK/GetCSRFToken()"),
                      {serverUrl, "POST /vt/servlet/odata/v1/DynamicDocMgmt/CreateXliffLink",
                       "Content-Type: application/json\r\nAccept: application/json\r\nOData-Version: 4.0\r\n"
                       "OData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\nX-Nonce: n-1",
                       R"({ "oidForQ7zkDocument":"D1", "oidForXliffDocument":"X2" })"}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffLink, FetchesTheNonceOnce) {
  ThenToken();
  EXPECT_TRUE(LinkAnswered({200, linkedAnswer}));
  EXPECT_TRUE(LinkAnswered({200, linkedAnswer}));
  EXPECT_EQ(transport.lines(), (Lines{Get(tokenPath), Post(linkPath), Post(linkPath)}));
}

TEST_F(XliffLink, GoesWithoutANonceThatCannotBeHad) {
  transport.Then(500).Then(200, linkedAnswer);
  EXPECT_TRUE(Link());
  EXPECT_EQ(transport.requests().back().headers,
            "Content-Type: application/json\r\nAccept: application/json\r\nOData-Version: 4.0\r\n"
            "OData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n");
}

// Servers know the ids as they stand, quotes and all.
TEST_F(XliffLink, WritesTheIdsWithoutEscaping) {
  ThenToken();
  transport.Then(200, linkedAnswer).Then(200, linkedAnswer);
  EXPECT_TRUE(LinkXliffDocument(Begin(connection), "VR:a\"b\\", "\xc3\xa4 \n"));
  EXPECT_EQ(transport.requests().back().body,
            "{ \"oidForQ7zkDocument\":\"VR:a\"b\\\", \"oidForXliffDocument\":\"\xc3\xa4 \n\" }");
  EXPECT_TRUE(LinkXliffDocument(Begin(connection), "", ""));
  EXPECT_EQ(transport.requests().back().body,
            "{ \"oidForQ7zkDocument\":\"\", \"oidForXliffDocument\":\"\" }");
}

TEST_F(XliffLink, IsMadeByAnySuccessThatSaysSo) {
  ThenToken();
  EXPECT_TRUE(LinkAnswered({201, linkedAnswer}));
  EXPECT_TRUE(LinkAnswered({299, R"({"@odata.context":7,"value":"Success","more":[]})"}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffLink, IsNotMadeByAnotherJsonAnswerAndTracesNothing) {
  ThenToken();
  for (const char* body :
       {"{}", R"({"value":"Failure"})", R"({"value":"success"})", R"({"value":"Success "})",
        R"({"value":true})", R"({"value":null})", R"({"value":["Success"]})", R"({"Value":"Success"})",
        R"(["Success"])", R"([{"value":"Success"}])", R"("Success")", "null", "7",
        R"({"value":"Success\u0000"})"}) {
    EXPECT_FALSE(LinkAnswered({200, body})) << body;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffLink, TracesARefusalAndAnAnswerThatIsNoJson) {
  ThenToken();
  EXPECT_FALSE(LinkAnswered({500, "boom"}));
  EXPECT_FALSE(LinkAnswered({404, linkedAnswer}));
  EXPECT_FALSE(LinkAnswered({302, ""}));
  EXPECT_FALSE(LinkAnswered({0, "", du::http::ErrorCode::TimedOut}));
  EXPECT_FALSE(LinkAnswered({200, "<html>"}));
  EXPECT_FALSE(LinkAnswered({200, R"({"value":"Success")"}));
  EXPECT_FALSE(LinkAnswered({204, ""}));
  EXPECT_EQ(trace.lines(),
            (Traces{XliffError("Failed to link documents with error 500 : boom\n"),
                    XliffError("Failed to link documents with error 404 : " + linkedAnswer + "\n"),
                    XliffError("Failed to link documents with error 302 : \n"),
                    XliffError("Failed to link documents with error -1 : \n"),
                    XliffError("Failed to link documents with error 200 : \n"),
                    XliffError("Failed to link documents with error 200 : \n"),
                    XliffError("Failed to link documents with error 204 : \n")}));
}

TEST_F(XliffLink, TracesOnlyTheBeginningOfALongRefusal) {
  ThenToken();
  EXPECT_FALSE(LinkAnswered({500, std::string(700'000, 'x')}));
  EXPECT_EQ(trace.lines(),
            Traces{XliffError("Failed to link documents with error 500 : " + std::string(1024, 'x') + "\n")});
}

TEST_F(XliffLink, IsNotMadeWithoutAFileForItsBodyAndSendsNothing) {
  LoseTemporaryDirectory();
  EXPECT_FALSE(Link());
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffLink, SendsItsBodyFromAFileThatGoesBehindTheAnswer) {
  ThenToken();
  Lines during;
  transport.Then({.status = 200, .body = linkedAnswer, .afterwards = [&] { during = Leftovers(); }});
  EXPECT_TRUE(Link());
  ASSERT_EQ(during.size(), 1U);
  EXPECT_TRUE(during[0].starts_with("upload")) << during[0];
  EXPECT_TRUE(during[0].ends_with(".json")) << during[0];
  EXPECT_THAT(Leftovers(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
