#include "browsing/folder_contents.h"

#include "base/settings.h"
#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;

constexpr const char* folder = "Containers('C100')/Folders('F1')";
constexpr const char* empty = R"({"value":[]})";
const std::string subfolders =
    "servlet/odata/v1/DataAdmin/Containers('C100')/Folders('F1')/Folders?$select=Name";
const std::string dynamicV4 =
    "servlet/odata/v4/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
    "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID";
const std::string dynamicV5 =
    "servlet/odata/v5/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
    "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID";
const std::string cad =
    "servlet/odata/v4/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
    "ZVK.CADDocumentMgmt.CADDocument?$select=FileName,ID";
const std::string details = ",Version,Name,Number";
const std::string expand = "&$expand=Versions($select=Version,ID)";
const std::string order = "&$orderby=Version desc";

class FolderListing : public BrowsingTest {};

TEST_F(FolderListing, SubfoldersAreDeliveredRaw) {
  transport.Then(200, R"({"value":[{"Name":"a|b"},{"Name":7},{},null,"x",{"Name":"Sub","ID":"F2"}]})");
  EXPECT_TRUE(ListSubfolders(Begin(connection), folder, Collect()));
  EXPECT_THAT(entries, ElementsAre("dir a|b id=", "dir Sub id="));
  EXPECT_EQ(transport.requests(), Requests{OData(subfolders)});
}

TEST_F(FolderListing, Version4AsksForOrderAndVersionWithDetailsOnly) {
  transport.Then(200, empty).Then(200, empty);
  EXPECT_TRUE(ListDynamicDocuments(Begin(connection), folder, Collect(), false));
  EXPECT_TRUE(ListDynamicDocuments(Begin(connection), folder, Collect(), true));
  EXPECT_EQ(transport.requests(), (Requests{OData(dynamicV4), OData(dynamicV4 + details + order)}));
}

TEST_F(FolderListing, Version5AlwaysAsksForOrder) {
  for (int form = 0; form < 4; ++form) transport.Then(200, empty);
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), false, false));
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), true, false));
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), false, true));
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), true, true));
  EXPECT_EQ(transport.requests(),
            (Requests{OData(dynamicV5 + order), OData(dynamicV5 + details + order),
                      OData(dynamicV5 + expand + order), OData(dynamicV5 + details + expand + order)}));
}

TEST_F(FolderListing, CadDocumentsAreAskedForInVersion4) {
  for (int form = 0; form < 4; ++form) transport.Then(200, empty);
  EXPECT_TRUE(ListCadDocuments(Begin(connection), folder, Collect(), false, false));
  EXPECT_TRUE(ListCadDocuments(Begin(connection), folder, Collect(), true, false));
  EXPECT_TRUE(ListCadDocuments(Begin(connection), folder, Collect(), false, true));
  EXPECT_TRUE(ListCadDocuments(Begin(connection), folder, Collect(), true, true));
  EXPECT_EQ(transport.requests(),
            (Requests{OData(cad + order), OData(cad + details + order), OData(cad + expand + order),
                      OData(cad + details + expand + order)}));
}

TEST_F(FolderListing, TheNameOfADocumentStandsUnderTheKeyOfItsKind) {
  const char* page = R"({"value":[{"CADName":"a","FileName":"b","ID":"D1"}]})";
  transport.Then(200, page).Then(200, page).Then(200, page);
  EXPECT_TRUE(ListDynamicDocuments(Begin(connection), folder, Collect(), false));
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), false, false));
  EXPECT_TRUE(ListCadDocuments(Begin(connection), folder, Collect(), false, false));
  EXPECT_THAT(entries, ElementsAre("file a id=D1", "file a id=D1", "file b id=D1"));
}

TEST_F(FolderListing, DetailsAndVersionsComeWithTheRowsTheyWereAskedFor) {
  const char* page =
      R"({"value":[{"CADName":"a|b","FileName":"c","ID":"D2","Version":"A.2","Name":"Gear","Number":"0042",
                    "Versions":[{"Version":"A.1","ID":"D1"},{"Version":"A.2","ID":"D2"},
                                {"Version":"A.2","ID":"D9"}]}]})";
  for (int form = 0; form < 4; ++form) transport.Then(200, page);
  EXPECT_TRUE(ListDynamicDocuments(Begin(connection), folder, Collect(), true));
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), true, true));
  EXPECT_TRUE(ListDynamicDocumentsV5(Begin(connection), folder, Collect(), false, true));
  EXPECT_TRUE(ListCadDocuments(Begin(connection), folder, Collect(), true, true));
  EXPECT_THAT(entries, ElementsAre("file a%7cb id=D2 (0042,Gear)",
                                   "file a%7cb id=D2 (0042,Gear) versions=A.2:D9,A.1:D1",
                                   "file a%7cb id=D2 versions=A.2:D9,A.1:D1",
                                   "file c id=D2 (0042,Gear) versions=A.2:D9,A.1:D1"));
}

TEST_F(FolderListing, FoldersComeFirstThenDynamicDocumentsThenCadDocuments) {
  SetBrowseCadDocuments("true");
  transport.Then(200, R"({"value":[{"Name":"Sub"}]})")
      .Then(200, R"({"value":[{"CADName":"d","ID":"D1"}]})")
      .Then(200, R"({"value":[{"FileName":"c","ID":"D2"}]})");
  EXPECT_TRUE(ListODataFolder(Begin(connection), folder, Collect(), false));
  EXPECT_THAT(entries, ElementsAre("dir Sub id=", "file d id=D1", "file c id=D2"));
  EXPECT_EQ(transport.requests(), (Requests{OData(subfolders), OData(dynamicV4), OData(cad + order)}));
}

TEST_F(FolderListing, Version4NeverAsksForVersions) {
  SetBrowseCadDocuments("true");
  transport.Then(200, empty).Then(200, empty).Then(200, empty);
  EXPECT_TRUE(ListODataFolder(Begin(connection), folder, Collect(), true));
  EXPECT_EQ(transport.requests(),
            (Requests{OData(subfolders), OData(dynamicV4 + details + order), OData(cad + details + order)}));
}

TEST_F(FolderListing, Version5AsksForVersionsOfBothKinds) {
  SetBrowseCadDocuments("true");
  transport.Then(200, empty).Then(200, empty).Then(200, empty);
  EXPECT_TRUE(ListODataFolderV5(Begin(connection), folder, Collect(), true, true));
  EXPECT_EQ(transport.requests(), (Requests{OData(subfolders), OData(dynamicV5 + details + expand + order),
                                            OData(cad + details + expand + order)}));
}

TEST_F(FolderListing, DynamicDocumentsAloneAreTheDefault) {
  transport.Then(200, empty).Then(200, empty).Then(200, empty).Then(200, empty);
  EXPECT_TRUE(ListODataFolder(Begin(connection), folder, Collect(), false));
  EXPECT_TRUE(ListODataFolderV5(Begin(connection), folder, Collect(), false, false));
  EXPECT_EQ(transport.requests(),
            (Requests{OData(subfolders), OData(dynamicV4), OData(subfolders), OData(dynamicV5 + order)}));
}

TEST_F(FolderListing, CadDocumentsAloneWhenTheSettingsSaySo) {
  SetBrowseDynamicDocuments("false");
  SetBrowseCadDocuments("1");
  transport.Then(200, empty).Then(200, empty).Then(200, empty).Then(500);
  EXPECT_TRUE(ListODataFolder(Begin(connection), folder, Collect(), false));
  EXPECT_FALSE(ListODataFolderV5(Begin(connection), folder, Collect(), false, false));
  EXPECT_EQ(transport.requests(),
            (Requests{OData(subfolders), OData(cad + order), OData(subfolders), OData(cad + order)}));
}

TEST_F(FolderListing, FoldersAloneWithBothSettingsOff) {
  SetBrowseDynamicDocuments("false");
  transport.Then(200, R"({"value":[{"Name":"Sub"}]})").Then(200, empty);
  EXPECT_TRUE(ListODataFolder(Begin(connection), folder, Collect(), false));
  EXPECT_TRUE(ListODataFolderV5(Begin(connection), folder, Collect(), true, true));
  EXPECT_THAT(entries, ElementsAre("dir Sub id="));
  EXPECT_EQ(transport.requests(), (Requests{OData(subfolders), OData(subfolders)}));
}

TEST_F(FolderListing, FailedFoldersEndTheListing) {
  transport.Then(500).Then(200, "{");
  EXPECT_FALSE(ListODataFolder(Begin(connection), folder, Collect(), false));
  EXPECT_FALSE(ListODataFolderV5(Begin(connection), folder, Collect(), false, false));
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(FolderListing, FailedDynamicDocumentsEndTheListing) {
  SetBrowseCadDocuments("true");
  transport.Then(200, R"({"value":[{"Name":"Sub"}]})").Then(500).Then(200, empty).Then(500);
  EXPECT_FALSE(ListODataFolder(Begin(connection), folder, Collect(), false));
  EXPECT_FALSE(ListODataFolderV5(Begin(connection), folder, Collect(), false, false));
  EXPECT_THAT(entries, ElementsAre("dir Sub id="));
  EXPECT_EQ(transport.requests().size(), 4U);
}

}  // namespace
}  // namespace vtdirect_test
