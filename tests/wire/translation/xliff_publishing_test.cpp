#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using testing::IsEmpty;

constexpr const char* publishBody = R"({ "ZVKDDEXTENDEDDOCTYPE":"x-raomPublished" })";

class XliffPublishing : public XliffTest {
 protected:
  bool PublishAnswered(const Answer& answer) {
    transport.Then(answer);
    return server.SetPublished("D1");
  }
};

TEST_F(XliffPublishing, IsOneODataPatchWithTheNonce) {
  ThenToken();
  EXPECT_TRUE(PublishAnswered({204, ""}));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadPage(tokenPath),
                      ODataWrite("PATCH /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')",
                                 R"({ "ZVKDDEXTENDEDDOCTYPE":"x-raomPublished" })")}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffPublishing, NamesTheDocumentPartOfAnIdEscaped) {
  ThenToken();
  transport.Then(204).Then(204).Then(204).Then(204);
  EXPECT_TRUE(server.SetPublished("D1|W2"));
  EXPECT_TRUE(server.SetPublished("VR:d 1|W2|D3|T"));
  EXPECT_TRUE(server.SetPublished(""));
  EXPECT_TRUE(server.SetPublished(nullptr));
  EXPECT_EQ(LinesFrom(1),
            (Lines{"PATCH /vt/" + DynamicDocumentPath("D1"), "PATCH /vt/" + DynamicDocumentPath("VR%3Ad%201"),
                   "PATCH /vt/" + DynamicDocumentPath(""), "PATCH /vt/" + DynamicDocumentPath("")}));
}

TEST_F(XliffPublishing, GoesWithoutANonceThatCannotBeHadAndAsksForItAgain) {
  transport.Then(404).Then(204);
  EXPECT_TRUE(server.SetPublished("D1"));
  EXPECT_EQ(transport.requests().back().headers,
            "Content-Type: application/json\r\nAccept: application/json\r\nOData-Version: 4.0\r\n"
            "OData-MaxVersion: 4.0\r\nPrefer: odata.maxpagesize=10000\r\n");
  ThenToken();
  EXPECT_TRUE(PublishAnswered({204, ""}));
  EXPECT_EQ(transport.requests().back(), ODataWrite("PATCH /vt/" + DynamicDocumentPath("D1"), publishBody));
}

TEST_F(XliffPublishing, SucceedsByANoContentWhateverItsBody) {
  ThenToken();
  EXPECT_TRUE(PublishAnswered({204, ""}));
  EXPECT_TRUE(PublishAnswered({204, R"({"value":"Failure"})"}));
  EXPECT_TRUE(PublishAnswered({204, "<html>"}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffPublishing, SucceedsByAnotherSuccessThatSaysSo) {
  ThenToken();
  EXPECT_TRUE(PublishAnswered({200, R"({"value":"Success"})"}));
  EXPECT_TRUE(PublishAnswered({201, R"({"more":1,"value":"Success"})"}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffPublishing, FailsByAnotherJsonAnswerAndTracesNothing) {
  ThenToken();
  for (const char* body : {"{}", R"({"value":"Failure"})", R"({"value":"SUCCESS"})", R"({"value":true})",
                           R"(["Success"])", R"("Success")", "null"}) {
    EXPECT_FALSE(PublishAnswered({200, body})) << body;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffPublishing, TracesARefusalAndAnAnswerThatIsNoJson) {
  ThenToken();
  EXPECT_FALSE(PublishAnswered({403, "no"}));
  EXPECT_FALSE(PublishAnswered({0, "", du::http::ErrorCode::ProtocolFailure}));
  EXPECT_FALSE(PublishAnswered({200, ""}));
  EXPECT_FALSE(PublishAnswered({200, R"({"value":)"}));
  EXPECT_FALSE(PublishAnswered({205, "<html>"}));
  EXPECT_FALSE(PublishAnswered({304, R"({"value":"Success"})"}));
  const std::string stem = "Failed to set document as published with error ";
  EXPECT_EQ(trace.lines(),
            (Traces{XliffError(stem + "403 : no\n"), XliffError(stem + "-1 : \n"),
                    XliffError(stem + "200 : \n"), XliffError(stem + "200 : \n"),
                    XliffError(stem + "205 : \n"), XliffError(stem + "304 : {\"value\":\"Success\"}\n")}));
}

TEST_F(XliffPublishing, FailsWithoutAFileForItsBodyAndSendsNothing) {
  LoseTemporaryDirectory();
  EXPECT_FALSE(server.SetPublished("D1"));
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
