#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

const std::string dynamicSchema1 =
    "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=CADName%20eq%20'";
const std::string dynamicSchema2 =
    "/servlet/odata/v2/DynamicDocMgmt/DynamicDocuments?$filter=CADName%20eq%20'";
const std::string cadSchema1 = "/servlet/odata/v1/CADDocumentMgmt/CADDocuments?$filter=FileName%20eq%20'";
const std::string newestFirstRest = "'&$orderby=Version%20desc&$select=ID,Version,CheckOutStatus";
const std::string latestOnlyRest = newestFirstRest + "&zvk.search.latestversion=true";

TEST_F(SimulatorTest, SecondSearchGivesTheLatestVersionOfEachDocumentOfThatName) {
  EXPECT_EQ(Column(dynamicSchema2 + "gear.lxz" + latestOnlyRest, "ID"), (Texts{"D1003", "D1013"}));
  EXPECT_EQ(Column(dynamicSchema2 + "gear.lxz" + latestOnlyRest, "CheckOutStatus"), (Texts{"", ""}));
  EXPECT_EQ(Column(dynamicSchema2 + "nothing.lxz" + latestOnlyRest, "ID"), Texts{});
}

TEST_F(SimulatorTest, SearchWithoutTheLatestSwitchGivesEveryVersionNewestFirst) {
  EXPECT_EQ(Column(dynamicSchema1 + "gear.lxz" + newestFirstRest, "Version"),
            (Texts{"B.2", "B.1", "A.2", "A.1", "A.1"}));
  EXPECT_EQ(Column(dynamicSchema2 + "gear.lxz" + newestFirstRest, "Version").size(), 5U);
  EXPECT_EQ(Get(dynamicSchema1 + "gear.lxz" + latestOnlyRest).status, 400);
}

TEST_F(SimulatorTest, SearchForCadDocumentsFindsThemByFileName) {
  EXPECT_EQ(Column(cadSchema1 + "handlebar.asm" + latestOnlyRest, "ID"), Texts{"D1012"});
  EXPECT_EQ(Column(cadSchema1 + "gear.lxz" + latestOnlyRest, "ID"), Texts{});
  EXPECT_EQ(Column(dynamicSchema2 + "handlebar.asm" + latestOnlyRest, "ID"), Texts{});
}

TEST_F(SimulatorTest, SearchShowsOnesOwnWorkingCopyInPlaceOfTheDocument) {
  EXPECT_EQ(Column(dynamicSchema2 + "crank.lxz" + latestOnlyRest, "ID", "anna"), Texts{"D1026"});
  EXPECT_EQ(Column(dynamicSchema2 + "crank.lxz" + latestOnlyRest, "ID", "bruno"), Texts{"D1016"});
  EXPECT_EQ(Column(dynamicSchema2 + "crank.lxz" + latestOnlyRest, "CheckOutStatus", "bruno"),
            Texts{"Checked out by anna"});
  EXPECT_EQ(Column(dynamicSchema1 + "crank.lxz" + newestFirstRest, "ID", "anna"), (Texts{"D1016", "D1026"}));
  EXPECT_EQ(Column(dynamicSchema1 + "crank.lxz" + newestFirstRest, "ID", "bruno"), Texts{"D1016"});
}

TEST_F(SimulatorTest, SearchShowsWhatWasNeverCheckedInToItsOwnerAlone) {
  EXPECT_EQ(Column(dynamicSchema2 + "saddle.lxz" + latestOnlyRest, "ID", "anna"), Texts{"D1017"});
  EXPECT_EQ(Column(dynamicSchema2 + "saddle.lxz" + latestOnlyRest, "ID", "bruno"), Texts{});
}

TEST_F(SimulatorTest, SearchExpandsVersionsWhereTheServiceKnowsThem) {
  const auto rows =
      GetJson(dynamicSchema2 + "gear.lxz'&zvk.search.latestversion=true&$expand=Versions($select=Version)");
  EXPECT_EQ(rows["value"][0]["Versions"].Size(), 4U);
  EXPECT_EQ(Get(dynamicSchema1 + "gear.lxz'&$expand=Versions").status, 400);
  EXPECT_EQ(Get(dynamicSchema2 + "gear.lxz'&$expand=Folders").status, 400);
}

TEST_F(SimulatorTest, EachGenerationOffersItsSearches) {
  const struct {
    Generation generation;
    int first;
    int second;
    int cad;
  } cases[] = {{Generation::Gateway, 404, 404, 404},
               {Generation::Schema1, 200, 404, 200},
               {Generation::Schema4, 200, 200, 200},
               {Generation::Schema5, 200, 200, 200}};
  for (const auto& [generation, first, second, cad] : cases) {
    simulator_.reset();
    options_.generation = generation;
    EXPECT_EQ(Get(dynamicSchema1 + "gear.lxz" + newestFirstRest).status, first) << WordOf(generation);
    EXPECT_EQ(Get(dynamicSchema2 + "gear.lxz" + latestOnlyRest).status, second) << WordOf(generation);
    EXPECT_EQ(Get(cadSchema1 + "handlebar.asm" + latestOnlyRest).status, cad) << WordOf(generation);
    EXPECT_EQ(Get("/servlet/odata/v3/DynamicDocMgmt/DynamicDocuments").status, 404) << WordOf(generation);
  }
}

}  // namespace
}  // namespace vantry_sim
