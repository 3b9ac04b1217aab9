#include <cstdlib>

#include "tests/wire/browsing/browsing_fixture.h"

namespace vtdirect_test {
namespace {

class Capabilities : public BrowsingTest {};

TEST_F(Capabilities, DocumentsCanBeCreatedInFoldersAndInWorkspaces) {
  for (const char* path : {"Products/Gadget/Folders", "Products/Gadget/Folders/", "Sites/G/Folders/a.lxz",
                           "Products/Gadget/Workspaces/mine/", "Products/Gadget/Workspaces/mine/a.lxz"}) {
    EXPECT_TRUE(server->IsPathWritable(path)) << path;
  }
  for (const char* path : {"", "Products", "Products/", "Products/Gadget/", "Products/Gadget/Else/x/",
                           "Products/Gadget/Workspaces", "Products/Gadget/Workspaces/",
                           // Without a closing "/" this names a document beside the workspaces.
                           "Products/Gadget/Workspaces/mine"}) {
    EXPECT_FALSE(server->IsPathWritable(path)) << path;
  }
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Capabilities, OnlyTheSectionOfAPathIsLookedAt) {
  EXPECT_TRUE(server->IsPathWritable("Nowhere//Folders/"));
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Capabilities, DetailsNeedVersion4AndVersionsNeedVersion5) {
  struct Case {
    Generation generation;
    bool details;
    bool versions;
  };
  for (const Case& expected :
       {Case{Generation::Rest, false, false}, Case{Generation::Schema3, false, false},
        Case{Generation::Schema4, true, false}, Case{Generation::Schema5, true, true}}) {
    SetUpServer();
    transport.ClearRequests();
    ScriptServices(expected.generation);
    EXPECT_EQ(server->CanPathShowDetails("Products/Gadget/Folders/Sub/"), expected.details);
    EXPECT_EQ(server->CanPathShowVersions("Products/Gadget/Folders"), expected.versions);
    EXPECT_EQ(transport.requests(), ServiceRequests());
  }
}

TEST_F(Capabilities, NothingIsShownBesideFoldersAndNothingIsAsked) {
  for (const char* path : {"", "Products/", "Products/Gadget/", "Products/Gadget/Workspaces/mine/"}) {
    EXPECT_FALSE(server->CanPathShowDetails(path)) << path;
    EXPECT_FALSE(server->CanPathShowVersions(path)) << path;
  }
  EXPECT_THAT(transport.requests(), IsEmpty());
}

TEST_F(Capabilities, ForcedLegacyBrowsingShowsNothing) {
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  ScriptServices(Generation::Schema5);
  transport.Then(200, R"({"value":[]})");
  EXPECT_TRUE(server->ReadDirExt("Products/", Collect(), Bits(3)));
  EXPECT_FALSE(server->CanPathShowDetails("Products/Gadget/Folders/"));
  EXPECT_FALSE(server->CanPathShowVersions("Products/Gadget/Folders/"));
  EXPECT_TRUE(server->IsPathWritable("Products/Gadget/Folders/"));
}

}  // namespace
}  // namespace vtdirect_test
