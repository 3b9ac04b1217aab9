#include "browsing/gateway_listing.h"

#include <cstdlib>
#include <filesystem>

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

constexpr const char* contexts =
    R"({"items":[{"id":"OR:vn.Ex ample:77","attributes":{"name":"Gadget/1","organizationReference.name":"Ac me"}}]})";
constexpr const char* gatewayPath =
    "servlet/rest/snx_gw/organizations/Ac%20me/vn.Ex%20ample/Gadget%2F1/folders";

class Gateway : public BrowsingTest {
 protected:
  void Script(const std::string& content) {
    transport.Then(200, contexts).Then(200, R"({"folderContent":[)" + content + "]}");
  }
  bool List(unsigned bits, const std::string& folderPath = "Sub/Deep/") {
    return ListGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, folderPath}, Collect(),
                             Bits(bits));
  }
};

TEST_F(Gateway, ListsAFolderByItsPath) {
  Script(R"("http://x/folders?path=Sub/Deep/Inner","http://x/y/doc.lxz")");
  EXPECT_TRUE(List(3));
  EXPECT_THAT(entries, ElementsAre("dir Inner", "file doc.lxz"));
  EXPECT_EQ(transport.requests(), (Requests{Rest("servlet/rest/v1/contexts?type=Product"),
                                            Rest(std::string(gatewayPath) + "?path=Sub%2FDeep%2F")}));
}

TEST_F(Gateway, ListsTheRootWithoutAPath) {
  Script("");
  EXPECT_TRUE(List(3, ""));
  EXPECT_EQ(transport.requests()[1], Rest(gatewayPath));
}

TEST_F(Gateway, AnUnknownContextListsNothing) {
  transport.Then(200, R"({"items":[]})");
  EXPECT_FALSE(List(3));
  EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(Gateway, ARefusalIsAFailure) {
  transport.Then(200, contexts).Then(404, R"({"folderContent":["x/doc"]})");
  EXPECT_FALSE(List(3));
  EXPECT_THAT(entries, IsEmpty());
}

TEST_F(Gateway, AnythingButAListOfTextsListsNothingAndSucceeds) {
  for (const char* body : {"", "{", "[]", "7", R"({"folderContent":{}})", R"({"folderContent":"x/doc"})",
                           R"({"other":["x/doc"]})", R"({"folderContent":[1,null,{},["x/doc"]]})"}) {
    transport.Then(200, contexts).Then(200, body);
    EXPECT_TRUE(List(3)) << body;
    EXPECT_THAT(entries, IsEmpty()) << body;
  }
}

TEST_F(Gateway, DeliversWhatTheBitsAskFor) {
  for (const unsigned bits : {0U, 1U, 2U, 3U, 12U}) {
    Script(R"("x/folders?path=A","x/y/doc.lxz")");
    entries.clear();
    EXPECT_TRUE(List(bits)) << bits;
    Entries expected;
    if ((bits & 2U) != 0) expected.emplace_back("dir A");
    if ((bits & 1U) != 0) expected.emplace_back("file doc.lxz");
    EXPECT_EQ(entries, expected) << bits;
  }
}

TEST_F(Gateway, TakesTheNameBehindTheLastMarkOrTheLastSlash) {
  Script(
      R"("x/folders?path=A/B","x/folders?path=A","x/folders?path=q&path=C","x/path=1/doc.lxz","x/","x/y?path=",
            "noslash","path=noslash","","x/a?PATH=b")");
  EXPECT_TRUE(List(3));
  EXPECT_THAT(entries,
              ElementsAre("dir B", "dir A", "dir C", "dir doc.lxz", "file ", "dir ", "file a%3fPATH=b"));
}

TEST_F(Gateway, EveryListOfThatNameIsGoneThrough) {
  transport.Then(200, contexts)
      .Then(200, R"({"folderContent":["x/a"],"folderContent":7,"folderContent":["x/b"]})");
  EXPECT_TRUE(List(3));
  EXPECT_THAT(entries, ElementsAre("file a", "file b"));
}

TEST_F(Gateway, EscapesEveryNameWhenTheSwitchIsOff) {
  unsetenv("FENLOOM_REST_SNXGW_NOW_ESCAPES");
  Script(R"("x/a:b","x/a%3fb","x/folders?path=a%3fb","x/folders?path=a|b")");
  EXPECT_TRUE(List(3));
  // Names of a gateway that escapes come out escaped twice: that is what the switch is for.
  EXPECT_THAT(entries, ElementsAre("file a%3ab", "file a%253fb", "dir a%253fb", "dir a%7cb"));
}

TEST_F(Gateway, DecodesAndEscapesFilesAloneWhenTheSwitchIsOn) {
  setenv("FENLOOM_REST_SNXGW_NOW_ESCAPES", "1", 1);
  Script(R"("x/a%3fb","x/a%20b","x/plain","x/folders?path=a%3fb","x/folders?path=a|b")");
  EXPECT_TRUE(List(3));
  EXPECT_THAT(entries, ElementsAre("file a%3fb", "file a b", "file plain", "dir a%3fb", "dir a|b"));
}

TEST_F(Gateway, TheSwitchIsReadOncePerProcess) {
  setenv("FENLOOM_REST_SNXGW_NOW_ESCAPES", "1", 1);
  Script(R"("x/a%3fb")");
  EXPECT_TRUE(List(3));
  unsetenv("FENLOOM_REST_SNXGW_NOW_ESCAPES");
  Script(R"("x/a%3fb")");
  EXPECT_TRUE(List(3));
  EXPECT_THAT(entries, ElementsAre("file a%3fb", "file a%3fb"));
}

TEST_F(Gateway, ANameMayHoldAZeroByteAndControlBytes) {
  Script(R"("x/a\u0000b","x/c\u001bd")");
  EXPECT_TRUE(List(1));
  EXPECT_THAT(entries, ElementsAre("file a",
                                   "file c\x1b"
                                   "d"));
}

// 60,000 files, which make an answer that does not fit in memory.
std::string LongList() {
  std::string content;
  for (int index = 0; index < 60'000; ++index) {
    content += (index > 0 ? ",\"x/file" : "\"x/file") + std::to_string(index) + "\"";
  }
  EXPECT_GT(content.size(), 524'288U);
  return content;
}

// Whether this process has a file open in the directory, with its name or without.
bool HasOpenFileIn(const std::string& directory) {
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code closedMeanwhile;
    const auto target = std::filesystem::read_symlink(entry.path(), closedMeanwhile);
    if (target.string().starts_with(directory + "/")) return true;
  }
  return false;
}

TEST_F(Gateway, ALongListComesThroughATemporaryFileThatIsGoneAfterwards) {
  Script(LongList());
  EXPECT_TRUE(List(1));
  EXPECT_EQ(entries.size(), 60'000U);
  EXPECT_EQ(entries.back(), "file file59999");
}

TEST_F(Gateway, AnOpenedFolderIsFetchedAtOnceAndReadAsOftenAsWanted) {
  Script(R"("x/folders?path=A","x/doc.lxz")");
  const DirLister lister = OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"});
  ASSERT_TRUE(lister);
  EXPECT_EQ(transport.requests(), (Requests{Rest("servlet/rest/v1/contexts?type=Product"),
                                            Rest(std::string(gatewayPath) + "?path=Sub")}));
  EXPECT_TRUE(lister(Collect(), Bits(0)));
  EXPECT_TRUE(lister(Collect(), Bits(2)));
  EXPECT_TRUE(lister(Collect(), Bits(3)));
  EXPECT_THAT(entries, ElementsAre("dir A", "dir A", "file doc.lxz"));
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(Gateway, AnOpenedFolderHoldsALongAnswerInATemporaryFileThatGoesWithIt) {
  Script(LongList());
  DirLister lister = OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"});
  ASSERT_TRUE(lister);
  EXPECT_EQ(directory.Entries().size(), 1U);
  EXPECT_TRUE(lister(Collect(), Bits(1)));
  EXPECT_EQ(directory.Entries().size(), 1U);
  EXPECT_TRUE(lister(Collect(), Bits(1)));
  EXPECT_EQ(entries.size(), 120'000U);
  EXPECT_EQ(transport.requests().size(), 2U);
  lister = {};
  EXPECT_THAT(directory.Entries(), IsEmpty());
  EXPECT_FALSE(HasOpenFileIn(directory.path()));
}

// Whoever clears the directory of temporary files takes the name of the file, and not the file that is open.
TEST_F(Gateway, AnOpenedFolderIsReadAfterItsTemporaryFileWasRemoved) {
  Script(LongList());
  {
    const DirLister lister = OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"});
    ASSERT_EQ(directory.Entries().size(), 1U);
    std::filesystem::remove(directory.File(directory.Entries().front()));
    EXPECT_TRUE(lister(Collect(), Bits(1)));
    EXPECT_EQ(entries.size(), 60'000U);
  }
  // That the file could not be removed is traced, and harms nobody.
  ASSERT_EQ(trace.lines().size(), 1U);
  EXPECT_TRUE(trace.lines().front().text.starts_with("Failed to unlink file "));
  trace.Clear();
}

TEST_F(Gateway, AnOpenedFolderIsListedByItsOwnCallback) {
  Script(LongList());
  const DirLister lister = OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"});
  int inner = 0;
  int outer = 0;
  EXPECT_TRUE(lister(
      [&](const DirEntryInfoExt&) {
        if (++outer > 1) return;
        EXPECT_TRUE(lister([&inner](const DirEntryInfoExt&) { ++inner; }, Bits(1)));
      },
      Bits(1)));
  EXPECT_EQ(outer, 60'000);
  EXPECT_EQ(inner, 60'000);
}

TEST_F(Gateway, AFolderThatCannotBeFetchedCannotBeOpened) {
  transport.Then(200, R"({"items":[]})").Then(200, contexts).Then(500);
  EXPECT_FALSE(OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"}));
  EXPECT_FALSE(OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"}));
}

TEST_F(Gateway, ABrokenAnswerOpensAndListsNothing) {
  transport.Then(200, contexts).Then(200, "no json");
  const DirLister lister = OpenGatewayFolder(Begin(connection), {"Gadget/1", ContextKind::Product, "Sub"});
  ASSERT_TRUE(lister);
  EXPECT_TRUE(lister(Collect(), Bits(3)));
  EXPECT_TRUE(lister(Collect(), Bits(3)));
  EXPECT_THAT(entries, IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
