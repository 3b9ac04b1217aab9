#include "browsing/directory_listing.h"

#include <cstdlib>

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;

constexpr const char* gadget =
    R"({"items":[{"id":"OR:vn.Example:77","attributes":{"name":"Gadget","organizationReference.name":"Acme"}}]})";
constexpr const char* containers = R"({"value":[{"ID":"C100","Name":"Gadget"}]})";
constexpr const char* expanded =
    R"({"value":[{"ID":"C100","Folders":[{"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub"}]}]}]})";
constexpr const char* noFolders = R"({"value":[]})";
constexpr const char* subfolders = R"({"value":[{"Name":"Inner"}]})";
constexpr const char* documents = R"({"value":[{"CADName":"a|b","ID":"D1","Name":"Gear","Number":"0042"}]})";
constexpr const char* gatewayContent = R"({"folderContent":["x/folders?path=Sub/Inner","x/doc.lxz"]})";
constexpr const char* workspaces =
    R"([{"id":"W0","name":"FenloomTMP0a1b2c3d"},{"id":"W1","name":"mine"},{"id":"W2","name":"mine"}])";

class Listing : public BrowsingTest {
 protected:
  bool List(const std::string& path, unsigned bits = 3) {
    return server->ReadDirExt(path.c_str(), Collect(), Bits(bits));
  }
  static SentRequest Contexts() { return Rest("servlet/rest/v1/contexts?type=Product"); }
  static SentRequest Gateway(const std::string& query) {
    return Rest("servlet/rest/snx_gw/organizations/Acme/vn.Example/Gadget/folders" + query);
  }
  static SentRequest Expand(int levels) {
    return OData(
        "servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?$expand=Folders($levels=" +
        std::to_string(levels) + ";$select=ID,Name)&$select=ID&$filter=Name%20eq%20%27Gadget%27");
  }
  static SentRequest Subfolders() {
    return OData(
        "servlet/odata/v1/DataAdmin/Containers('C100')/Folders('F1')/Folders('F2')/Folders?$select=Name");
  }
  static SentRequest Documents(const std::string& version, const std::string& query) {
    return OData("servlet/odata/" + version +
                 "/DataAdmin/Containers('C100')/Folders('F1')/Folders('F2')/FolderContents/"
                 "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID" +
                 query);
  }
  static SentRequest Workspaces(const std::string& contextId) {
    return Rest("servlet/rest/v1/dkm/workspaces?contextId=" + contextId);
  }
};

TEST_F(Listing, TheRootHasFourDirectoriesAndNeedsNoServer) {
  EXPECT_TRUE(List("", 2));
  EXPECT_THAT(entries,
              ElementsAre("dir Products id=", "dir Libraries id=", "dir Projects id=", "dir Sites id="));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Listing, TheRootHasNoFiles) {
  EXPECT_TRUE(List("", 1));
  EXPECT_TRUE(List("", 0));
  EXPECT_THAT(entries, IsEmpty());
}

TEST_F(Listing, ALevelCountsOnlyWhenASlashClosesIt) {
  EXPECT_FALSE(List("Products"));
  EXPECT_THAT(transport.requests(), IsEmpty());
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, gadget);
  EXPECT_TRUE(List("Products/"));
  EXPECT_TRUE(List("Products/Gadget"));
  EXPECT_THAT(entries, ElementsAre("dir Gadget id=OR:vn.Example:77", "dir Gadget id=OR:vn.Example:77"));
  EXPECT_EQ(transport.requests(), Joined({ServiceRequests(), {Contexts(), Contexts()}}));
}

TEST_F(Listing, AnUnknownRootIsNoDirectory) {
  for (const char* path :
       {"Nowhere/", "products/", "Organizations/", "/", "//x/", "Nowhere/Gadget/Folders/"}) {
    EXPECT_FALSE(List(path)) << path;
  }
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Listing, EveryRootListsTheContextsOfItsKind) {
  ScriptServices(Generation::Rest);
  for (int kind = 0; kind < 4; ++kind) transport.Then(200, R"({"items":[]})");
  for (const char* path : {"Products/", "Libraries/", "Projects/", "Sites/"}) EXPECT_TRUE(List(path)) << path;
  EXPECT_EQ(
      transport.requests(),
      Joined({ServiceRequests(),
              {Rest("servlet/rest/v1/contexts?type=Product"), Rest("servlet/rest/v1/contexts?type=Library"),
               Rest("servlet/rest/v1/contexts?type=Project"), Rest("servlet/rest/v1/contexts?type=Site")}}));
}

TEST_F(Listing, ContextsComeByODataFromAServerOfVersion5) {
  ScriptServices(Generation::Schema5);
  transport.Then(200, containers);
  EXPECT_TRUE(List("Sites/"));
  EXPECT_THAT(entries, ElementsAre("dir Gadget id=C100"));
  EXPECT_EQ(transport.requests(),
            Joined({ServiceRequests(),
                    {OData("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.Site?$select=ID,Name")}}));
}

TEST_F(Listing, ContextsWithoutTheBitForDirectoriesAskOnlyWhatTheServerHas) {
  ScriptServices(Generation::Rest);
  EXPECT_TRUE(List("Products/", 1));
  EXPECT_EQ(transport.requests(), ServiceRequests());
}

TEST_F(Listing, AContextHasTwoSectionsAndNeedsNoServer) {
  EXPECT_TRUE(List("Products/Gadget/"));
  EXPECT_TRUE(List("Products/Gadget/", 1));
  EXPECT_THAT(entries, ElementsAre("dir Folders id=", "dir Workspaces id="));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Listing, AnyOtherSectionIsNoDirectory) {
  for (const char* path :
       {"Products/Gadget/Else", "Products/Gadget/folders/", "Products/Gadget/Products/x/"}) {
    EXPECT_FALSE(List(path)) << path;
  }
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Listing, FoldersComeByTheGatewayWithoutFolderContents) {
  for (const Generation generation : {Generation::Rest, Generation::Schema3}) {
    SetUpServer();
    transport.ClearRequests();
    entries.clear();
    ScriptServices(generation);
    transport.Then(200, gadget).Then(200, gatewayContent);
    EXPECT_TRUE(List("Products/Gadget/Folders/Sub/"));
    EXPECT_THAT(entries, ElementsAre("dir Inner", "file doc.lxz"));
    EXPECT_EQ(transport.requests(), Joined({ServiceRequests(), {Contexts(), Gateway("?path=Sub%2F")}}));
  }
}

TEST_F(Listing, TheGatewayHonoursTheBits) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, gatewayContent).Then(200, gadget).Then(200, gatewayContent);
  EXPECT_TRUE(List("Products/Gadget/Folders", 1));
  EXPECT_TRUE(List("Products/Gadget/Folders/", 2));
  EXPECT_THAT(entries, ElementsAre("file doc.lxz", "dir Inner"));
  EXPECT_EQ(transport.requests(),
            Joined({ServiceRequests(), {Contexts(), Gateway(""), Contexts(), Gateway("")}}));
}

TEST_F(Listing, FoldersComeByODataInVersion4) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded).Then(200, subfolders).Then(200, documents);
  EXPECT_TRUE(List("Products/Gadget/Folders/Sub/", 15));
  EXPECT_THAT(entries, ElementsAre("dir Inner id=", "file a%7cb id=D1 (0042,Gear)"));
  EXPECT_EQ(
      transport.requests(),
      Joined({ServiceRequests(),
              {Expand(2), Subfolders(), Documents("v4", ",Version,Name,Number&$orderby=Version desc")}}));
}

TEST_F(Listing, FoldersComeByODataInVersion5WithVersions) {
  ScriptServices(Generation::Schema5);
  transport.Then(200, expanded).Then(200, subfolders).Then(200, documents);
  EXPECT_TRUE(List("Products/Gadget/Folders/Sub/", 11));
  EXPECT_THAT(entries, ElementsAre("dir Inner id=", "file a%7cb id=D1 versions="));
  EXPECT_EQ(transport.requests(),
            Joined({ServiceRequests(),
                    {Expand(2), Subfolders(),
                     Documents("v5", "&$expand=Versions($select=Version,ID)&$orderby=Version desc")}}));
}

TEST_F(Listing, ODataDeliversFoldersAndFilesWhateverIsAsked) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded).Then(200, subfolders).Then(200, documents);
  EXPECT_TRUE(List("Products/Gadget/Folders/Sub/", 0));
  EXPECT_THAT(entries, ElementsAre("dir Inner id=", "file a%7cb id=D1"));
}

TEST_F(Listing, AFolderThatODataDoesNotKnowComesByTheGateway) {
  for (const char* answer : {noFolders, expanded, "{"}) {
    SetUpServer();
    transport.ClearRequests();
    entries.clear();
    ScriptServices(Generation::Schema5);
    transport.Then(200, answer).Then(200, gadget).Then(200, gatewayContent);
    EXPECT_TRUE(List("Products/Gadget/Folders/Sub/Nowhere/"));
    EXPECT_THAT(entries, ElementsAre("dir Inner", "file doc.lxz"));
    EXPECT_EQ(transport.requests(),
              Joined({ServiceRequests(), {Expand(3), Contexts(), Gateway("?path=Sub%2FNowhere%2F")}}));
  }
}

TEST_F(Listing, AFailedODataListingDoesNotFallBack) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded).Then(200, subfolders).Then(500);
  EXPECT_FALSE(List("Products/Gadget/Folders/Sub/"));
  EXPECT_THAT(entries, ElementsAre("dir Inner id="));
}

TEST_F(Listing, ForcedLegacyBrowsingDoesNotEvenAskWhatTheServerHas) {
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  transport.Then(200, gadget).Then(200, gatewayContent);
  EXPECT_TRUE(List("Products/Gadget/Folders/Sub/"));
  EXPECT_THAT(entries, ElementsAre("dir Inner", "file doc.lxz"));
  EXPECT_EQ(transport.requests(), (Requests{Contexts(), Gateway("?path=Sub%2F")}));
}

TEST_F(Listing, AServerThatCouldNotBeAskedIsAskedAgainAtTheNextListing) {
  transport.Then(503).Then(200, gadget).Then(200, gatewayContent);
  EXPECT_TRUE(List("Products/Gadget/Folders/Sub/"));
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded).Then(200, subfolders).Then(200, documents);
  EXPECT_TRUE(List("Products/Gadget/Folders/Sub/"));
  EXPECT_EQ(transport.requests().size(), 1U + 2U + 3U + 3U);
}

TEST_F(Listing, WorkspacesComeByTheContextsIdOfTheRestServices) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, gadget).Then(200, workspaces);
  EXPECT_TRUE(List("Products/Gadget/Workspaces/"));
  EXPECT_THAT(entries, ElementsAre("dir mine id=", "dir mine id="));
  EXPECT_EQ(transport.requests(),
            Joined({ServiceRequests(), {Contexts(), Workspaces("OR%3Avn.Example%3A77")}}));
}

TEST_F(Listing, WorkspacesComeByTheContainersIdInVersion5) {
  ScriptServices(Generation::Schema5);
  transport.Then(200, containers).Then(200, workspaces);
  EXPECT_TRUE(List("Products/Gadget/Workspaces"));
  EXPECT_EQ(transport.requests(),
            Joined({ServiceRequests(),
                    {OData("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer"
                           "?$select=ID&$filter=Name%20eq%20%27Gadget%27"),
                     Workspaces("C100")}}));
}

TEST_F(Listing, WorkspacesWithoutTheBitForDirectoriesAreNotAskedFor) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget);
  EXPECT_TRUE(List("Products/Gadget/Workspaces/", 1));
  EXPECT_EQ(transport.requests(), Joined({ServiceRequests(), {Contexts()}}));
}

TEST_F(Listing, WorkspacesOfAnUnknownContextAreAFailure) {
  ScriptServices(Generation::Rest);
  transport.Then(200, R"({"items":[]})").Then(200, gadget).Then(500);
  EXPECT_FALSE(List("Products/Gadget/Workspaces/"));
  EXPECT_FALSE(List("Products/Gadget/Workspaces/"));
}

TEST_F(Listing, AWorkspaceListsItsDocuments) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget)
      .Then(200, workspaces)
      .Then(200, R"([{"id":"D1","epmMaster":{"cadName":"a|b"}},7])");
  EXPECT_TRUE(List("Products/Gadget/Workspaces/mine/"));
  EXPECT_THAT(entries, ElementsAre("file a%7cb id=", "file  id="));
  EXPECT_EQ(transport.requests(), Joined({ServiceRequests(),
                                          {Contexts(), Workspaces("OR%3Avn.Example%3A77"),
                                           Rest("servlet/rest/v1/dkm/workspaces/W1/documents")}}));
}

TEST_F(Listing, ATemporaryWorkspaceIsHiddenAndCanBeListedByItsName) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, workspaces).Then(200, "[]");
  EXPECT_TRUE(List("Products/Gadget/Workspaces/FenloomTMP0a1b2c3d"));
  EXPECT_EQ(transport.requests().back(), Rest("servlet/rest/v1/dkm/workspaces/W0/documents"));
}

TEST_F(Listing, AnUnknownWorkspaceIsNoDirectory) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, workspaces).Then(200, gadget).Then(500);
  EXPECT_FALSE(List("Products/Gadget/Workspaces/yours/"));
  EXPECT_FALSE(List("Products/Gadget/Workspaces/mine/"));
}

TEST_F(Listing, AWorkspaceWithoutTheBitForFilesIsFoundAndNotListed) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, workspaces).Then(200, gadget).Then(200, workspaces).Then(500);
  EXPECT_TRUE(List("Products/Gadget/Workspaces/mine/", 2));
  EXPECT_FALSE(List("Products/Gadget/Workspaces/mine/", 1));
}

TEST_F(Listing, ThePlainFormForwardsNameIdAndKindOfFilesAndDirectories) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded).Then(200, subfolders).Then(200, documents);
  const auto collect = [this](const char* name, const char* id, bool isDirectory) {
    entries.push_back(std::string(name) + " " + id + (isDirectory ? " dir" : " file"));
  };
  EXPECT_TRUE(server->ReadDir("Products/Gadget/Folders/Sub/", collect));
  EXPECT_THAT(entries, ElementsAre("Inner  dir", "a%7cb D1 file"));
  EXPECT_EQ(transport.requests().back(), Documents("v4", ""));
  EXPECT_FALSE(server->ReadDir("Nowhere/", collect));
}

}  // namespace
}  // namespace vtdirect_test
