#include "simulator_fixture.h"

namespace vantry_sim {
namespace {

using Texts = std::vector<std::string>;

const std::string schema1Path = "/servlet/odata/v1/DataAdmin/";
const std::string schema4Path = "/servlet/odata/v4/DataAdmin/";
const std::string schema5Path = "/servlet/odata/v5/DataAdmin/";
const std::string trekkingContext = "Containers('OR:vn.product.Product:101')";
const std::string defaultCabinet = trekkingContext + "/Folders('OR:vn.folder.Cabinet:201')";
const std::string drivetrainFolder = defaultCabinet + "/Folders('OR:vn.folder.SubFolder:212')";
const std::string chains = drivetrainFolder + "/Folders('OR:vn.folder.SubFolder:213')";
const std::string dynamicContents = "/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument";
const std::string cadContents = "/FolderContents/ZVK.CADDocumentMgmt.CADDocument";

TEST_F(SimulatorTest, ContainersAreListedByTheirType) {
  const auto names = [this](const std::string& type) {
    return Column(schema5Path + "Containers/ZVK.DataAdmin." + type + "?$select=ID,Name", "Name");
  };
  EXPECT_EQ(names("ProductContainer"), (Texts{"Lastenrad Größe L", "Trekking Bike"}));
  EXPECT_EQ(names("LibraryContainer"), (Texts{"Materials", "Standard Parts"}));
  EXPECT_EQ(names("ProjectContainer"), (Texts{"Spring Launch", "Umrüstung Nabendynamo"}));
  EXPECT_EQ(names("Site"), (Texts{"Werk Nord", "Werk Süd"}));
  EXPECT_EQ(names("OrganizationContainer"), (Texts{"Kettenblitz"}));
  EXPECT_EQ(Column(schema5Path + "Containers", "Name").size(), 9U);
  EXPECT_EQ(Get(schema5Path + "Containers/ZVK.DataAdmin.Unknown").status, 404);
}

TEST_F(SimulatorTest, ContainerIsFoundByNameWithinItsType) {
  const std::string byName = "?$select=ID&$filter=Name%20eq%20%27Trekking%20Bike%27";
  EXPECT_EQ(Column(schema5Path + "Containers/ZVK.DataAdmin.ProductContainer" + byName, "ID"),
            Texts{"OR:vn.product.Product:101"});
  EXPECT_EQ(Column(schema5Path + "Containers/ZVK.DataAdmin.Site" + byName, "ID"), Texts{});
  EXPECT_EQ(Column(schema5Path + "Containers" + byName, "Name"), Texts{"(missing)"});
}

TEST_F(SimulatorTest, ExpandGivesAsManyLevelsOfFoldersAsAsked) {
  const auto tree =
      GetJson(schema1Path +
              "Containers/ZVK.DataAdmin.ProductContainer?$expand=Folders($levels=2;$select=ID,Name)"
              "&$select=ID&$filter=Name%20eq%20'Trekking%20Bike'");
  ASSERT_EQ(tree["value"].Size(), 1U);
  const auto& roots = tree["value"][0]["Folders"];
  ASSERT_EQ(roots.Size(), 2U);
  EXPECT_STREQ(roots[0]["Name"].GetString(), "Default");
  EXPECT_STREQ(roots[0]["ID"].GetString(), "OR:vn.folder.Cabinet:201");
  EXPECT_STREQ(roots[1]["Name"].GetString(), "Workshop");
  const auto& below = roots[0]["Folders"];
  ASSERT_EQ(below.Size(), 6U);
  EXPECT_STREQ(below[0]["Name"].GetString(), "Drivetrain");
  EXPECT_FALSE(below[0].HasMember("Folders"));
  EXPECT_FALSE(below[0].HasMember("Location"));
}

TEST_F(SimulatorTest, ExpandOfTheDeepestLevelGivesTheWholeTree) {
  const auto tree = GetJson(schema1Path + trekkingContext +
                            "/Folders?$expand=Folders($levels=max;$select=Name)&$select=Name");
  const auto& drivetrain = tree["value"][0]["Folders"][0];
  EXPECT_STREQ(drivetrain["Name"].GetString(), "Drivetrain");
  ASSERT_EQ(drivetrain["Folders"].Size(), 1U);
  EXPECT_STREQ(drivetrain["Folders"][0]["Name"].GetString(), "Chains");
  EXPECT_EQ(drivetrain["Folders"][0]["Folders"].Size(), 0U);
}

TEST_F(SimulatorTest, FoldersOfAFolderAreListedByName) {
  EXPECT_EQ(Column(schema1Path + defaultCabinet + "/Folders?$select=Name", "Name"),
            (Texts{"Drivetrain", "Frame", "Größen & Maße", "Manuals", "Nothing yet", "Translations"}));
  EXPECT_EQ(Column(schema1Path + trekkingContext + "/Folders?$select=Name", "Name"),
            (Texts{"Default", "Workshop"}));
  EXPECT_EQ(Column(schema1Path + chains + "/Folders?$select=Name", "Name"), Texts{});
  EXPECT_EQ(Column(schema1Path + drivetrainFolder + "/Folders", "Location"),
            Texts{"/Trekking Bike/Drivetrain"});
}

TEST_F(SimulatorTest, FolderChainMustBeTheFoldersOwn) {
  EXPECT_EQ(Get(schema1Path + trekkingContext + "/Folders('OR:vn.folder.SubFolder:212')/Folders").status,
            404);
  EXPECT_EQ(
      Get(schema1Path + "Containers('OR:vn.product.Product:102')/Folders('OR:vn.folder.Cabinet:201')/Folders")
          .status,
      404);
  EXPECT_EQ(Get(schema1Path + "Containers('unknown')/Folders").status, 404);
  EXPECT_EQ(Get(schema1Path + "Containers('OR:vn.product.Product:101')/ZVK.DataAdmin.Site/Folders").status,
            404);
  EXPECT_EQ(
      Get(schema1Path + "Containers('OR:vn.product.Product:101')/ZVK.DataAdmin.ProductContainer/Folders")
          .status,
      200);
}

TEST_F(SimulatorTest, FolderContentsAreTheLatestVersionsNewestFirst) {
  const std::string list = schema5Path + drivetrainFolder + dynamicContents +
                           "?$select=CADName,ID,Version,Name,Number&$orderby=Version%20desc";
  EXPECT_EQ(Column(list, "ID"), (Texts{"D1003", "D1007", "D1006", "D1008", "D1015", "D1016"}));
  EXPECT_EQ(Column(list, "Version"), (Texts{"B.2", "A.2", "A.1", "A.1", "A.1", "A.1"}));
  EXPECT_EQ(Column(list, "CADName").front(), "gear.lxz");
  EXPECT_EQ(Column(list, "Number").front(), "0000100003");
  EXPECT_EQ(Column(list, "Name").front(), "Gear");
  EXPECT_EQ(Column(list, "LastModified").front(), "(missing)");
}

TEST_F(SimulatorTest, IterationTenSortsBehindNine) {
  const std::string all =
      "/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=CADName%20eq%20'chain.lxz'";
  EXPECT_EQ(Column(all + "&$orderby=Version%20desc&$top=2", "Version"), (Texts{"A.10", "A.9"}));
  EXPECT_EQ(Column(all + "&$orderby=Version&$top=2", "Version"), (Texts{"A.1", "A.2"}));
}

TEST_F(SimulatorTest, FolderContentsOfTheTwoServicesAreApart) {
  EXPECT_EQ(
      Column(schema4Path + defaultCabinet + cadContents + "?$select=FileName,ID&$orderby=Version%20desc",
             "FileName"),
      Texts{"handlebar.asm"});
  EXPECT_EQ(Column(schema4Path + defaultCabinet + dynamicContents + "?$select=CADName,ID", "CADName"),
            (Texts{"paint shop scan.bin", "empty note.lxz", "no content.lxz"}));
  EXPECT_EQ(Get(schema4Path + defaultCabinet + cadContents + "?$select=CADName").status, 400);
  EXPECT_EQ(Get(schema4Path + defaultCabinet + "/FolderContents/ZVK.Other.Thing").status, 404);
  EXPECT_EQ(Get(schema4Path + defaultCabinet + "/FolderContents").status, 501);
}

TEST_F(SimulatorTest, FolderContentsFindOneNameByFilter) {
  const std::string filter =
      "?$filter=CADName%20eq%20%27gear.lxz%27&$orderby=Version%20desc&$select=CADName,ID,Version&$top=1";
  EXPECT_EQ(Column(schema4Path + drivetrainFolder + dynamicContents + filter, "ID"), Texts{"D1003"});
  EXPECT_EQ(Column(schema4Path + chains + dynamicContents + filter, "ID"), Texts{});
}

TEST_F(SimulatorTest, FilteredContentsFindAnApostropheDoubledOrNot) {
  for (const char* name : {"O'Ring%2012mm.lxz", "O''Ring%2012mm.lxz"}) {
    EXPECT_EQ(
        Column(schema4Path + drivetrainFolder + dynamicContents + "?$filter=CADName%20eq%20'" + name + "'",
               "ID"),
        Texts{"D1008"});
  }
}

TEST_F(SimulatorTest, VersionsComeOldestFirstInTheFifthVersion) {
  const std::string expand =
      "?$select=CADName,ID&$expand=Versions($select=Version,ID)&$orderby=Version%20desc";
  const auto rows = GetJson(schema5Path + drivetrainFolder + dynamicContents + expand);
  const auto& versions = rows["value"][0]["Versions"];
  ASSERT_EQ(versions.Size(), 4U);
  EXPECT_STREQ(versions[0]["Version"].GetString(), "A.1");
  EXPECT_STREQ(versions[0]["ID"].GetString(), "D1103");
  EXPECT_STREQ(versions[3]["Version"].GetString(), "B.2");
  EXPECT_FALSE(versions[0].HasMember("CADName"));
  EXPECT_EQ(Get(schema4Path + drivetrainFolder + dynamicContents + expand).status, 400);
}

TEST_F(SimulatorTest, CadDocumentsTellTheirVersionsInTheFourthVersionToo) {
  const auto rows = GetJson(schema4Path + defaultCabinet + cadContents +
                            "?$select=FileName,ID&$expand=Versions($select=Version,ID)");
  ASSERT_EQ(rows["value"].Size(), 1U);
  EXPECT_STREQ(rows["value"][0]["Versions"][0]["ID"].GetString(), "D1012");
}

TEST_F(SimulatorTest, WorkingCopiesStandInNoFolder) {
  const auto ids = Column(schema5Path + drivetrainFolder + dynamicContents, "ID");
  EXPECT_EQ(std::count(ids.begin(), ids.end(), "D1026"), 0);
  EXPECT_EQ(Column(schema5Path + drivetrainFolder + dynamicContents + "?$filter=CADName%20eq%20'crank.lxz'",
                   "CheckOutStatus", "bruno"),
            Texts{"Checked out by anna"});
}

TEST_F(SimulatorTest, EachGenerationOffersItsVersionsOfDataAdmin) {
  const struct {
    Generation generation;
    char newest;
  } cases[] = {{Generation::Gateway, '0'},
               {Generation::Schema1, '1'},
               {Generation::Schema4, '4'},
               {Generation::Schema5, '5'}};
  for (const auto& [generation, newest] : cases) {
    simulator_.reset();
    options_.generation = generation;
    for (char version = '1'; version <= '6'; ++version) {
      const std::string service = std::string("/servlet/odata/v") + version + "/DataAdmin/";
      EXPECT_EQ(Get(service + "Containers").status, version <= newest ? 200 : 404) << version << newest;
      const bool contents = version <= newest && version >= '4';
      EXPECT_EQ(Get(service + drivetrainFolder + dynamicContents).status, contents ? 200 : 404)
          << version << newest;
    }
  }
}

TEST_F(SimulatorTest, QueryThatRowsCannotAnswerIsRefusedWithAReason) {
  const std::pair<const char*, int> cases[] = {
      {"?$select=Nope", 400},
      {"?$orderby=Nope", 400},
      {"?$filter=Nope%20eq%20'x'", 400},
      {"?$expand=Folders", 400},
      {"?$expand=Versions($select=Nope)", 400},
      {"?zvk.search.latestversion=true", 400},
      {"?$skiptoken=x", 400},
      {"?$skiptoken=1,2,3", 400},
      {"?$skip=1", 501},
      {"?$filter=CADName%20ne%20'x'", 501},
  };
  for (const auto& [query, status] : cases) {
    const Response response = Get(schema5Path + drivetrainFolder + dynamicContents + query);
    EXPECT_EQ(response.status, status) << query;
    rapidjson::Document reason;
    reason.Parse(response.body.c_str());
    EXPECT_STRNE(reason["error"]["message"].GetString(), "") << query;
  }
  EXPECT_EQ(Get(schema1Path + trekkingContext + "/Folders?$orderby=Location").status, 501);
  EXPECT_EQ(Get(schema1Path + "Containers?$expand=Versions").status, 400);
  EXPECT_EQ(Get(schema1Path + "Containers?$expand=Folders($select=Nope)").status, 400);
}

TEST_F(SimulatorTest, TopEndsTheList) {
  const auto none = GetJson(schema5Path + drivetrainFolder + dynamicContents + "?$top=0");
  EXPECT_EQ(none["value"].Size(), 0U);
  EXPECT_FALSE(none.HasMember("@odata.nextLink"));
  EXPECT_EQ(Column(schema5Path + drivetrainFolder + dynamicContents + "?$top=2", "ID"),
            (Texts{"D1003", "D1007"}));
}

}  // namespace
}  // namespace vantry_sim
