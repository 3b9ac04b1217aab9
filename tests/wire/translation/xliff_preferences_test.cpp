#include "translation/xliff_preferences.h"

#include "tests/wire/translation/xliff_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

class XliffPreferenceQuery : public XliffTest {
 protected:
  XliffPreferences Read() { return GetXliffPreferences(Begin(connection), "D1", "en"); }
};

TEST_F(XliffPreferenceQuery, IsOneODataRead) {
  transport.Then(200, R"({"Preferences":[{"Name":"A","Value":"1"},{"Name":"B","Value":""}]})");
  EXPECT_THAT(Read(), ElementsAre(Pair("A", "1"), Pair("B", "")));
  EXPECT_EQ(transport.requests(), (Requests{{serverUrl,
                                             "GET /vt/servlet/odata/v1/DynamicDocMgmt/"
                                             "XliffPreferences(oidForQ7zkDocument='D1',sourceLanguage='en')",
                                             readHeaders,
                                             {}}}));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffPreferenceQuery, EscapesTheIdAndTheLanguage) {
  transport.Then(200, "{}");
  EXPECT_THAT(GetXliffPreferences(Begin(connection), "VR:d'1 2", "en&x"), IsEmpty());
  EXPECT_EQ(transport.lines(), Lines{Get(PreferencesPath("VR%3Ad%271%202", "en%26x"))});
}

TEST_F(XliffPreferenceQuery, TakesNoLanguageForAnEmptyOne) {
  transport.Then(200, "{}").Then(200, "{}");
  EXPECT_THAT(GetXliffPreferences(Begin(connection), "D1", ""), IsEmpty());
  EXPECT_THAT(GetXliffPreferences(Begin(connection), "", ""), IsEmpty());
  EXPECT_EQ(transport.lines(), (Lines{Get(PreferencesPath("D1", "")), Get(PreferencesPath("", ""))}));
}

TEST_F(XliffPreferenceQuery, LetsALaterValueOverrideAnEarlierOne) {
  transport.Then(200, R"({"Preferences":[{"Name":"A","Value":"1"},{"Value":"2","Name":"A"}]})");
  EXPECT_THAT(Read(), ElementsAre(Pair("A", "2")));
}

TEST_F(XliffPreferenceQuery, PassesOverWhatIsNoPairOfTexts) {
  transport.Then(200, R"({"Preferences":[7,null,"x",[],[{"Name":"N","Value":"n"}],{},{"Name":"A"},
      {"Value":"v"},{"Name":1,"Value":"v"},{"Name":"B","Value":2},{"Name":"C","Value":null},
      {"name":"D","value":"v"},{"Name":"E","Value":"e","More":[1]}]})");
  EXPECT_THAT(Read(), ElementsAre(Pair("E", "e")));
}

TEST_F(XliffPreferenceQuery, FindsNoneWhereThereIsNoListOfThem) {
  for (const char* body : {"{}", R"({"Preferences":{"Name":"A","Value":"1"}})", R"({"Preferences":"A"})",
                           R"({"Preferences":null})", R"({"preferences":[{"Name":"A","Value":"1"}]})",
                           R"({"value":[{"Name":"A","Value":"1"}]})"}) {
    transport.Then(200, body);
    EXPECT_THAT(Read(), IsEmpty()) << body;
  }
}

TEST_F(XliffPreferenceQuery, FollowsNextLinksOverConnectionsOfTheirOwn) {
  transport
      .Then(200, R"({"Preferences":[{"Name":"A","Value":"1"},{"Name":"B","Value":"1"}],
                     "@odata.nextLink":"https://plm.example/vt/page?$skip=2"})")
      // A page without any still leads on.
      .Then(200, R"({"@odata.nextLink":"https://other.example:8443/last"})")
      .Then(200, R"({"Preferences":[{"Name":"B","Value":"3"}]})");
  EXPECT_THAT(Read(), ElementsAre(Pair("A", "1"), Pair("B", "3")));
  EXPECT_EQ(transport.requests(), (Requests{ReadPage(PreferencesPath("D1", "en")),
                                            ReadLink("https://plm.example", "/vt/page?$skip=2"),
                                            ReadLink("https://other.example:8443", "/last")}));
}

TEST_F(XliffPreferenceQuery, KeepsWhatItReadBeforeAFailedPage) {
  const std::string first =
      R"({"Preferences":[{"Name":"A","Value":"1"}],"@odata.nextLink":"https://plm.example/vt/next"})";
  const std::string after =
      R"([{"Preferences":[{"Name":"B","Value":"2"}],"@odata.nextLink":"https://plm.example/vt/more"}])";
  const std::vector<Answer> failures{{500, first},
                                     {404, ""},
                                     {0, "", du::http::ErrorCode::TimedOut},
                                     {200, "<html>"},
                                     {200, first.substr(0, first.size() - 1)},
                                     {200, after},
                                     {200, "null"},
                                     {204, ""}};
  for (const Answer& failure : failures) {
    transport.ClearRequests();
    transport.Then(200, first).Then(failure);
    EXPECT_THAT(Read(), ElementsAre(Pair("A", "1")));
    EXPECT_EQ(transport.requests().size(), 2U);
    transport.Then(failure);
    EXPECT_THAT(Read(), IsEmpty());
  }
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(XliffPreferenceQuery, EndsAtANextLinkThatIsNoText) {
  transport.Then(200, R"({"Preferences":[{"Name":"A","Value":"1"}],"@odata.nextLink":7})");
  EXPECT_THAT(Read(), ElementsAre(Pair("A", "1")));
  EXPECT_EQ(transport.requests().size(), 1U);
}

}  // namespace
}  // namespace vtdirect_test
