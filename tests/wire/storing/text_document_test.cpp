#include "documents/text_document.h"

#include "base/settings.h"
#include "tests/wire/storing/storing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

std::string Attribute(const std::string& name, const std::string& value) {
  return R"({"parameterDefinition":{"parameterName":")" + name + R"(","attributeName":")" + name +
         R"(","valueType":"String"},"parameterValue":{"value":")" + value + R"("}})";
}

class TextDocument : public StoringTest {
 protected:
  void ThenUpload() { transport.Then(200, Ticket(1)).Then(200, Receipts(1)); }
  bool Iterate(const DocumentRecord& document, const char* language) {
    return UpdateTextDocument(connection, &document, nullptr, nullptr, nullptr, mainPath.c_str(), nullptr,
                              language, nullptr, nullptr, &result, {});
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
  EXPECT_TRUE(UpdateTextDocument(connection, nullptr, "t.xml", "C5", "F55", mainPath.c_str(), "no", "de",
                                 "XLIFF", "vn.T", &result, {}));
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
  EXPECT_TRUE(UpdateTextDocument(connection, nullptr, "t", "C5", nullptr, mainPath.c_str(), nullptr, "",
                                 nullptr, nullptr, nullptr, {}));
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
  EXPECT_TRUE(UpdateTextDocument(connection, nullptr, "t", "C5", "", mainPath.c_str(), nullptr, nullptr,
                                 nullptr, nullptr, nullptr, {}));
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
  EXPECT_TRUE(Iterate(document, nullptr));
  EXPECT_EQ(SentBody(), head + Attribute("ZVK_DD_LANGUAGE", "en") + tail);
}

TEST_F(TextDocument, WithoutAnApplicationGetsTheDefault) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "[]");
  EXPECT_TRUE(Iterate({}, nullptr));
  EXPECT_NE(SentBody().find(R"("authoringApplication":"SENTARIX"})"), std::string::npos);
  EXPECT_NE(SentBody().find(R"("authAppVersion":"7000","ndVersion":"J-01"}}],"contextId":""})"),
            std::string::npos);
}

TEST_F(TextDocument, SucceedsByTheStatusAlone) {
  ThenNonce();
  ThenUpload();
  transport.Then(200, "<html>");
  EXPECT_TRUE(Iterate({}, nullptr));
  ThenUpload();
  transport.Then(409, "taken");
  EXPECT_FALSE(Iterate({}, nullptr));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to update document with error 200 : \n"),
                                   Error("Failed to update document with error 409 : taken\n")}));
}

TEST_F(TextDocument, EndsWhenItsUploadFails) {
  ThenNonce();
  transport.Then(500);
  EXPECT_FALSE(Iterate({}, nullptr));
  EXPECT_EQ(transport.lines(), (Lines{Get(noncePath), Post(factoryPath)}));
}

}  // namespace
}  // namespace vtdirect_test
