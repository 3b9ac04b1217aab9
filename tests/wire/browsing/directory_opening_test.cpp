#include <cstdlib>

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;

constexpr const char* gadget =
    R"({"items":[{"id":"OR:vn.Example:77","attributes":{"name":"Gadget","organizationReference.name":"Acme"}}]})";
constexpr const char* expanded = R"({"value":[{"ID":"C100","Folders":[{"ID":"F1","Name":"Default"}]}]})";
constexpr const char* gatewayContent = R"({"folderContent":["x/folders?path=Inner","x/doc.lxz"]})";
constexpr const char* workspaces = R"([{"id":"W0","name":"FenloomTMP1"},{"id":"W1","name":"mine"}])";

class Opening : public BrowsingTest {
 protected:
  DirLister Open(const std::string& path) { return server->OpenDir(path.c_str()); }
  std::size_t sent() const { return transport.requests().size(); }
};

TEST_F(Opening, TheRootAndAContextNeedNoServer) {
  const DirLister root = Open("");
  const DirLister context = Open("Products/Gadget/");
  ASSERT_TRUE(root);
  ASSERT_TRUE(context);
  EXPECT_TRUE(root(Collect(), Bits(2)));
  EXPECT_TRUE(context(Collect(), Bits(2)));
  EXPECT_THAT(entries, ElementsAre("dir Products id=", "dir Libraries id=", "dir Projects id=",
                                   "dir Sites id=", "dir Folders id=", "dir Workspaces id="));
  EXPECT_EQ(sent(), 0U);
}

TEST_F(Opening, ARootAsksWhatTheServerHasAndListsAtEachReading) {
  ScriptServices(Generation::Rest);
  const DirLister lister = Open("Projects/");
  ASSERT_TRUE(lister);
  EXPECT_EQ(transport.requests(), ServiceRequests());
  transport.Then(200, gadget).Then(500);
  EXPECT_TRUE(lister(Collect(), Bits(3)));
  EXPECT_FALSE(lister(Collect(), Bits(3)));
  EXPECT_TRUE(lister(Collect(), Bits(1)));
  EXPECT_THAT(entries, ElementsAre("dir Gadget id=OR:vn.Example:77"));
  EXPECT_EQ(transport.requests(), Joined({ServiceRequests(),
                                          {Rest("servlet/rest/v1/contexts?type=Project"),
                                           Rest("servlet/rest/v1/contexts?type=Project")}}));
}

TEST_F(Opening, AFolderIsResolvedOnceAndListedAtEachReading) {
  ScriptServices(Generation::Schema5);
  transport.Then(200, expanded);
  const DirLister lister = Open("Products/Gadget/Folders/");
  ASSERT_TRUE(lister);
  EXPECT_EQ(sent(), 4U);
  transport.Then(200, R"({"value":[]})").Then(200, R"({"value":[{"CADName":"a","ID":"D1"}]})");
  transport.Then(200, R"({"value":[]})").Then(200, R"({"value":[]})");
  EXPECT_TRUE(lister(Collect(), Bits(15)));
  EXPECT_TRUE(lister(Collect(), Bits(0)));
  EXPECT_THAT(entries, ElementsAre("file a id=D1 (,) versions="));
  const std::string documents =
      "servlet/odata/v5/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
      "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID";
  const std::string folders =
      "servlet/odata/v1/DataAdmin/Containers('C100')/Folders('F1')/Folders?$select=Name";
  EXPECT_EQ(Requests(transport.requests().begin() + 4, transport.requests().end()),
            (Requests{OData(folders),
                      OData(documents + ",Version,Name,Number&$expand=Versions($select=Version,ID)"
                                        "&$orderby=Version desc"),
                      OData(folders), OData(documents + "&$orderby=Version desc")}));
}

TEST_F(Opening, AFolderOfVersion4IsListedInVersion4) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded).Then(200, R"({"value":[]})").Then(200, R"({"value":[]})");
  const DirLister lister = Open("Products/Gadget/Folders");
  ASSERT_TRUE(lister);
  EXPECT_TRUE(lister(Collect(), Bits(8)));
  EXPECT_EQ(transport.requests().back(),
            OData("servlet/odata/v4/DataAdmin/Containers('C100')/Folders('F1')/FolderContents/"
                  "ZVK.DynamicDocMgmt.DynamicDocument?$select=CADName,ID"));
}

TEST_F(Opening, AFolderOfTheGatewayIsFetchedWhenItIsOpened) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, gatewayContent);
  const DirLister lister = Open("Products/Gadget/Folders/Sub/");
  ASSERT_TRUE(lister);
  EXPECT_EQ(transport.requests().back(),
            Rest("servlet/rest/snx_gw/organizations/Acme/vn.Example/Gadget/folders?path=Sub%2F"));
  const std::size_t whenOpened = sent();
  EXPECT_TRUE(lister(Collect(), Bits(1)));
  EXPECT_TRUE(lister(Collect(), Bits(3)));
  EXPECT_THAT(entries, ElementsAre("file doc.lxz", "dir Inner", "file doc.lxz"));
  EXPECT_EQ(sent(), whenOpened);
}

TEST_F(Opening, AFolderThatODataDoesNotKnowIsFetchedByTheGateway) {
  ScriptServices(Generation::Schema5);
  transport.Then(200, R"({"value":[]})").Then(200, gadget).Then(200, gatewayContent);
  EXPECT_TRUE(Open("Products/Gadget/Folders/Sub/"));
  EXPECT_EQ(sent(), 6U);
}

TEST_F(Opening, ForcedLegacyBrowsingOpensByTheGateway) {
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  transport.Then(200, gadget).Then(200, gatewayContent);
  EXPECT_TRUE(Open("Products/Gadget/Folders/"));
  EXPECT_EQ(sent(), 2U);
}

TEST_F(Opening, AFolderThatTheGatewayRefusesIsNone) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(404).Then(200, R"({"items":[]})");
  EXPECT_FALSE(Open("Products/Gadget/Folders/Sub/"));
  EXPECT_FALSE(Open("Products/Gadget/Folders/Sub/"));
}

TEST_F(Opening, WorkspacesAreResolvedOnceAndListedAtEachReading) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget);
  const DirLister lister = Open("Products/Gadget/Workspaces/");
  ASSERT_TRUE(lister);
  transport.Then(200, workspaces).Then(200, "[]");
  EXPECT_TRUE(lister(Collect(), Bits(2)));
  EXPECT_TRUE(lister(Collect(), Bits(2)));
  EXPECT_TRUE(lister(Collect(), Bits(1)));
  EXPECT_THAT(entries, ElementsAre("dir mine id="));
  const SentRequest list = Rest("servlet/rest/v1/dkm/workspaces?contextId=OR%3Avn.Example%3A77");
  EXPECT_EQ(transport.requests(),
            Joined({ServiceRequests(), {Rest("servlet/rest/v1/contexts?type=Product"), list, list}}));
}

TEST_F(Opening, AWorkspaceIsFoundOnceAndListedAtEachReading) {
  ScriptServices(Generation::Rest);
  transport.Then(200, gadget).Then(200, workspaces);
  const DirLister lister = Open("Products/Gadget/Workspaces/mine/");
  ASSERT_TRUE(lister);
  const std::size_t whenOpened = sent();
  transport.Then(200, R"([{"epmMaster":{"cadName":"a"}}])").Then(500);
  EXPECT_TRUE(lister(Collect(), Bits(1)));
  EXPECT_FALSE(lister(Collect(), Bits(1)));
  EXPECT_THAT(entries, ElementsAre("file a id="));
  EXPECT_EQ(Requests(transport.requests().begin() + static_cast<std::ptrdiff_t>(whenOpened),
                     transport.requests().end()),
            Requests(2, Rest("servlet/rest/v1/dkm/workspaces/W1/documents")));
}

TEST_F(Opening, WhatIsNoDirectoryHasNoLister) {
  ScriptServices(Generation::Rest);
  transport.Then(200, R"({"items":[]})").Then(200, gadget).Then(200, workspaces);
  EXPECT_FALSE(Open("Products"));
  EXPECT_FALSE(Open("Nowhere/"));
  EXPECT_FALSE(Open("Products/Gadget/Else/"));
  EXPECT_FALSE(Open("Products/Gadget/Workspaces/"));
  EXPECT_FALSE(Open("Products/Gadget/Workspaces/yours/"));
}

TEST_F(Opening, AListerOutlivesItsServer) {
  ScriptServices(Generation::Schema4);
  transport.Then(200, expanded);
  const DirLister folder = Open("Products/Gadget/Folders/");
  const DirLister contexts = Open("Products/");
  ASSERT_TRUE(folder);
  ASSERT_TRUE(contexts);
  server = nullptr;
  transport.Then(200, R"({"value":[{"Name":"Sub"}]})").Then(200, R"({"value":[]})").Then(200, gadget);
  EXPECT_TRUE(folder(Collect(), Bits(3)));
  EXPECT_TRUE(contexts(Collect(), Bits(3)));
  EXPECT_THAT(entries, ElementsAre("dir Sub id=", "dir Gadget id=OR:vn.Example:77"));
}

TEST_F(Opening, AListerGoesByWhatTheServerHadWhenItWasOpened) {
  transport.Then(503);
  const DirLister contexts = Open("Products/");
  ASSERT_TRUE(contexts);
  ScriptServices(Generation::Schema5);
  transport.Then(200, R"({"value":[]})");
  EXPECT_TRUE(server->ReadDirExt("Products/", Collect(), Bits(3)));
  transport.Then(200, gadget);
  EXPECT_TRUE(contexts(Collect(), Bits(3)));
  EXPECT_EQ(transport.requests().back(), Rest("servlet/rest/v1/contexts?type=Product"));
}

}  // namespace
}  // namespace vtdirect_test
