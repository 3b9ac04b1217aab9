#include "documents/storing/dependencies.h"

#include "tests/wire/documents/flow_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

// A child as the document service tells of it.
std::string Child(const std::string& name) {
  return R"({"id":"OTHER","revision":"B","iteration":"3","authAppVersion":"300","ndVersion":"K-02",)"
         R"("isDerived":true,"epmMaster":{"id":"M-)" +
         name + R"(","cadName":")" + name + R"(.fnl"}})";
}

class Dependencies : public FlowTest {
 protected:
  static DerivedSourceDependency Known(const std::string& cadName, const std::string& sourceId) {
    DerivedSourceDependency dependency;
    dependency.asStoredChildName = "stored as " + cadName;
    dependency.isDirect = true;
    dependency.sourceId = sourceId;
    dependency.sourceMaster.id = "MK";
    dependency.sourceMaster.cadName = cadName;
    dependency.revNum = 9;
    dependency.isPlaceHolder = true;
    return dependency;
  }
  static Lines NamesAndSources(const DependencyList& list) {
    Lines lines;
    for (const auto& entry : list) lines.push_back(entry.asStoredChildName + " " + entry.sourceId);
    return lines;
  }
  static std::string DocumentLine(const std::string& id) { return Get(documentsPath + "/" + id); }
};

TEST_F(Dependencies, OfANewDocumentAreReadInTheOrderOfTheNames) {
  transport.Then(200, Child("axle")).Then(200, Child("bolt"));
  const auto list = ResolveDependencyMap(Begin(connection), {{"bolt", "D2|W9"}, {"axle", "D:1|W2|D3|T"}});
  EXPECT_EQ(transport.requests(), (Requests{Read(documentsPath + "/D%3A1"), Read(documentsPath + "/D2")}));
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle D:1", "bolt D2"));
  EXPECT_FALSE(list[0].isDirect);
  EXPECT_FALSE(list[0].isPlaceHolder);
  EXPECT_TRUE(list[0].hasCompleteDependencies);
  EXPECT_EQ(list[0].revNum, 0);
  EXPECT_EQ(list[0].sourceMaster.id, "M-axle");
  EXPECT_EQ(list[0].sourceMaster.cadName, "axle.fnl");
  EXPECT_EQ(list[0].revision, "B");
  EXPECT_EQ(list[0].iteration, "3");
  EXPECT_EQ(list[0].authAppVersion, "300");
  EXPECT_EQ(list[0].ndVersion, "K-02");
  EXPECT_TRUE(list[0].isDerived);
  EXPECT_THAT(trace.lines(), IsEmpty());
}

TEST_F(Dependencies, ThatCannotBeReadAreLeftOutWithoutATrace) {
  transport.Then(404).Then(200, Child("bolt")).ThenFail(du::http::ErrorCode::TimedOut);
  const auto list = ResolveDependencyMap(Begin(connection), {{"axle", "D1"}, {"bolt", "D2"}, {"cog", "D3"}});
  EXPECT_THAT(NamesAndSources(list), ElementsAre("bolt D2"));
  EXPECT_THAT(trace.lines(), IsEmpty());
}

// A new dependency has an empty source, which is what an empty id names, so nothing is asked.
TEST_F(Dependencies, OfAnEmptyIdCostNoRequest) {
  const auto list = ResolveDependencyMap(Begin(connection), {{"axle", ""}, {"bolt", "|W2"}});
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle ", "bolt "));
}

// The read of a document succeeds whatever its body.
TEST_F(Dependencies, WhoseDocumentIsNoJsonStandWithoutAMaster) {
  transport.Then(200, "<html>");
  const auto list = ResolveDependencyMap(Begin(connection), {{"axle", "D1"}});
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle D1"));
  EXPECT_EQ(list[0].sourceMaster.id, "");
}

TEST_F(Dependencies, ThatTheDocumentHasCostNoRequestAndKeepWhatTheySay) {
  const DependencyList known{Known("bolt", "D2"), Known("axle", "D1")};
  const auto list = MergeDependencyMap(Begin(connection), {{"axle", "D1|W2"}}, known);
  EXPECT_THAT(transport.lines(), IsEmpty());
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle D1"));
  EXPECT_TRUE(list[0].isDirect);
  EXPECT_TRUE(list[0].isPlaceHolder);
  EXPECT_EQ(list[0].revNum, 9);
  EXPECT_EQ(list[0].sourceMaster.id, "MK");
}

TEST_F(Dependencies, ThatPointElsewhereNowAreReadAndKeepTheirFlags) {
  transport.Then(200, Child("new"));
  const auto list = MergeDependencyMap(Begin(connection), {{"axle", "D7"}}, {Known("axle", "D1")});
  EXPECT_THAT(transport.lines(), ElementsAre(DocumentLine("D7")));
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle D7"));
  EXPECT_TRUE(list[0].isDirect);
  EXPECT_TRUE(list[0].isPlaceHolder);
  EXPECT_EQ(list[0].revNum, 9);
  EXPECT_EQ(list[0].sourceMaster.id, "M-new");
  EXPECT_EQ(list[0].revision, "B");
}

TEST_F(Dependencies, AreSoughtByTheCadNameOfTheirMasterAndNotByTheNameStored) {
  DerivedSourceDependency known = Known("axle", "D1");
  known.asStoredChildName = "bolt";
  transport.Then(200, Child("bolt"));
  const auto list = MergeDependencyMap(Begin(connection), {{"bolt", "D1"}}, {known});
  EXPECT_THAT(transport.lines(), ElementsAre(DocumentLine("D1")));
  EXPECT_FALSE(list[0].isDirect);
}

TEST_F(Dependencies, AreTriedOneAfterTheOtherAndThenMadeAnew) {
  transport.Then(404).Then(404).Then(200, Child("axle"));
  const DependencyList known{Known("axle", "D1"), Known("axle", "D2"), Known("bolt", "D7")};
  const auto list = MergeDependencyMap(Begin(connection), {{"axle", "D7"}}, known);
  EXPECT_THAT(transport.lines(), ElementsAre(DocumentLine("D7"), DocumentLine("D7"), DocumentLine("D7")));
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle D7"));
  EXPECT_FALSE(list[0].isDirect);
  EXPECT_FALSE(list[0].isPlaceHolder);
  EXPECT_TRUE(list[0].hasCompleteDependencies);
}

TEST_F(Dependencies, TakeTheSecondOfOneNameWhenThatIsTheChild) {
  transport.Then(404);
  const auto list =
      MergeDependencyMap(Begin(connection), {{"axle", "D2"}}, {Known("axle", "D1"), Known("axle", "D2")});
  EXPECT_THAT(transport.lines(), ElementsAre(DocumentLine("D2")));
  EXPECT_THAT(NamesAndSources(list), ElementsAre("axle D2"));
  EXPECT_TRUE(list[0].isDirect);
}

TEST_F(Dependencies, ThatTheMapDoesNotNameAreDropped) {
  EXPECT_THAT(MergeDependencyMap(Begin(connection), {}, {Known("axle", "D1")}), IsEmpty());
  transport.Then(404).Then(404);
  EXPECT_THAT(
      MergeDependencyMap(Begin(connection), {{"axle", "D9"}}, {Known("axle", "D1"), Known("bolt", "D2")}),
      IsEmpty());
}

}  // namespace
}  // namespace vtdirect_test
