#include <stdlib.h>

#include <functional>

#include "public/vt_direct_manager.h"
#include "tests/wire/translation/xliff_upload_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using TextMap = std::map<std::string, std::string>;

constexpr const char* uid = "korvufenloom-vt://plm.example/vt/?id=D1&file=/a.lxz";
constexpr const char* locateFailure = "Failed to locate document %s on server\n";

std::string NotLocated(const std::string& id) {
  std::string text = locateFailure;
  return text.replace(text.find("%s"), 2, id);
}

std::string UidOf(const std::string& id, const std::string& escapedName) {
  return "korvufenloom-vt://plm.example/vt/?id=" + id + "&file=/" + escapedName;
}

std::string DocumentNamed(const std::string& name) {
  return R"({"id":"other","epmMaster":{"cadName":")" + name + R"("}})";
}

std::string Expanded(const std::vector<std::string>& rows) {
  std::string text;
  for (const auto& row : rows) text += (text.empty() ? "" : ",") + row;
  return R"({"ID":"D1","AuthoringLanguage":"en","Translations":[)" + text + "]}";
}

/// A host with the server "plm" in its list.
class ListedTranslation : public XliffUploadTest {
 protected:
  ListedTranslation() {
    UpdateServerList({{"plm", serverUrl}});
    EXPECT_THAT(transport.lines(), IsEmpty());
  }
};

/// The same with a server that has translation, without a question for it.
class PublicTranslation : public ListedTranslation {
 protected:
  PublicTranslation() { setenv("FENLOOM_FORCE_NRX_XLIFF_ENABLE", "1", 1); }
};

TEST_F(PublicTranslation, UploadsASourceThatThereIsNot) {
  transport.Then(200, Rows({}));
  ThenPreferences(CabinetPreferences());
  transport.Then(200, cabinetAnswer);
  ThenStored();
  EXPECT_TRUE(UploadSourceXliff(uid, xliffPath.c_str(), "en"));
  EXPECT_EQ(
      transport.lines(),
      Join({Get(SourcePath("D1")), Get(PreferencesPath("D1", "en")), Get(cabinetsPath)}, StoringLines()));
  EXPECT_EQ(transport.requests().at(6).body, CreationBody());
  EXPECT_EQ(transport.requests().back().body, LinkBody("D1", "X2"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(PublicTranslation, UploadsASourceThatHasNoIdOrCannotBeAskedFor) {
  transport.Then(200, Rows({Reference("", "en")})).Then(200, "{}");
  EXPECT_FALSE(UploadSourceXliff(uid, xliffPath.c_str(), "de"));
  transport.Then(500).Then(200, "{}");
  EXPECT_FALSE(UploadSourceXliff(uid, xliffPath.c_str(), "de"));
  EXPECT_EQ(transport.lines(), (Lines{Get(SourcePath("D1")), Get(PreferencesPath("D1", "de")),
                                      Get(SourcePath("D1")), Get(PreferencesPath("D1", "de"))}));
}

// The update asks for the source once more.
TEST_F(PublicTranslation, UpdatesASourceThatThereIs) {
  transport.Then(200, Rows({Reference("X1", "en")})).Then(200, Rows({Reference("X1", "en")}));
  transport.Then(200, R"({"id":"X1","context":{"id":"C7"}})");
  ThenStored();
  EXPECT_TRUE(UploadSourceXliff(uid, xliffPath.c_str(), "de"));
  EXPECT_EQ(transport.lines(),
            Join({Get(SourcePath("D1")), Get(SourcePath("D1")), Get(documentsPath + "/X1")}, StoringLines()));
  EXPECT_EQ(transport.requests().at(6).body,
            R"({"iterateInstructions":[{"epmDocument":{"id":"X1","epmMaster":{"category":"xml","cadName":"",)"
            R"("authoringApplication":"SENTARIX"},)" +
                textSection + R"(,"authAppVersion":"7000","ndVersion":"J-01","fileBasedAttributes":[)" +
                Attribute("ZVK_DD_LANGUAGE", "de") + R"(]}}],"contextId":"C7"})");
}

TEST_F(PublicTranslation, ReportsAnUpdateThatFails) {
  transport.Then(200, Rows({Reference("X1", "en")})).Then(200, Rows({})).Then(200, "{}");
  EXPECT_FALSE(UploadSourceXliff(uid, xliffPath.c_str(), "de"));
  EXPECT_EQ(LinesFrom(0), (Lines{Get(SourcePath("D1")), Get(SourcePath("D1"))}));
  transport.Then(200, "{}");
  EXPECT_FALSE(SetXliffPublished(uid));
}

TEST_F(PublicTranslation, GivesTheUidOfTheSourceXliff) {
  transport.Then(200, Rows({Reference("X1", "en-US")})).Then(200, DocumentNamed("fork 1.xlf"));
  std::string xliff = "before";
  std::string language = "before";
  EXPECT_TRUE(GetUIDForSourceXliff(uid, xliff, language));
  EXPECT_EQ(xliff, UidOf("X1", "fork%201.xlf"));
  EXPECT_EQ(language, "en-US");
  EXPECT_EQ(transport.lines(), (Lines{Get(SourcePath("D1")), Get(documentsPath + "/X1")}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(PublicTranslation, GivesNoUidWithoutASourceXliff) {
  transport.Then(200, Rows({})).Then(500);
  std::string xliff = "before";
  std::string language = "before";
  EXPECT_FALSE(GetUIDForSourceXliff(uid, xliff, language));
  EXPECT_FALSE(GetUIDForSourceXliff(uid, xliff, language));
  EXPECT_EQ(xliff, "before");
  EXPECT_EQ(language, "before");
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// It is there all the same, so the answer is yes; what it is called cannot be told.
TEST_F(PublicTranslation, LeavesTheUidAloneWhenTheSourceXliffCannotBeRead) {
  transport.Then(200, Rows({Reference("X1", "en")})).Then(403);
  std::string xliff = "before";
  std::string language = "before";
  EXPECT_TRUE(GetUIDForSourceXliff(uid, xliff, language));
  EXPECT_EQ(xliff, "before");
  EXPECT_EQ(language, "before");
  EXPECT_EQ(trace.lines(), Traces{Error(NotLocated("X1"))});
}

TEST_F(PublicTranslation, GivesTheUidsOfTheTranslationsInTheOrderOfTheLanguages) {
  transport.Then(200, Expanded({Reference("T2", "fr"), Reference("T1", "de"), Reference("T3", "fr")}))
      .Then(200, DocumentNamed("a.xlf"))
      .Then(200, DocumentNamed("b.xlf"));
  TextMap translations;
  EXPECT_TRUE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("de", UidOf("T1", "a.xlf")), Pair("fr", UidOf("T3", "b.xlf"))));
  EXPECT_EQ(transport.lines(),
            (Lines{Get(TranslationsPath("D1")), Get(documentsPath + "/T1"), Get(documentsPath + "/T3")}));
}

TEST_F(PublicTranslation, GivesNoTranslationsWhereThereAreNone) {
  transport.Then(200, Expanded({}));
  TextMap translations;
  EXPECT_TRUE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, IsEmpty());
}

TEST_F(PublicTranslation, GivesNoTranslationsWhenTheyCannotBeListed) {
  transport.Then(500).Then(200, R"({"Translations":[)" + Reference("T1", "de") + "]}");
  TextMap translations{{"zz", "old"}};
  EXPECT_FALSE(GetXliffTranslations(uid, translations));
  EXPECT_FALSE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("zz", "old")));
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(PublicTranslation, DeliversTheOtherTranslationsWhenOneCannotBeRead) {
  transport.Then(200, Expanded({Reference("T1", "de"), Reference("T2", "fr"), Reference("T3", "it")}))
      .Then(200, DocumentNamed("a"))
      .Then(404)
      .Then(200, DocumentNamed("c"));
  TextMap translations;
  EXPECT_FALSE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("de", UidOf("T1", "a")), Pair("it", UidOf("T3", "c"))));
  EXPECT_EQ(trace.lines(), Traces{Error(NotLocated("T2"))});
}

// Success is told by the number of entries, so what a map came in with counts.
TEST_F(PublicTranslation, AreCountedTogetherWithWhatTheMapHeld) {
  transport.Then(200, Expanded({Reference("T1", "de")})).Then(200, DocumentNamed("a"));
  TextMap translations{{"zz", "old"}};
  EXPECT_FALSE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("de", UidOf("T1", "a")), Pair("zz", "old")));

  transport.Then(200, Expanded({}));
  EXPECT_FALSE(GetXliffTranslations(uid, translations));

  transport.Then(200, Expanded({Reference("T1", "de")})).Then(200, DocumentNamed("b"));
  translations = {{"de", "old"}};
  EXPECT_TRUE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("de", UidOf("T1", "b"))));

  transport.Then(200, Expanded({Reference("T1", "de"), Reference("T2", "fr")}))
      .Then(200, DocumentNamed("c"))
      .Then(404);
  translations = {{"zz", "old"}};
  EXPECT_TRUE(GetXliffTranslations(uid, translations));
  EXPECT_THAT(translations, ElementsAre(Pair("de", UidOf("T1", "c")), Pair("zz", "old")));
}

TEST_F(PublicTranslation, MarksADocumentAsPublished) {
  ThenToken();
  transport.Then(204).Then(200, R"({"value":"Failure"})").Then(500);
  EXPECT_TRUE(SetXliffPublished(uid));
  EXPECT_FALSE(SetXliffPublished(uid));
  EXPECT_FALSE(SetXliffPublished(uid));
  EXPECT_EQ(transport.lines(),
            (Lines{Get(tokenPath), "PATCH /vt/" + DynamicDocumentPath("D1"),
                   "PATCH /vt/" + DynamicDocumentPath("D1"), "PATCH /vt/" + DynamicDocumentPath("D1")}));
  EXPECT_EQ(trace.lines(), Traces{XliffError("Failed to set document as published with error 500 : \n")});
}

TEST_F(PublicTranslation, GoesByTheDocumentPartOfACheckout) {
  ThenToken();
  transport.Then(204);
  EXPECT_TRUE(SetXliffPublished("korvufenloom-vt://plm.example/vt/?file=/a&id=D1|W2|D3|T&x=1"));
  EXPECT_EQ(transport.requests().back().line, "PATCH /vt/" + DynamicDocumentPath("D1"));
}

/// The four functions that need the id of a document, with what they may change.
struct Calls {
  std::string text = "before";
  std::string language = "before";
  TextMap map{{"zz", "old"}};

  [[nodiscard]] bool AnySucceeds(const char* path) {
    const bool uploaded = UploadSourceXliff(path, "/nowhere.xlf", "en");
    const bool found = GetUIDForSourceXliff(path, text, language);
    const bool listed = GetXliffTranslations(path, map);
    const bool published = SetXliffPublished(path);
    return uploaded || found || listed || published;
  }
  [[nodiscard]] bool AreUntouched() const {
    return text == "before" && language == "before" && map == TextMap{{"zz", "old"}};
  }
};

TEST_F(PublicTranslation, NeedsTheIdOfADocumentAndFailsInSilenceWithoutOne) {
  Calls calls;
  for (const char* path : {static_cast<const char*>(nullptr), "//plm/Products/Gadget/Folders/a.lxz",
                           "//plm/?id=D1", "korvufenloom-vfs://plm/a",
                           "korvufenloom-vt://plm.example/vt/?id=", "korvufenloom-vt://plm.example/vt/"}) {
    EXPECT_FALSE(calls.AnySucceeds(path)) << (path != nullptr ? path : "null");
  }
  EXPECT_TRUE(calls.AreUntouched());
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(PublicTranslation, FailsLoudlyWithoutAServer) {
  Calls calls;
  const std::string unknown = "korvufenloom-vt://other.example/?id=D1";
  EXPECT_FALSE(calls.AnySucceeds(unknown.c_str()));
  EXPECT_TRUE(calls.AreUntouched());
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_EQ(trace.lines(), Traces(4, Error("Failed to connect to server path " + unknown + "\n")));
}

TEST_F(ListedTranslation, FailsWhereTheServerHasNoneAndAsksOnce) {
  transport.Then(200, "ServerMajorVersion:11\n");
  Calls calls;
  EXPECT_FALSE(calls.AnySucceeds(uid));
  EXPECT_FALSE(TranslationSupported(uid));
  EXPECT_TRUE(calls.AreUntouched());
  EXPECT_EQ(transport.lines(), Lines{Get("servlet/OrvetGW")});
  EXPECT_EQ(trace.lines().size(), 1U);
}

TEST_F(ListedTranslation, IsAskedForOnceBeforeTheFirstCall) {
  transport.Then(200, "ServerMajorVersion:12\n").Then(200, R"({"value":"true"})");
  transport.Then(200, R"([{"id":"DynamicDocMgmt"}])");
  transport.Then(200, Rows({})).Then(200, Rows({}));
  std::string text;
  EXPECT_FALSE(GetUIDForSourceXliff(uid, text, text));
  EXPECT_FALSE(GetUIDForSourceXliff(uid, text, text));
  EXPECT_EQ(transport.lines(), (Lines{Get("servlet/OrvetGW"),
                                      Get("servlet/odata/v1/ZVK/IsAssemblyInstalled(assemblyName='kotia')"),
                                      Get("servlet/odata/"), Get(SourcePath("D1")), Get(SourcePath("D1"))}));
}

TEST_F(ListedTranslation, IsSupportedByAPathAsByAUid) {
  transport.Then(200, "ServerMajorVersion:12\n").Then(200, "{}").Then(200, "[]");
  for (const char* path : {"//plm", "//plm/Products/none", "korvufenloom-vfs://plm/a", uid,
                           "korvufenloom-vt://plm.example/vt/"}) {
    EXPECT_TRUE(TranslationSupported(path)) << path;
  }
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(ListedTranslation, IsNotSupportedByAServerThatWasRefusedUntilItIsListedAnew) {
  transport.Then(404);
  EXPECT_FALSE(TranslationSupported("//plm"));
  EXPECT_FALSE(TranslationSupported("//plm"));
  EXPECT_EQ(transport.requests().size(), 1U);
  UpdateServerList({});
  UpdateServerList({{"plm", serverUrl}});
  transport.Then(200, "ServerMajorVersion:12\n").Then(200, "{}").Then(200, "[]");
  EXPECT_TRUE(TranslationSupported("//plm"));
}

TEST_F(ListedTranslation, IsNotSupportedWithoutAServerAndTracesAnError) {
  EXPECT_FALSE(TranslationSupported(nullptr));
  EXPECT_THAT(trace.lines(), IsEmpty());
  EXPECT_FALSE(TranslationSupported("//nobody/a"));
  EXPECT_FALSE(TranslationSupported(""));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to connect to server path //nobody/a\n"),
                                   Error("Failed to connect to server path \n")}));
  EXPECT_THAT(transport.lines(), IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
