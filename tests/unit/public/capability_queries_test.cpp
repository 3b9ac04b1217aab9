#include <ostream>

#include "public/vt_direct_manager.h"
#include "tests/unit/public/fake_server.h"

namespace {

using namespace VtDirectManager;
using namespace vtdirect_test;

constexpr const char* otherKey = "korvufenloom-vt://other.example/";
constexpr const char* uidOfD1 = "korvufenloom-vt://plm.example/vt/?id=D1";

struct Capability {
  const char* name;
  bool (*ask)(const char* path);
  const char* ofPath;  ///< what the server is asked for "//plm/a/b"
  const char* ofUid;   ///< what it is asked for a UID
  bool ofVantryOnly;
};

void PrintTo(const Capability& capability, std::ostream* out) {
  *out << capability.name;
}

constexpr Capability capabilities[] = {
    {"CanPathShowDetails", CanPathShowDetails, "CanPathShowDetails(a/b)", "CanPathShowDetails()", false},
    {"CanPathShowVersions", CanPathShowVersions, "CanPathShowVersions(a/b)", "CanPathShowVersions()", false},
    {"IsPathWritable", IsPathWritable, "IsPathWritable(a/b)", "IsPathWritable()", false},
    {"IsCheckoutSupported", IsCheckoutSupported, "GetCheckoutServer", "GetCheckoutServer", false},
    {"TranslationSupported", TranslationSupported, "GetXliffServer", "GetXliffServer", false},
    {"SupportsSeparatedSources", SupportsSeparatedSources, "SupportsSeparatedSources",
     "SupportsSeparatedSources", true},
    {"SupportsVCSMetadata", SupportsVCSMetadata, "SupportsVCSMetadata", "SupportsVCSMetadata", true},
};

class Capabilities : public FakeServerTest, public testing::WithParamInterface<Capability> {};

TEST_P(Capabilities, GiveTheServersAnswerForAPath) {
  EXPECT_TRUE(GetParam().ask("//plm/a/b"));
  answers.yes = false;
  EXPECT_FALSE(GetParam().ask("//plm/a/b"));
  EXPECT_EQ(answers.calls, (Lines{GetParam().ofPath, GetParam().ofPath}));
  EXPECT_TRUE(trace.lines().empty());
}

TEST_P(Capabilities, AskWithTheEmptyPathForAUid) {
  EXPECT_TRUE(GetParam().ask(uidOfD1));
  EXPECT_EQ(answers.calls, Lines{GetParam().ofUid});
}

TEST_P(Capabilities, AreFalseWithoutAServer) {
  EXPECT_FALSE(GetParam().ask("//nobody/a"));
  EXPECT_FALSE(GetParam().ask("x"));
  EXPECT_TRUE(answers.calls.empty());
}

TEST_P(Capabilities, OfAnotherKindOfServerAreAskedUnlessOnlyVantryHasThem) {
  Put<FakeOther>("other", otherKey, "https://other.example");
  EXPECT_EQ(GetParam().ask("//other/a/b"), !GetParam().ofVantryOnly);
  EXPECT_EQ(answers.calls.empty(), GetParam().ofVantryOnly);
}

INSTANTIATE_TEST_SUITE_P(Each, Capabilities, testing::ValuesIn(capabilities),
                         [](const auto& test) { return std::string(test.param.name); });

using BrowserPage = FakeServerTest;
using AttributesPage = FakeServerTest;

TEST_F(BrowserPage, IsTheServers) {
  answers.text = "https://plm.example/page";
  std::string url = "before";
  EXPECT_TRUE(BrowserInfo(uidOfD1, url));
  EXPECT_EQ(url, "https://plm.example/page");
  EXPECT_EQ(answers.calls, Lines{"BrowserInfo(D1)"});
}

TEST_F(BrowserPage, OfAPathIsThatOfItsObject) {
  answers.idsByPath["a"] = "D1";
  answers.text = "u";
  std::string url;
  EXPECT_TRUE(BrowserInfo("//plm/a", url));
  EXPECT_EQ(answers.calls, (Lines{"ResolvePath(a)", "BrowserInfo(D1)"}));
}

TEST_F(BrowserPage, ThatIsEmptyEmptiesTheOutputAndFails) {
  std::string url = "before";
  EXPECT_FALSE(BrowserInfo(uidOfD1, url));
  EXPECT_EQ(url, "");
}

TEST_F(BrowserPage, OfNoObjectLeavesTheOutputAlone) {
  std::string url = "before";
  EXPECT_FALSE(BrowserInfo("//plm/a", url));
  EXPECT_FALSE(BrowserInfo("//nobody/a", url));
  EXPECT_EQ(url, "before");
}

TEST_F(AttributesPage, IsTheServers) {
  answers.text = "https://plm.example/edit";
  EXPECT_EQ(VantryEditAttributesURL(uidOfD1), "https://plm.example/edit");
  EXPECT_EQ(answers.calls, Lines{"EditAttributesURL(D1)"});
}

TEST_F(AttributesPage, OfAnotherKindOfServerIsEmpty) {
  Put<FakeOther>("other", otherKey, "https://other.example");
  answers.text = "https://plm.example/edit";
  EXPECT_EQ(VantryEditAttributesURL("korvufenloom-vt://other.example/?id=D1"), "");
  EXPECT_TRUE(answers.calls.empty());
}

TEST_F(AttributesPage, OfAPathIsEmptyAndSilent) {
  answers.idsByPath["a"] = "D1";
  answers.text = "u";
  EXPECT_EQ(VantryEditAttributesURL("//plm/a"), "");
  EXPECT_TRUE(answers.calls.empty());
  EXPECT_TRUE(trace.lines().empty());
}

}  // namespace
