#include <cstdlib>
#include <map>

#include "tests/support/wire_words.h"
#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;

constexpr const char* gadget =
    R"({"items":[{"id":"OR:vn.Example:77","attributes":{"name":"Gadget","organizationReference.name":"Acme"}}]})";
constexpr const char* expanded =
    R"({"value":[{"ID":"C100","Folders":[{"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub"}]}]}]})";
constexpr const char* noRows = R"({"value":[]})";
constexpr const char* start = "Products/Gadget/Folders/";
constexpr const char* startResource = "Containers('C100')/Folders('F1')";

class Walking : public BrowsingTest {
 protected:
  using Directory = std::shared_ptr<WalkedDirectory>;

  Directory Begin(Generation generation, const std::string& path = start) {
    ScriptServices(generation);
    transport.Then(200, expanded);
    Directory begun = server->OpenWalk(path.c_str());
    EXPECT_NE(begun, nullptr);
    transport.ClearRequests();
    return begun;
  }

  bool List(const Directory& walked, unsigned bits = 3) {
    const auto collect = [this](const DirEntryInfoExt& entry, const Directory& folder) {
      entries.push_back(EntryText(entry));
      EXPECT_EQ(folder != nullptr, entry.isDirectory);
      if (folder != nullptr) folders[entry.name] = folder;
    };
    entries.clear();
    return walked->List(collect, Bits(bits));
  }

  // The folders of the start, as a server of version 5 gives them, and no document.
  Directory Below(const std::string& rows, const std::string& name) {
    const Directory begun = Begin(Generation::Schema5);
    transport.Then(200, Rows({rows})).Then(200, noRows);
    EXPECT_TRUE(List(begun));
    transport.ClearRequests();
    return folders[name];
  }

  static SentRequest Expand(const std::string& levels) {
    return OData(
        "servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?$expand=Folders($levels=" +
        levels + ";$select=ID,Name)&$select=ID&$filter=Name%20eq%20%27Gadget%27");
  }
  static SentRequest OneLevel(const std::string& resource) {
    return OData("servlet/odata/v1/DataAdmin/" + resource + "/Folders?$select=ID,Name");
  }
  static SentRequest TwoLevels(const std::string& resource) {
    return OData("servlet/odata/v1/DataAdmin/" + resource +
                 "/Folders?$select=ID,Name&$expand=Folders($levels=1;$select=ID,Name)");
  }
  static SentRequest Documents(const std::string& resource, const std::string& what = "") {
    return OData("servlet/odata/v5/DataAdmin/" + resource +
                 "/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID" + what +
                 "&$orderby=Version desc");
  }
  static SentRequest Gateway(const std::string& query) {
    return Rest("servlet/rest/snx_gw/organizations/Acme/vn.Example/Gadget/folders" + query);
  }

  std::map<std::string, Directory> folders;
};

// ---- By OData ----

TEST_F(Walking, BeginsAsADirectoryIsOpened) {
  ScriptServices(Generation::Schema5);
  transport.Then(200, expanded);
  EXPECT_NE(server->OpenWalk("Products/Gadget/Folders/Sub/"), nullptr);
  EXPECT_EQ(transport.requests(), Joined({ServiceRequests(), {Expand("2")}}));
}

TEST_F(Walking, AsksForTwoLevelsOfFoldersAndForDocuments) {
  const Directory begun = Begin(Generation::Schema5);
  transport
      .Then(200, Rows({R"({"ID":"F2","Name":"Sub","Folders":[]},{"ID":"F3","Name":"Ä b","Folders":[]})"}))
      .Then(200, Rows({R"({"CADName":"a","ID":"D1","Name":"Gear","Number":"7",
                          "Versions":[{"Version":"A.1","ID":"D1"}]})"}));
  EXPECT_TRUE(List(begun, 15));
  EXPECT_THAT(entries, ElementsAre("dir Sub id=", "dir Ä b id=", "file a id=D1 (7,Gear) versions=A.1:D1"));
  EXPECT_EQ(
      transport.requests(),
      (Requests{TwoLevels(startResource),
                Documents(startResource, ",Version,Name,Number&$expand=Versions($select=Version,ID)")}));
}

TEST_F(Walking, ListsAFolderWithoutFoldersByOneRequest) {
  const Directory leaf = Below(R"({"ID":"F2","Name":"Sub","Folders":[]})", "Sub");
  transport.Then(200, Rows({R"({"CADName":"a","ID":"D1"})"}));
  EXPECT_TRUE(List(leaf));
  EXPECT_THAT(entries, ElementsAre("file a id=D1"));
  EXPECT_EQ(transport.requests(), Requests{Documents(std::string(startResource) + "/Folders('F2')")});
}

TEST_F(Walking, DeliversTheFoldersThatWereToldBeforeTheDocuments) {
  const Directory sub = Below(R"({"ID":"F2","Name":"Sub","Folders":[{"ID":"F4","Name":"Deep"}]})", "Sub");
  transport.Then(200, Rows({R"({"CADName":"a","ID":"D1"})"}));
  EXPECT_TRUE(List(sub));
  EXPECT_THAT(entries, ElementsAre("dir Deep id=", "file a id=D1"));
  EXPECT_EQ(transport.requests(), Requests{Documents(std::string(startResource) + "/Folders('F2')")});

  transport.ClearRequests();
  transport.Then(200, noRows).Then(200, noRows);
  EXPECT_TRUE(List(folders["Deep"]));
  const std::string deep = std::string(startResource) + "/Folders('F2')/Folders('F4')";
  EXPECT_EQ(transport.requests(), (Requests{TwoLevels(deep), Documents(deep)}));
}

TEST_F(Walking, DeliversTheFoldersThatWereToldOfAFolderWithoutDocuments) {
  const Directory sub = Below(R"({"ID":"F2","Name":"Sub","Folders":[{"ID":"F4","Name":"Deep"}]})", "Sub");
  transport.Then(200, noRows);
  EXPECT_TRUE(List(sub));
  EXPECT_THAT(entries, ElementsAre("dir Deep id="));
}

TEST_F(Walking, AsksForTheFoldersWhenAFolderIsListedAgain) {
  const Directory leaf = Below(R"({"ID":"F2","Name":"Sub","Folders":[]})", "Sub");
  transport.Then(200, noRows);
  EXPECT_TRUE(List(leaf));
  transport.ClearRequests();
  transport.Then(200, Rows({R"({"ID":"F5","Name":"Made since","Folders":[]})"})).Then(200, noRows);
  EXPECT_TRUE(List(leaf));
  EXPECT_THAT(entries, ElementsAre("dir Made since id="));
  const std::string sub = std::string(startResource) + "/Folders('F2')";
  EXPECT_EQ(transport.requests(), (Requests{TwoLevels(sub), Documents(sub)}));
}

TEST_F(Walking, AsksForFoldersThatWereNotToldOrNotAll) {
  const Directory begun = Begin(Generation::Schema5);
  transport
      .Then(200, Rows({R"({"ID":"F2","Name":"Silent"},
                         {"ID":"F3","Name":"Cut","Folders":[],"Folders@odata.nextLink":"https://x/y"})"}))
      .Then(200, noRows);
  EXPECT_TRUE(List(begun));
  for (const std::string name : {"Silent", "Cut"}) {
    transport.ClearRequests();
    transport.Then(200, noRows).Then(200, noRows);
    EXPECT_TRUE(List(folders[name]));
    EXPECT_EQ(transport.requests().size(), 2U) << name;
  }
}

TEST_F(Walking, TakesFoldersOfAllPages) {
  const Directory begun = Begin(Generation::Schema5);
  transport
      .Then(200,
            R"({"value":[{"ID":"F2","Name":"One"}],"@odata.nextLink":"https://plm.example/vt/next?$skip=1"})")
      .Then(200, Rows({R"({"ID":"F3","Name":"Two"},{"ID":"F4"},7)"}))
      .Then(200, noRows);
  EXPECT_TRUE(List(begun));
  EXPECT_THAT(entries, ElementsAre("dir One id=", "dir Two id="));
  EXPECT_EQ(transport.requests()[1], NextPage("https://plm.example", "/vt/next?$skip=1"));
}

TEST_F(Walking, ListsAFolderOfVersion4InVersion4) {
  const Directory begun = Begin(Generation::Schema4);
  transport.Then(200, noRows).Then(200, noRows);
  EXPECT_TRUE(List(begun, 15));
  EXPECT_EQ(transport.requests()[1],
            OData("servlet/odata/v4/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
                  "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID,Version,Name,Number"
                  "&$orderby=Version desc"));
}

TEST_F(Walking, AsksForNothingThatIsNotWanted) {
  const Directory begun = Begin(Generation::Schema5);
  transport.Then(200, Rows({R"({"ID":"F2","Name":"Sub","Folders":[]})"}));
  EXPECT_TRUE(List(begun, 2));
  EXPECT_EQ(transport.requests(), Requests{TwoLevels(startResource)});
  transport.ClearRequests();
  transport.Then(200, Rows({R"({"CADName":"a","ID":"D1"})"}));
  EXPECT_TRUE(List(begun, 1));
  EXPECT_EQ(transport.requests(), Requests{Documents(startResource)});
  transport.ClearRequests();
  EXPECT_TRUE(List(folders["Sub"], 2));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Walking, LooksAFolderWithoutAnIdUpByItsPath) {
  const Directory sub = Below(R"({"Name":"Sub","Folders":[]})", "Sub");
  transport.Then(200, expanded).Then(200, noRows).Then(200, noRows);
  EXPECT_TRUE(List(sub));
  const std::string resource = std::string(startResource) + "/Folders('F2')";
  EXPECT_EQ(transport.requests(), (Requests{Expand("2"), TwoLevels(resource), Documents(resource)}));
}

TEST_F(Walking, AsksLevelByLevelWhereTwoAreRefused) {
  for (const int refusal : {400, 500, 501}) {
    SetUpServer();
    const Directory begun = Begin(Generation::Schema5);
    transport.Then(refusal).Then(200, Rows({R"({"ID":"F2","Name":"Sub"})"})).Then(200, noRows);
    EXPECT_TRUE(List(begun));
    EXPECT_EQ(transport.requests(),
              (Requests{TwoLevels(startResource), OneLevel(startResource), Documents(startResource)}));
    transport.ClearRequests();
    transport.Then(200, noRows).Then(200, noRows);
    EXPECT_TRUE(List(folders["Sub"]));
    const std::string sub = std::string(startResource) + "/Folders('F2')";
    EXPECT_EQ(transport.requests(), (Requests{OneLevel(sub), Documents(sub)}));
  }
}

// ---- What has changed since ----

TEST_F(Walking, LooksAFolderThatIsGoneUpByItsPathOnce) {
  const Directory sub = Below(R"({"ID":"F9","Name":"Sub","Folders":[{"ID":"F8","Name":"Old"}]})", "Sub");
  transport.Then(404).Then(200, expanded);
  transport.Then(200, Rows({R"({"ID":"F4","Name":"New","Folders":[]})"})).Then(200, noRows);
  EXPECT_TRUE(List(sub));
  EXPECT_THAT(entries, ElementsAre("dir New id="));
  const std::string now = std::string(startResource) + "/Folders('F2')";
  EXPECT_EQ(transport.requests(), (Requests{Documents(std::string(startResource) + "/Folders('F9')"),
                                            Expand("2"), TwoLevels(now), Documents(now)}));
}

TEST_F(Walking, FailsWhenTheFolderThatThePathLeadsToIsNotThereEither) {
  const Directory sub = Below(R"({"ID":"F2","Name":"Sub"})", "Sub");
  transport.Then(404).Then(200, expanded).Then(404);
  EXPECT_FALSE(List(sub));
  EXPECT_THAT(entries, IsEmpty());
  EXPECT_EQ(transport.requests().size(), 3U);
}

TEST_F(Walking, FailsWhenThePathLeadsNowhereAnyMore) {
  const Directory sub = Below(R"({"ID":"F2","Name":"Sub","Folders":[]})", "Sub");
  transport.Then(404).Then(200, noRows).Then(200, gadget).Then(404);
  EXPECT_FALSE(List(sub));
  EXPECT_EQ(transport.requests(),
            (Requests{Documents(std::string(startResource) + "/Folders('F2')"), Expand("2"),
                      Rest("servlet/rest/v1/contexts?type=Product"), Gateway("?path=Sub%2F")}));
}

TEST_F(Walking, AsksNothingAnewAfterSomethingWasDelivered) {
  const Directory begun = Begin(Generation::Schema5);
  transport.Then(200, Rows({R"({"ID":"F2","Name":"Sub"})"})).Then(404);
  EXPECT_FALSE(List(begun));
  EXPECT_THAT(entries, ElementsAre("dir Sub id="));
  EXPECT_EQ(transport.requests().size(), 2U);
}

TEST_F(Walking, FailsWithoutAskingAnewWhenTheServerFails) {
  const Directory sub = Below(R"({"ID":"F2","Name":"Sub","Folders":[{"ID":"F4","Name":"Deep"}]})", "Sub");
  transport.Then(503);
  EXPECT_FALSE(List(sub));
  EXPECT_THAT(entries, ElementsAre("dir Deep id="));
  EXPECT_EQ(transport.requests().size(), 1U);
  transport.Then(503);
  EXPECT_FALSE(List(sub));
  EXPECT_THAT(entries, IsEmpty());
}

TEST_F(Walking, OutlivesItsServer) {
  const Directory begun = Begin(Generation::Schema5);
  server = nullptr;
  transport.Then(200, Rows({R"({"ID":"F2","Name":"Sub","Folders":[]})"})).Then(200, noRows);
  EXPECT_TRUE(List(begun));
  transport.Then(200, noRows);
  EXPECT_TRUE(List(folders["Sub"]));
}

// ---- By the gateway ----

TEST_F(Walking, ListsAFolderOfTheGatewayByOneRequest) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, R"({"folderContent":["x/folders?path=Inner","x/doc.lxz"]})");
  const Directory begun = server->OpenWalk("Products/Gadget/Folders/Sub");
  ASSERT_NE(begun, nullptr);
  transport.ClearRequests();
  EXPECT_TRUE(List(begun));
  EXPECT_THAT(entries, ElementsAre("dir Inner", "file doc.lxz"));
  EXPECT_THAT(transport.requests(), IsEmpty());
  transport.Then(200, R"({"folderContent":["x/folders?path=Deep"]})");
  EXPECT_TRUE(List(folders["Inner"]));
  transport.Then(200, R"({"folderContent":[]})");
  EXPECT_TRUE(List(folders["Deep"]));
  EXPECT_EQ(transport.requests(),
            (Requests{Gateway("?path=Sub%2FInner%2F"), Gateway("?path=Sub%2FInner%2FDeep%2F")}));
}

TEST_F(Walking, LooksTheContextUpOnceMoreForAFolderThatTheGatewayDoesNotFind) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, R"({"folderContent":["x/folders?path=Inner"]})");
  EXPECT_TRUE(List(server->OpenWalk(start)));
  transport.ClearRequests();
  transport.Then(404).Then(200, gadget).Then(200, R"({"folderContent":["x/doc.lxz"]})");
  EXPECT_TRUE(List(folders["Inner"]));
  EXPECT_THAT(entries, ElementsAre("file doc.lxz"));
  EXPECT_EQ(transport.requests(),
            (Requests{Gateway("?path=Inner%2F"), Rest("servlet/rest/v1/contexts?type=Product"),
                      Gateway("?path=Inner%2F")}));
  transport.ClearRequests();
  transport.Then(503);
  EXPECT_FALSE(List(folders["Inner"]));
  EXPECT_EQ(transport.requests().size(), 1U);
}

TEST_F(Walking, GoesByTheGatewayWhenThatIsForced) {
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  transport.Then(200, gadget).Then(200, R"({"folderContent":["x/doc.lxz"]})");
  EXPECT_TRUE(List(server->OpenWalk(start)));
  EXPECT_EQ(transport.requests(), (Requests{Rest("servlet/rest/v1/contexts?type=Product"), Gateway("")}));
}

// ---- The upper levels ----

TEST_F(Walking, LooksTheUpperLevelsUpByTheirPaths) {
  const Directory root = server->OpenWalk("");
  ASSERT_NE(root, nullptr);
  EXPECT_TRUE(List(root));
  EXPECT_THAT(transport.requests(), IsEmpty());
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget);
  EXPECT_TRUE(List(folders["Products"]));
  EXPECT_THAT(entries, ElementsAre("dir Gadget id=OR:vn.Example:77"));
  EXPECT_TRUE(List(folders["Gadget"]));
  EXPECT_THAT(entries, ElementsAre("dir Folders id=", "dir Workspaces id="));
  transport.Then(200, gadget).Then(200, R"({"folderContent":["x/doc.lxz"]})");
  EXPECT_TRUE(List(folders["Folders"]));
  EXPECT_THAT(entries, ElementsAre("file doc.lxz"));
}

TEST_F(Walking, LooksAWorkspaceUpByItsPath) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget);
  const Directory begun = server->OpenWalk("Products/Gadget/Workspaces/");
  ASSERT_NE(begun, nullptr);
  transport.Then(200, R"([{"id":"W1","name":"mine"}])");
  EXPECT_TRUE(List(begun));
  transport.Then(200, gadget).Then(200, R"([{"id":"W1","name":"mine"}])");
  transport.Then(200, R"([{"epmMaster":{"cadName":"a"}}])");
  EXPECT_TRUE(List(folders["mine"]));
  EXPECT_THAT(entries, ElementsAre("file a id="));
}

TEST_F(Walking, DoesNotBeginWhereThereIsNoDirectory) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(404).Then(200, R"({"items":[]})");
  EXPECT_EQ(server->OpenWalk("Products"), nullptr);
  EXPECT_EQ(server->OpenWalk("Nowhere/"), nullptr);
  EXPECT_EQ(server->OpenWalk("Products/Gadget/Else/"), nullptr);
  EXPECT_EQ(server->OpenWalk("Products/Gadget/Folders/Sub/"), nullptr);
  EXPECT_EQ(server->OpenWalk("Products/Gadget/Folders/Sub/"), nullptr);
}

}  // namespace
}  // namespace vtdirect_test
