#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

const std::string kFirst = "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=CADName%20eq%20'";
const std::string kSecond = "/servlet/odata/v2/DynamicDocMgmt/DynamicDocuments?$filter=CADName%20eq%20'";
const std::string kCad = "/servlet/odata/v1/CADDocumentMgmt/CADDocuments?$filter=FileName%20eq%20'";
const std::string kRest = "'&$orderby=Version%20desc&$select=ID,Version,CheckOutStatus";
const std::string kLatest = kRest + "&zvk.search.latestversion=true";

TEST_F(SimulatorTest, SecondSearchGivesTheLatestVersionOfEachDocumentOfThatName) {
  EXPECT_EQ(Column(kSecond + "gear.lxz" + kLatest, "ID"), (Texts{"D1003", "D1013"}));
  EXPECT_EQ(Column(kSecond + "gear.lxz" + kLatest, "CheckOutStatus"), (Texts{"", ""}));
  EXPECT_EQ(Column(kSecond + "nothing.lxz" + kLatest, "ID"), Texts{});
}

TEST_F(SimulatorTest, SearchWithoutTheLatestSwitchGivesEveryVersionNewestFirst) {
  EXPECT_EQ(Column(kFirst + "gear.lxz" + kRest, "Version"), (Texts{"B.2", "B.1", "A.2", "A.1", "A.1"}));
  EXPECT_EQ(Column(kSecond + "gear.lxz" + kRest, "Version").size(), 5U);
  EXPECT_EQ(Get(kFirst + "gear.lxz" + kLatest).status, 400);
}

TEST_F(SimulatorTest, SearchForCadDocumentsFindsThemByFileName) {
  EXPECT_EQ(Column(kCad + "handlebar.asm" + kLatest, "ID"), Texts{"D1012"});
  EXPECT_EQ(Column(kCad + "gear.lxz" + kLatest, "ID"), Texts{});
  EXPECT_EQ(Column(kSecond + "handlebar.asm" + kLatest, "ID"), Texts{});
}

TEST_F(SimulatorTest, SearchShowsOnesOwnWorkingCopyInPlaceOfTheDocument) {
  EXPECT_EQ(Column(kSecond + "crank.lxz" + kLatest, "ID", "anna"), Texts{"D1026"});
  EXPECT_EQ(Column(kSecond + "crank.lxz" + kLatest, "ID", "bruno"), Texts{"D1016"});
  EXPECT_EQ(Column(kSecond + "crank.lxz" + kLatest, "CheckOutStatus", "bruno"), Texts{"Checked out by anna"});
  EXPECT_EQ(Column(kFirst + "crank.lxz" + kRest, "ID", "anna"), (Texts{"D1016", "D1026"}));
  EXPECT_EQ(Column(kFirst + "crank.lxz" + kRest, "ID", "bruno"), Texts{"D1016"});
}

TEST_F(SimulatorTest, SearchShowsWhatWasNeverCheckedInToItsOwnerAlone) {
  EXPECT_EQ(Column(kSecond + "saddle.lxz" + kLatest, "ID", "anna"), Texts{"D1017"});
  EXPECT_EQ(Column(kSecond + "saddle.lxz" + kLatest, "ID", "bruno"), Texts{});
}

TEST_F(SimulatorTest, SearchExpandsVersionsWhereTheServiceKnowsThem) {
  const auto rows =
      GetJson(kSecond + "gear.lxz'&zvk.search.latestversion=true&$expand=Versions($select=Version)");
  EXPECT_EQ(rows["value"][0]["Versions"].Size(), 4U);
  EXPECT_EQ(Get(kFirst + "gear.lxz'&$expand=Versions").status, 400);
  EXPECT_EQ(Get(kSecond + "gear.lxz'&$expand=Folders").status, 400);
}

TEST_F(SimulatorTest, EachGenerationOffersItsSearches) {
  const struct {
    Generation generation;
    int first;
    int second;
    int cad;
  } cases[] = {{Generation::kGateway, 404, 404, 404},
               {Generation::kSchema1, 200, 404, 200},
               {Generation::kSchema4, 200, 200, 200},
               {Generation::kSchema5, 200, 200, 200}};
  for (const auto& [generation, first, second, cad] : cases) {
    simulator_.reset();
    options_.generation = generation;
    EXPECT_EQ(Get(kFirst + "gear.lxz" + kRest).status, first) << WordOf(generation);
    EXPECT_EQ(Get(kSecond + "gear.lxz" + kLatest).status, second) << WordOf(generation);
    EXPECT_EQ(Get(kCad + "handlebar.asm" + kLatest).status, cad) << WordOf(generation);
    EXPECT_EQ(Get("/servlet/odata/v3/DynamicDocMgmt/DynamicDocuments").status, 404) << WordOf(generation);
  }
}

}  // namespace
}  // namespace vantry_sim
