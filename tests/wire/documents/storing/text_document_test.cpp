#include "documents/storing/text_document.h"

#include <algorithm>

#include "base/result.h"
#include "base/settings.h"
#include "tests/wire/documents/failing_steps.h"
#include "tests/wire/documents/storing/storing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

std::string Attribute(const std::string& name, const std::string& value) {
  return R"({"parameterDefinition":{"parameterName":")" + name + R"(","attributeName":")" + name +
         R"(","valueType":"String"},"parameterValue":{"value":")" + value + R"("}})";
}

// One with all that a document can be given.
const NewTextDocument fullDocument{"t.xml", "C5", "F55", "no", "de", "XLIFF", "vn.T"};

class TextDocument : public StoringTest {
 protected:
  void ThenUpload() { transport.Then(200, Ticket(1)).Then(200, Receipts(1)); }
  bool Iterate(const DocumentRecord& document, const char* language) {
    return HandOver(UpdateTextDocument(Begin(connection), document, language, mainPath, {}), result);
  }
  // Creates with nothing but a name and a context.
  bool Create(DocumentRecord* answer) {
    DocumentRecord dropped;
    return Create(Named("t"), answer != nullptr ? *answer : dropped);
  }
  bool Create(const NewTextDocument& document, DocumentRecord& answer) {
    return HandOver(UpdateTextDocument(Begin(connection), document, mainPath, {}), answer);
  }
  static NewTextDocument Named(const std::string& name) {
    NewTextDocument document;
    document.cadName = name;
    document.contextId = "C5";
    return document;
  }
  [[nodiscard]] std::string SentBody() const { return transport.requests().back().body.value_or("no body"); }

  DocumentRecord result;
};

const std::string section =
    R"("cadContent":{"contentSections":[{"category":"TEXT","fileName":"{$CAD_NAME}","streamId":901,)"
    R"("uploadInfo":{"encodedCCD":"r1"}}]})";

TEST_F(TextDocument, IsCreatedWithAllThatItIsGiven) {
  // No setting plays a part: text documents belong to an application of their own.
  SetAuthoringApplication("MYAPP");
  SetAuthAppVersionToRegister("300");
  ThenNonce();
  ThenUpload();
  transport.Then(200, storedAnswer);
  EXPECT_TRUE(Create(fullDocument, result));
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath), uploadLine, Post(documentsPath)}));
  EXPECT_EQ(SentBody(),
            R"({"createInstructions":[{"epmDocument":{"epmMaster":{"category":"xml","cadName":"t.xml",)"
            R"("authoringApplication":"SENTARIX"},)" +
                section + R"(,"authAppVersion":"7000","ndVersion":"J-01","typeId":"vn.T",)" +
                R"("fileBasedAttributes":[)" + Attribute("ZVK_DD_TRANSLATE", "no") + "," +
                Attribute("ZVK_DD_EXTENDED_DOC_TYPE", "XLIFF") + "," + Attribute("ZVK_DD_LANGUAGE", "de") +
                R"(]},"targetFolderId":"F55"}],"contextId":"C5"})");
  EXPECT_EQ(result.id, "D1002");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TextDocument, IsCreatedWithoutWhatItIsNotGiven) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Create(Named("t"), result));
  EXPECT_EQ(SentBody(),
            R"({"createInstructions":[{"epmDocument":{"epmMaster":{"category":"xml","cadName":"t",)"
            R"("authoringApplication":"SENTARIX"},)" +
                section + R"(,"authAppVersion":"7000","ndVersion":"J-01"}}],"contextId":"C5"})");
}

// An empty folder id is a folder id here, unlike for the other kinds.
TEST_F(TextDocument, NamesAnEmptyFolder) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  NewTextDocument document = Named("t");
  document.folderId = "";
  EXPECT_TRUE(Create(document, result));
  EXPECT_TRUE(SentBody().ends_with(R"(,"targetFolderId":""}],"contextId":"C5"})")) << SentBody();
}

TEST_F(TextDocument, IsIteratedWithItsOwnValuesAndAttributes) {
  DocumentRecord document;
  document.id = "D1";
  document.contextId = "C7";
  document.authAppVersion = "77";
  document.ndVersion = "K-01";
  document.master.category = "cat";
  document.master.subCategory = "sub";
  document.master.cadName = "old.xml";
  document.master.authoringApplication = "ELSE";
  document.fileBasedAttributes = {{"A", "", "Integer", "1"},
                                  {"ZVK_DD_LANGUAGE", "ZVK_DD_LANGUAGE", "String", "en"}};
  ThenNonce();
  ThenUpload();
  transport.Then(200, storedAnswer);
  EXPECT_TRUE(Iterate(document, "de"));
  const std::string head =
      R"({"iterateInstructions":[{"epmDocument":{"id":"D1","epmMaster":{"category":"cat","cadName":"old.xml",)"
      R"("authoringApplication":"ELSE"},)" +
      section +
      R"(,"authAppVersion":"77","ndVersion":"K-01","fileBasedAttributes":[)"
      R"({"parameterDefinition":{"parameterName":"A","valueType":"Integer"},"parameterValue":{"value":"1"}},)";
  const std::string tail = R"(]}}],"contextId":"C7"})";
  EXPECT_EQ(SentBody(), head + Attribute("ZVK_DD_LANGUAGE", "de") + tail);
  ThenUpload();
  transport.Then(200, storedAnswer);
  EXPECT_TRUE(Iterate(document, ""));
  EXPECT_EQ(SentBody(), head + Attribute("ZVK_DD_LANGUAGE", "en") + tail);
}

TEST_F(TextDocument, WithoutAnApplicationGetsTheDefault) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate({}, ""));
  EXPECT_NE(SentBody().find(R"("authoringApplication":"SENTARIX"})"), std::string::npos);
  EXPECT_NE(SentBody().find(R"("authAppVersion":"7000","ndVersion":"J-01"}}],"contextId":""})"),
            std::string::npos);
}

TEST_F(TextDocument, SucceedsByTheStatusAlone) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "<html>");
  EXPECT_TRUE(Iterate({}, ""));
  ThenUpload();
  transport.Then(409, "taken");
  EXPECT_FALSE(Iterate({}, ""));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to update document with error 200 : \n"),
                                   Error("Failed to update document with error 409 : taken\n")}));
}

TEST_F(TextDocument, SucceedsByEveryStatusOfSuccess) {
  ThenNonce();
  for (const int status : {200, 201, 299}) {
    ThenUpload();
    transport.Then(status, storedAnswer);
    result = {};
    EXPECT_TRUE(Create(&result)) << status;
    EXPECT_EQ(result.id, "D1002") << status;
  }
  ThenUpload();
  transport.Then(204);
  EXPECT_TRUE(Create(&result));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document with error 204 : \n")});
}

TEST_F(TextDocument, IsReadFromTheFirstOfTheAnswer) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, R"([{"id":"D1","epmMaster":{"cadName":"a"}},{"id":"D2"}])");
  EXPECT_TRUE(Create(&result));
  EXPECT_EQ(result.id, "D1");
  EXPECT_EQ(result.master.cadName, "a");
}

TEST_F(TextDocument, IsBlankAfterAnAnswerWithoutADocument) {
  ThenNonce();
  for (const char* answer : {"[]", R"({"id":"D1"})", "null", "7", R"([7,{"id":"D1"}])"}) {
    ThenUpload();
    transport.Then(200, answer);
    result.id = "before";
    EXPECT_TRUE(Create(&result)) << answer;
    EXPECT_EQ(result.id, "") << answer;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(TextDocument, TracesAnAnswerThatIsNoJsonEvenWhereNobodyAsksForIt) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[");
  EXPECT_TRUE(Create(nullptr));
  EXPECT_EQ(trace.lines(), Traces{Error("Failed to update document with error 200 : \n")});
}

// What is given and empty is given: only a null leaves an attribute or a type out.
TEST_F(TextDocument, IsCreatedWithEmptyTextsThatItIsGiven) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Create({"", "", std::nullopt, "", "", "", ""}, result));
  EXPECT_EQ(SentBody(),
            R"({"createInstructions":[{"epmDocument":{"epmMaster":{"category":"xml","cadName":"",)"
            R"("authoringApplication":"SENTARIX"},)" +
                section + R"(,"authAppVersion":"7000","ndVersion":"J-01","typeId":"",)" +
                R"("fileBasedAttributes":[)" + Attribute("ZVK_DD_TRANSLATE", "") + "," +
                Attribute("ZVK_DD_EXTENDED_DOC_TYPE", "") + R"(]}}],"contextId":""})");
}

TEST_F(TextDocument, IsIteratedWithoutWhatOnlyANewOneIsGiven) {
  DocumentRecord document;
  document.id = "D1";
  document.contextId = "C7";
  document.master.cadName = "old.xml";
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate(document, "de"));
  EXPECT_EQ(SentBody(), R"({"iterateInstructions":[{"epmDocument":{"id":"D1","epmMaster":{"category":"xml",)"
                        R"("cadName":"old.xml","authoringApplication":"SENTARIX"},)" +
                            section +
                            R"(,"authAppVersion":"7000","ndVersion":"J-01","fileBasedAttributes":[)" +
                            Attribute("ZVK_DD_LANGUAGE", "de") + R"(]}}],"contextId":"C7"})");
}

TEST_F(TextDocument, KeepsWhatItsFirstSectionIsCalled) {
  DocumentRecord document;
  document.contentSections.resize(2);
  document.contentSections[0].fileName = "own.xml";
  document.contentSections[0].streamId = 5;
  document.contentSections[0].isHidden = true;
  document.contentSections[1].category = "OTHER";
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate(document, ""));
  EXPECT_NE(SentBody().find(R"("cadContent":{"contentSections":[{"category":"TEXT","fileName":"own.xml",)"
                            R"("streamId":901,"uploadInfo":{"encodedCCD":"r1"}}]})"),
            std::string::npos)
      << SentBody();
  document.contentSections[0] = {};
  document.contentSections[0].category = "OWN";
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate(document, ""));
  EXPECT_NE(SentBody().find(R"([{"category":"OWN","fileName":"{$CAD_NAME}","streamId":901,)"),
            std::string::npos)
      << SentBody();
}

TEST_F(TextDocument, LosesEveryLanguageToANewOne) {
  DocumentRecord document;
  document.fileBasedAttributes = {{"ZVK_DD_LANGUAGE", "", "String", "en"},
                                  {"other", "ZVK_DD_LANGUAGE", "String", "1"},
                                  {"ZVK_DD_LANGUAGE", "x", "Integer", "fr"},
                                  {"ZVK_DD_TRANSLATE", "", "String", "yes"}};
  const std::string other =
      R"({"parameterDefinition":{"parameterName":"other","attributeName":"ZVK_DD_LANGUAGE",)"
      R"("valueType":"String"},"parameterValue":{"value":"1"}})";
  const std::string translate =
      R"({"parameterDefinition":{"parameterName":"ZVK_DD_TRANSLATE","valueType":"String"},)"
      R"("parameterValue":{"value":"yes"}})";
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate(document, "de"));
  EXPECT_NE(SentBody().find(R"("fileBasedAttributes":[)" + other + "," + translate + "," +
                            Attribute("ZVK_DD_LANGUAGE", "de") + R"(]}}],"contextId":""})"),
            std::string::npos)
      << SentBody();
  const std::string english =
      R"({"parameterDefinition":{"parameterName":"ZVK_DD_LANGUAGE","valueType":"String"},)"
      R"("parameterValue":{"value":"en"}})";
  const std::string french =
      R"({"parameterDefinition":{"parameterName":"ZVK_DD_LANGUAGE","attributeName":"x",)"
      R"("valueType":"Integer"},"parameterValue":{"value":"fr"}})";
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate(document, ""));
  EXPECT_NE(SentBody().find(R"("fileBasedAttributes":[)" + english + "," + other + "," + french + "," +
                            translate + "]"),
            std::string::npos)
      << SentBody();
}

TEST_F(TextDocument, NamesNoStreamThatWasNotReported) {
  ThenNonce();
  transport.Then(200, Ticket(1)).Then(200, R"({"contentInfos":[]})").Then(200, "[]");
  EXPECT_TRUE(Create(nullptr));
  EXPECT_NE(SentBody().find(R"("streamId":0,"uploadInfo":{"encodedCCD":""}}]})"), std::string::npos)
      << SentBody();
}

TEST_F(TextDocument, TellsProgressOfItsUpload) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  std::size_t furthest = 0;
  EXPECT_TRUE(UpdateTextDocument(Begin(connection), Named("t"), mainPath, [&](std::size_t done, std::size_t) {
    furthest = std::max(furthest, done);
    return true;
  }));
  EXPECT_EQ(furthest, Multipart("901:f1:901;", {{"f1", "main.fnl", "MAIN"}}).size());
}

// Every request of both forms fails in every way.
TEST_F(TextDocument, FailsWithItsUploadAndWithTheRequestThatNamesIt) {
  const Answer nonce{200, nonceAnswer};
  const Answer stored{200, storedAnswer};
  const Ending withoutNonce{"1 D1002",
                            {},
                            {{200, Ticket(1)}, nonce, {200, Receipts(1)}, stored},
                            {Post(factoryPath), Get(noncePath), uploadLine, Post(documentsPath)}};
  const Ending noTicket{"0 before", {Error("Failed to update document with error {error}\n")}};
  const Ending noUpload{"0 before", {Error("Failed to upload document with error {error}\n")}};
  const Ending untold{"1 ", {Error("Failed to update document with error {error}\n")}};
  const std::vector<Step> steps{{Get(noncePath), nonce, withoutNonce, withoutNonce},
                                {Post(factoryPath), {200, Ticket(1)}, noTicket, noTicket},
                                {uploadLine, {200, Receipts(1)}, noUpload, noUpload},
                                {Post(documentsPath), stored, noTicket, untold}};
  const DocumentRecord document;
  for (const bool creates : {true, false}) {
    WalkFailures(
        transport, trace, steps, [this] { return Leftovers(); },
        [&] {
          DocumentRecord answer;
          answer.id = "before";
          const bool success =
              HandOver(creates ? UpdateTextDocument(Begin(NewConnection()), fullDocument, mainPath, {})
                               : UpdateTextDocument(Begin(NewConnection()), document, "de", mainPath, {}),
                       answer);
          return std::string(success ? "1 " : "0 ") + answer.id;
        });
  }
}

TEST_F(TextDocument, EndsWhenItsUploadFails) {
  ThenNonce();
  transport.Then(500);
  EXPECT_FALSE(Iterate({}, ""));
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
}

}  // namespace
}  // namespace vtdirect_test
