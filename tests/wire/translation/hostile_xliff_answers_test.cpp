#include "base/result.h"
#include "tests/support/hostile_answer.h"
#include "tests/wire/translation/xliff_upload_fixture.h"
#include "translation/xliff_context.h"
#include "translation/xliff_folder.h"
#include "translation/xliff_link.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::IsEmpty;

/// The translation service of a server that gives one and the same answer to whatever it is asked.
class HostileXliffAnswers : public XliffUploadTest, public testing::WithParamInterface<HostileAnswer> {
 protected:
  /// The next request is answered in that way.
  void ThenHostile() { transport.Then(200, GetParam().body()); }
};

TEST_P(HostileXliffAnswers, TellNothing) {
  XliffDocumentRef document;
  std::map<std::string, std::string> translations;
  ThenHostile();
  EXPECT_FALSE(server.GetSourceXliff("D1", document));
  ThenHostile();
  EXPECT_FALSE(server.GetDocumentLanguage("D1", document));
  ThenHostile();
  EXPECT_FALSE(server.GetTranslations("D1", document, translations));
  EXPECT_THAT(translations, IsEmpty());
  ThenHostile();
  EXPECT_THAT(GetXliffPreferences(Begin(connection), "D1", "en"), IsEmpty());
  ThenHostile();
  EXPECT_EQ(FindContextByCabinet(Begin(connection), "Gadget", "K1", "Product"), "");
  ThenHostile();
  EXPECT_EQ(FindFolderByPath(Begin(connection), "Gadget", "Product", "/Trans/Sub"), "");
  std::string context;
  ThenHostile();
  EXPECT_TRUE(HandOver(FindContextByName(Begin(connection), "Gadget", "Product"), context));
  EXPECT_EQ(context, "");
  EXPECT_EQ(transport.requests().size(), 7U) << "nothing leads on";
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_P(HostileXliffAnswers, DoNotSucceed) {
  ThenToken();
  ThenHostile();
  EXPECT_FALSE(server.SetPublished("D1"));
  ThenHostile();
  EXPECT_FALSE(LinkXliffDocument(Begin(connection), "D1", "X2"));
  ThenHostile();
  EXPECT_FALSE(Upload());
  ThenHostile();
  EXPECT_FALSE(Update());
  EXPECT_EQ(info.id, "before");
}

constexpr HostileAnswer hostileAnswers[] = {
    {"Empty", [] { return std::string(""); }},
    {"NoJson", [] { return std::string("nothing"); }},
    {"Null", [] { return std::string("null"); }},
    {"Number", [] { return std::string("7"); }},
    {"Text", [] { return std::string("\"Success\""); }},
    {"Array", [] { return std::string("[]"); }},
    {"Object", [] { return std::string("{}"); }},
    {"ArrayOfEverything", [] { return std::string("[null,7,\"x\",[],{}]"); }},
    {"ValueIsANumber", [] { return std::string("{\"value\":7}"); }},
    {"ValueIsAnObject", [] { return std::string(R"({"value":{"ID":"X1","AuthoringLanguage":"en"}})"); }},
    {"ValueOfEverything", [] { return std::string("{\"value\":[[[]],7,null,{},\"x\",true]}"); }},
    {"CutOffInAText", [] { return std::string(R"({"ID":"D1","AuthoringLanguage":"en","value":"Succ)"); }},
    {"CutOffInAnArray", [] { return std::string(R"({"value":[{"ID":"X1","AuthoringLanguage":"en"},)"); }},
    {"MoreBehindTheEnd", [] { return std::string(R"({"value":"Success"} {})"); }},
    {"NoUtf8", [] { return std::string("\xff\xfe{"); }},
    {"RowsOfWrongTypes",
     [] {
       return std::string(R"({"value":[{"ID":1,"AuthoringLanguage":[],"Folders":7,"Name":null,"Location":{}}],
                              "ID":{},"AuthoringLanguage":1,"Translations":"x","Preferences":7,"items":{}})");
     }},
    {"MembersOfWrongTypes",
     [] {
       return std::string(R"({"value":[{"ID":"C1","Folders":[{"ID":["K1"]},[{"ID":"K1"}],null]}],
                              "Translations":[{"ID":[],"AuthoringLanguage":"en"}],
                              "Preferences":[{"Name":"A","Value":[]}],
                              "items":[{"id":[],"attributes":{"name":["Gadget"],"type":{}}}]})");
     }},
    {"NextLinkIsANumber", [] { return std::string(R"({"value":[],"@odata.nextLink":7})"); }},
    {"NextLinkIsAnArray", [] { return std::string(R"({"value":7,"@odata.nextLink":["http://h/x"]})"); }},
    {"NextLinkWithoutAServer", [] { return std::string(R"({"value":[],"@odata.nextLink":"x"})"); }},
    {"DeepArrays", [] { return Nested("[", "]", 200000); }},
    {"DeepRows", [] { return Nested("{\"value\":[", "]}", 100000); }},
    {"DeepFoldersBeyondTheLimit", [] { return Nested("{\"value\":[{\"Folders\":[", "]}]}", 100000); }},
    {"DeepFolders", [] { return "{\"value\":[" + Nested("{\"Folders\":[", "]}", 250) + "]}"; }},
    {"DeepTranslations", [] { return Nested("{\"Translations\":[", "]}", 100000); }},
    {"DeepPreferences", [] { return Nested("{\"Preferences\":[", "]}", 250); }},
    {"ManyRows",
     [] {
       std::string text = "{\"value\":[{}";
       for (int row = 0; row < 200000; ++row) text += ",{}";
       return text + "]}";
     }},
};

INSTANTIATE_TEST_SUITE_P(Answers, HostileXliffAnswers, testing::ValuesIn(hostileAnswers),
                         [](const testing::TestParamInfo<HostileAnswer>& answer) {
                           return std::string(answer.param.name);
                         });

class OddXliffAnswers : public XliffUploadTest {};

TEST_F(OddXliffAnswers, OutgrowTheMemoryLimitAndLeaveNoFile) {
  const std::string id(700'000, 'x');
  const std::string language(600'000, 'e');
  transport.Then(200, Rows({Reference(id, language)}));
  XliffDocumentRef xliff;
  EXPECT_TRUE(server.GetSourceXliff("D1", xliff));
  EXPECT_EQ(xliff.id, id);
  EXPECT_EQ(xliff.language, language);
}

TEST_F(OddXliffAnswers, MayHoldAnyByteInATextAndTheLinkSendsIt) {
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenNonce();
  transport.Then(200, Ticket(1))
      .Then(200, Receipts(1))
      .Then(200, R"([{"id":"X\u0000\"\\\n\r"}])")
      .Then(200, linkedAnswer);
  EXPECT_TRUE(Upload());
  EXPECT_EQ(info.id, std::string("X\0\"\\\n\r", 6));
  EXPECT_EQ(transport.requests().back().body, LinkBody("D1", info.id));
}

TEST_F(OddXliffAnswers, MayPreferHugeTexts) {
  auto preferences = CabinetPreferences();
  preferences["UPLOAD_SOFT_TYPE"] = std::string(800'000, 't');
  ThenPreferences(preferences);
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(Upload());
  EXPECT_NE(transport.requests().at(5).body.value_or("").find(preferences["UPLOAD_SOFT_TYPE"]),
            std::string::npos);
}

TEST_F(OddXliffAnswers, MayTellOfADocumentThatIsNone) {
  const std::vector<const char*> answers{"[]", "{}", "7", "null", "[7]", R"([{"id":7}])"};
  for (const char* answer : answers) {
    ThenPreferences(CabinetPreferences());
    transport.Then(200, cabinetAnswer);
    ThenNonce();
    transport.Then(200, Ticket(1)).Then(200, Receipts(1)).Then(200, answer).Then(200, linkedAnswer);
    NrxXliffServer fresh(NewConnection());
    info.id = "before";
    EXPECT_TRUE(fresh.UploadSource("D1", xliffPath.c_str(), "en", info, {})) << answer;
    EXPECT_EQ(info.id, "") << answer;
    EXPECT_EQ(transport.requests().back().body, LinkBody("D1", "")) << answer;
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
