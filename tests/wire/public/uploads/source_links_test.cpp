#include "public/source_links.h"

#include "tests/wire/public/uploads/upload_front_fixture.h"

namespace vtdirect_test {
namespace {

using namespace VtDirectManager;
using lxservices::cms_interface::ResolveSourceLinks;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

using LinkMap = std::map<std::string, std::string>;

class SourceLinks : public UploadFrontTest {
 protected:
  static LinkMap Resolve(const LinkMap& links) { return ResolveSourceLinks(PlmTarget(), links); }
};

TEST_F(SourceLinks, ByUidCostNoRequest) {
  EXPECT_THAT(Resolve({{"b", uidStem + "D7|W2&file=/b"}, {"a%7cx", "//plm/?id=D8&x"}}),
              ElementsAre(Pair("a|x", "D8"), Pair("b", "D7|W2")));
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceLinks, ByPathWalkTheServer) {
  transport.Then(404).Then(404).Then(404);
  transport.Then(200, R"([{"id":"D1","attributes":{"number":"0042"}}])").Then(200, R"({"id":"D1"})");
  EXPECT_THAT(Resolve({{"a", "//plm/Products/Gadget/Folders/pump.fnl"}}), ElementsAre(Pair("a", "D1")));
}

TEST_F(SourceLinks, ToAnotherServerAreDroppedWithAWarning) {
  UpdateServerList({{"plm", plmUrl}, {"other", "https://other.example/"}});
  EXPECT_THAT(Resolve({{"a%7cx", "korvufenloom-vt://other.example/?id=D7"}, {"b", uidStem + "D8"}}),
              ElementsAre(Pair("b", "D8")));
  EXPECT_EQ(trace.lines(),
            Traces{Warning("Links to different servers are unsupported: link to a|x will be broken\n")});
}

TEST_F(SourceLinks, ToNoServerAreDroppedWithBothLines) {
  EXPECT_THAT(Resolve({{"a", "nowhere"}}), IsEmpty());
  EXPECT_EQ(trace.lines(),
            (Traces{Error("Failed to connect to server path nowhere\n"),
                    Warning("Links to different servers are unsupported: link to a will be broken\n")}));
}

TEST_F(SourceLinks, ToNothingOnTheServerAreDroppedWithAWarning) {
  transport.Then(404).Then(404).Then(404);
  EXPECT_THAT(Resolve({{"a", "//plm/Products/x"}}), IsEmpty());
  EXPECT_EQ(Traced(), Traces{Warning("Failed to resolve //plm/Products/x : link to a will be broken\n")});
}

TEST_F(SourceLinks, ToNothingAtAllAreDroppedWithoutAWarning) {
  EXPECT_THAT(Resolve({{"a", ""}}), IsEmpty());
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(SourceLinks, WithoutANameAreAnErrorThatStopsNothing) {
  EXPECT_THAT(Resolve({{"", uidStem + "D7"}, {"b", uidStem + "D8"}}), ElementsAre(Pair("b", "D8")));
  EXPECT_EQ(trace.lines(), Traces{Error("Not specifying a sensible source name is an error!")});
}

// Two keys can decode to one name; the later one decides, even by going nowhere.
TEST_F(SourceLinks, OfOneNameAreDecidedByTheLaterKey) {
  EXPECT_THAT(Resolve({{"a%7Cx", uidStem + "D7"}, {"a%7cx", uidStem + "D8"}}),
              ElementsAre(Pair("a|x", "D8")));
  EXPECT_THAT(Resolve({{"a%7Cx", uidStem + "D7"}, {"a%7cx", ""}}), IsEmpty());
}

TEST_F(SourceLinks, ThatAreBrokenDoNotStopTheUpload) {
  const LinkMap links{{"", "x"}, {"a", ""}, {"b", "nowhere"}};
  ThenPlainDocument();
  transport.Then(200, R"({"id":"D1","derivedSourceDependencies":[{"asStoredChildName":"old",
                          "source":{"id":"D7"}}]})");
  ThenNonce();
  ThenUpload();
  transport.Then(200, storedDocument);
  EXPECT_TRUE(Upload(uidOfD1, mainPath.c_str(), "", links, Status(), {}, nullptr, false));
  EXPECT_EQ(statuses, Lines{"0 " + storedUid});
  EXPECT_NE(transport.requests().back().body->find(R"("isDerived":false)"), std::string::npos);
}

TEST_F(SourceLinks, OfADocumentAreReadWithTheUidOfEachChild) {
  transport
      .Then(200, R"({"derivedSourceDependencies":[{"asStoredChildName":"b|x","source":{"id":"D8"}},
                     {"asStoredChildName":"a","source":{"id":"D7"}},
                     {"asStoredChildName":"c","source":{"id":"D9"}}]})")
      .Then(200, R"({"id":"D7","epmMaster":{"cadName":"a 1.fnl"}})")
      .Then(200, R"({"id":"D8"})")
      .Then(404);
  LinkMap links{{"other", "stays"}, {"a", "goes"}};
  GetSourceLinks(uidOfD1, links);
  EXPECT_EQ(transport.lines(),
            (Lines{DocumentLine("D1"), DocumentLine("D7"), DocumentLine("D8"), DocumentLine("D9")}));
  EXPECT_THAT(links, ElementsAre(Pair("a", uidStem + "D7&file=/a%201.fnl"), Pair("b%7cx", uidStem + "D8"),
                                 Pair("c", ""), Pair("other", "stays")));
}

TEST_F(SourceLinks, OfWhatIsNoUidOrCannotBeReadAreLeftAlone) {
  LinkMap links{{"other", "stays"}};
  GetSourceLinks("//plm/Products/Gadget/Folders/a", links);
  GetSourceLinks("//nowhere/a", links);
  GetSourceLinks(nullptr, links);
  transport.Then(404);
  GetSourceLinks(uidOfD1, links);
  EXPECT_THAT(links, ElementsAre(Pair("other", "stays")));
  EXPECT_EQ(transport.lines(), Lines{DocumentLine("D1")});
}

using Creation = UploadFrontTest;

TEST_F(Creation, IsCalledForWhenADocumentHasNoContent) {
  transport.Then(200, R"({"id":"D1"})")
      .Then(200, R"({"cadContent":{"contentSections":[{"fileSize":0}]}})")
      .Then(200, R"({"cadContent":{"contentSections":[{"fileSize":1}]}})");
  EXPECT_TRUE(ShouldCreate(uidOfD1));
  EXPECT_TRUE(ShouldCreate(uidOfD1));
  EXPECT_FALSE(ShouldCreate(uidOfD1));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Creation, IsNotCalledForWhenADocumentCannotBeRead) {
  transport.Then(404);
  EXPECT_FALSE(ShouldCreate(uidOfD1));
  EXPECT_EQ(trace.lines(), (Traces{Error("Failed to locate document D1 on server\n"),
                                   Error(std::string("Failed to find file ") + uidOfD1)}));
}

TEST_F(Creation, IsNotCalledForAPathOfNothing) {
  transport.Then(404).Then(404).Then(404);
  EXPECT_FALSE(ShouldCreate("//plm/Products/x"));
  EXPECT_EQ(Traced(), Traces{Error("Failed to find file //plm/Products/x")});
  EXPECT_FALSE(ShouldCreate(nullptr));
}

}  // namespace
}  // namespace vtdirect_test
