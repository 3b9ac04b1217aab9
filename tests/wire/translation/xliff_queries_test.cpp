#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

const std::string nextLink = "https://plm.example/vt/next?$skip=1";

// Ways in which a page is none.
const std::vector<Answer>& FailedPages() {
  static const std::vector<Answer> pages{{500, Rows({Reference("X9", "en")})},
                                         {404, ""},
                                         {0, "", du::http::ErrorCode::NoConnection},
                                         {200, "<html>"},
                                         {200, R"({"value":[)"},
                                         {200, "[" + Rows({Reference("X9", "en")}) + "]"},
                                         {200, "null"},
                                         {200, "\"value\""},
                                         {204, ""}};
  return pages;
}

class SourceXliff : public XliffTest {
 protected:
  // "found" or "none", and what was read.
  std::string Find(const char* id = "D1") {
    xliff = {};
    return (server.GetSourceXliff(id, xliff) ? "found " : "none ") + xliff.id + " " + xliff.language;
  }
  std::string FindIn(const std::string& page) {
    transport.Then(200, page);
    return Find();
  }

  XliffDocumentRef xliff;
};

TEST_F(SourceXliff, IsFoundByOneODataRead) {
  EXPECT_EQ(FindIn(Rows({R"({"AuthoringLanguage":"en-US","Name":"a","ID":"OR:x:7"})"})),
            "found OR:x:7 en-US");
  EXPECT_EQ(transport.requests(),
            (Requests{{serverUrl,
                       "GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')/Xliff",
                       readHeaders,
                       {}}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceXliff, IsAskedForByTheDocumentPartOfAnIdEscaped) {
  for (int turn = 0; turn < 5; ++turn) transport.Then(200, Rows({}));
  EXPECT_EQ(Find("D1|W2"), "none  ");
  EXPECT_EQ(Find("VR:d'1|W2|D3|T"), "none  ");
  EXPECT_EQ(Find("|W2"), "none  ");
  EXPECT_EQ(Find(""), "none  ");
  EXPECT_EQ(Find(nullptr), "none  ");
  EXPECT_EQ(transport.lines(), (Lines{Get(SourcePath("D1")), Get(SourcePath("VR%3Ad%271")),
                                      Get(SourcePath("")), Get(SourcePath("")), Get(SourcePath(""))}));
}

TEST_F(SourceXliff, IsNoneOfADocumentWithout) {
  EXPECT_EQ(FindIn(Rows({})), "none  ");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceXliff, IsTheLastOfAPage) {
  EXPECT_EQ(FindIn(Rows({Reference("X1", "en"), Reference("X2", "de")})), "found X2 de");
  EXPECT_EQ(FindIn(Rows({"{}", Reference("X2", "de")})), "found X2 de");
  // What is no object is no element that counts.
  EXPECT_EQ(FindIn(Rows({Reference("X1", "en"), "7", "null", "[]", "\"ID\""})), "found X1 en");
}

TEST_F(SourceXliff, IsNoneWhenTheLastOfThePagesLacksAText) {
  for (const char* last :
       {"{}", R"({"ID":"X2"})", R"({"AuthoringLanguage":"de"})", R"({"ID":2,"AuthoringLanguage":"de"})",
        R"({"ID":"X2","AuthoringLanguage":null})", R"({"id":"X2","authoringLanguage":"de"})"}) {
    transport.Then(200, Rows({Reference("X1", "en"), last}));
    EXPECT_FALSE(server.GetSourceXliff("D1", xliff)) << last;
  }
}

TEST_F(SourceXliff, MayHaveEmptyTexts) {
  EXPECT_EQ(FindIn(Rows({Reference("", "")})), "found  ");
}

TEST_F(SourceXliff, IsNoneInAnAnswerWithoutAList) {
  for (const std::string& page : {std::string("{}"), std::string(R"({"value":{}})"),
                                  std::string(R"({"value":"X1"})"), Reference("X1", "en")}) {
    EXPECT_EQ(FindIn(page), "none  ") << page;
  }
}

TEST_F(SourceXliff, EndsTheReadingAtTheFirstPageThatHasIt) {
  EXPECT_EQ(FindIn(Rows({Reference("X1", "en")}, nextLink)), "found X1 en");
  EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(SourceXliff, IsLookedForInFurtherPagesOverConnectionsOfTheirOwn) {
  transport.Then(200, Rows({Reference("X1", "en"), "{}"}, nextLink))
      .Then(200, R"({"@odata.nextLink":"https://other.example:8443/3"})")
      .Then(200, Rows({Reference("X2", "de")}));
  EXPECT_EQ(Find(), "found X2 de");
  EXPECT_EQ(transport.requests(),
            (Requests{ReadPage(SourcePath("D1")), ReadLink("https://plm.example", "/vt/next?$skip=1"),
                      ReadLink("https://other.example:8443", "/3")}));
}

TEST_F(SourceXliff, IsNoneBehindAFailedPage) {
  for (const Answer& failure : FailedPages()) {
    transport.Then(failure);
    EXPECT_EQ(Find(), "none  ");
    transport.Then(200, Rows({}, nextLink)).Then(failure);
    EXPECT_EQ(Find(), "none  ");
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

class DocumentLanguage : public XliffTest {
 protected:
  std::string ReadLanguage(const char* id = "D1") {
    XliffDocumentRef document;
    return (server.GetDocumentLanguage(id, document) ? "found " : "none ") + document.id + " " +
           document.language;
  }
};

TEST_F(DocumentLanguage, IsFoundByOneODataReadOfTheDocument) {
  transport.Then(200, Rows({Reference("D1", "en"), Reference("D1", "de")}));
  EXPECT_EQ(ReadLanguage(), "found D1 de");
  EXPECT_EQ(
      transport.requests(),
      (Requests{
          {serverUrl, "GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')", readHeaders, {}}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(DocumentLanguage, IsAskedForByTheDocumentPartOfAnIdEscaped) {
  transport.Then(200, Rows({}));
  EXPECT_EQ(ReadLanguage("VR:d 1|W2"), "none  ");
  EXPECT_EQ(transport.lines(), Lines{Get(DynamicDocumentPath("VR%3Ad%201"))});
}

// The answer is read as a list, although it is asked of one document.
TEST_F(DocumentLanguage, IsNoneOutsideOfAList) {
  transport.Then(200, Reference("D1", "en"));
  EXPECT_EQ(ReadLanguage(), "none  ");
}

TEST_F(DocumentLanguage, IsLookedForInFurtherPages) {
  transport.Then(200, Rows({}, nextLink)).Then(200, Rows({Reference("D1", "en")}));
  EXPECT_EQ(ReadLanguage(), "found D1 en");
  EXPECT_EQ(transport.requests().back(), ReadLink("https://plm.example", "/vt/next?$skip=1"));
}

TEST_F(DocumentLanguage, IsNoneBehindAFailedPage) {
  for (const Answer& failure : FailedPages()) {
    transport.Then(failure);
    EXPECT_EQ(ReadLanguage(), "none  ");
  }
}

class Translations : public XliffTest {
 protected:
  // "listed" or "failed", and what was read of the document itself.
  std::string List(const char* id = "D1") {
    source = {};
    translations.clear();
    return (server.GetTranslations(id, source, translations) ? "listed " : "failed ") + source.id + " " +
           source.language;
  }
  std::string ListIn(const std::string& page) {
    transport.Then(200, page);
    return List();
  }

  XliffDocumentRef source;
  std::map<std::string, std::string> translations;
};

// An answer of the document D1 in English with these rows, and a next link if it is not empty.
std::string Expanded(const std::vector<std::string>& rows, const std::string& link = {}) {
  std::string text;
  for (const auto& row : rows) text += (text.empty() ? "" : ",") + row;
  return R"({"ID":"D1","AuthoringLanguage":"en","Translations":[)" + text + "]" +
         (link.empty() ? "" : R"(,"@odata.nextLink":")" + link + "\"") + "}";
}

TEST_F(Translations, AreListedByOneODataRead) {
  EXPECT_EQ(ListIn(Expanded({Reference("T2", "fr"), Reference("T1", "de")})), "listed D1 en");
  EXPECT_THAT(translations, ElementsAre(Pair("de", "T1"), Pair("fr", "T2")));
  EXPECT_EQ(transport.requests(),
            (Requests{{serverUrl,
                       "GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')?$expand=Translations",
                       readHeaders,
                       {}}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Translations, AreAskedForByTheDocumentPartOfAnIdEscaped) {
  transport.Then(200, "{}").Then(200, "{}");
  EXPECT_EQ(List("VR:d 1|W2"), "failed  ");
  EXPECT_EQ(List(nullptr), "failed  ");
  EXPECT_EQ(transport.lines(), (Lines{Get(TranslationsPath("VR%3Ad%201")), Get(TranslationsPath(""))}));
}

TEST_F(Translations, MayBeNone) {
  EXPECT_EQ(ListIn(Expanded({})), "listed D1 en");
  EXPECT_THAT(translations, IsEmpty());
  EXPECT_EQ(ListIn(Reference("D1", "en")), "listed D1 en");
  EXPECT_EQ(ListIn(R"({"ID":"D1","AuthoringLanguage":"en","Translations":{}})"), "listed D1 en");
  EXPECT_THAT(translations, IsEmpty());
}

TEST_F(Translations, HaveTheLastOfALanguage) {
  EXPECT_EQ(ListIn(Expanded({Reference("T1", "de"), Reference("T2", "fr"), Reference("T3", "de")})),
            "listed D1 en");
  EXPECT_THAT(translations, ElementsAre(Pair("de", "T3"), Pair("fr", "T2")));
}

TEST_F(Translations, PassOverRowsWithoutTwoTexts) {
  EXPECT_EQ(
      ListIn(Expanded({"7", "null", "[]", "\"de\"", "{}", R"({"ID":"T1"})", R"({"AuthoringLanguage":"de"})",
                       R"({"ID":1,"AuthoringLanguage":"de"})", R"({"ID":"T1","AuthoringLanguage":[]})",
                       Reference("", ""), Reference("T2", "fr")})),
      "listed D1 en");
  EXPECT_THAT(translations, ElementsAre(Pair("", ""), Pair("fr", "T2")));
}

TEST_F(Translations, AreAddedToWhatTheMapHolds) {
  translations = {{"de", "old"}, {"zz", "old"}};
  transport.Then(200, Expanded({Reference("T1", "de")}));
  EXPECT_TRUE(server.GetTranslations("D1", source, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("de", "T1"), Pair("zz", "old")));
}

TEST_F(Translations, FailWhenTheDocumentDoesNotTellOfItself) {
  const std::string rows = R"("Translations":[)" + Reference("T1", "de") + "]}";
  EXPECT_EQ(ListIn("{" + rows), "failed  ");
  EXPECT_EQ(ListIn(R"({"ID":"D1",)" + rows), "failed D1 ");
  EXPECT_EQ(ListIn(R"({"AuthoringLanguage":"en",)" + rows), "failed  en");
  EXPECT_EQ(ListIn(R"({"ID":1,"AuthoringLanguage":{},)" + rows), "failed  ");
  // What was listed is delivered all the same.
  EXPECT_THAT(translations, ElementsAre(Pair("de", "T1")));
}

TEST_F(Translations, AreReadFromAllPagesOverConnectionsOfTheirOwn) {
  transport.Then(200, Expanded({Reference("T1", "de"), Reference("T2", "fr")}, nextLink))
      .Then(200, Expanded({Reference("T3", "de")}, "https://other.example/3"))
      .Then(200, R"({"ID":"D8","AuthoringLanguage":"it"})");
  EXPECT_EQ(List(), "listed D8 it");
  EXPECT_THAT(translations, ElementsAre(Pair("de", "T3"), Pair("fr", "T2")));
  EXPECT_EQ(transport.requests(),
            (Requests{ReadPage(TranslationsPath("D1")), ReadLink("https://plm.example", "/vt/next?$skip=1"),
                      ReadLink("https://other.example", "/3")}));
}

// The last page alone says whether the document told of itself.
TEST_F(Translations, SucceedByTheLastPage) {
  transport.Then(200, Expanded({Reference("T1", "de")}, nextLink)).Then(200, R"({"ID":"D1"})");
  EXPECT_EQ(List(), "failed D1 en");
  EXPECT_THAT(translations, ElementsAre(Pair("de", "T1")));
  transport.Then(200, R"({"@odata.nextLink":")" + nextLink + "\"}").Then(200, Reference("D1", "en"));
  EXPECT_EQ(List(), "listed D1 en");
}

TEST_F(Translations, FailWithAPageAndKeepWhatWasRead) {
  for (const Answer& failure : FailedPages()) {
    transport.Then(failure);
    EXPECT_EQ(List(), "failed  ");
    transport.Then(200, Expanded({Reference("T1", "de")}, nextLink)).Then(failure);
    EXPECT_EQ(List(), "failed D1 en");
    EXPECT_THAT(translations, ElementsAre(Pair("de", "T1")));
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
