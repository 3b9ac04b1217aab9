#include "browsing/file_location.h"

#include <stdlib.h>

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;

class FileLocation : public LocationTest {
 protected:
  std::string Find(ContextKind kind = ContextKind::Product) {
    return FindFileInFolder(Begin(connection, services), "gear.lxz", "Sub", kind, "Gadget");
  }
};

const std::string tree = Get(TreePath(2));
const std::string folderSearch = Get(FolderSearchPath("gear.lxz"));
const std::string objects = Get(ObjectsPath("gear.lxz"));

TEST_F(FileLocation, IsTheIdFoundInTheFolderItself) {
  services.folderContents = true;
  wire.Then(200, Tree()).Then(200, Rows({R"({"CADName":"gear.lxz","ID":"D7","Version":"A.2"})"}));
  EXPECT_EQ(Find(), "D7");
  EXPECT_THAT(wire.lines(), ElementsAre(tree, folderSearch));
  ExpectQuiet();
}

TEST_F(FileLocation, IsLookedForInTheContextWhenTheFolderIsUnknown) {
  services.folderContents = true;
  wire.Then(200, Rows({})).Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Find(), "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(tree, objects, Get(DocumentPath("D1"))));
  ExpectQuiet();
}

TEST_F(FileLocation, IsLookedForInTheContextWhenTheFolderDoesNotHoldIt) {
  services.folderContents = true;
  wire.Then(200, Tree()).Then(200, Rows({})).Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Find(), "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(tree, folderSearch, objects, Get(DocumentPath("D1"))));
  ExpectQuiet();
}

TEST_F(FileLocation, IsLookedForInTheContextForAKindThatODataDoesNotKnow) {
  services.folderContents = true;
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Find(ContextKind::None), "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, Get(DocumentPath("D1"))));
  EXPECT_THAT(Traced(), ElementsAre(Miss("unhandled context type 0")));
}

TEST_F(FileLocation, IsLookedForInTheContextOnAServerThatListsNoFolders) {
  services.dataAdminPresent = true;
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Find(), "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, Get(DocumentPath("D1"))));
  ExpectQuiet();
}

TEST_F(FileLocation, IsLookedForInTheContextWhenTheEnvironmentForcesTheOldWay) {
  setenv("FENLOOM_DC_FORCE_LEGACY_FILEBROWSE", "1", 1);
  services.folderContents = true;
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Find(), "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, Get(DocumentPath("D1"))));
  ExpectQuiet();
}

TEST_F(FileLocation, IsEmptyAndTracedForADocumentThatIsNowhere) {
  wire.Then(200, "[]");
  EXPECT_EQ(Find(), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed find any document with CADName gear.lxz"),
                                    Miss("Failed to find file gear.lxz")));
}

TEST_F(FileLocation, IsTheNewestVersionWhereTheServerHasDynamicDocuments) {
  services.dynamicDocPresent = services.dynamicDocV2 = true;
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  EXPECT_EQ(Find(), "D9");
  EXPECT_THAT(wire.lines(), ElementsAre(objects, Get(DocumentPath("D1")), Get(DocumentPath("D1")),
                                        Get(DynamicV2Path("gear.lxz"))));
  ExpectQuiet();
}

TEST_F(FileLocation, IsTheDocumentFoundWhenItsDetailsFail) {
  services.dynamicDocPresent = true;
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({})).Then(500);
  EXPECT_EQ(Find(), "D1");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1 on server\n")));
}

TEST_F(FileLocation, IsTheFirstOfSeveralInTheContext) {
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "2"}})).Then(200, Context("OR:vn.Example:5", "Gadget"));
  wire.Then(200, Docs({{.id = "E1"}})).Then(200, Docs({{.id = "E2"}}));
  EXPECT_EQ(Find(), "E1");
  EXPECT_THAT(Traced(), ElementsAre(Error("Found 2 document with CADName gear.lxz")));
}

}  // namespace
}  // namespace vtdirect_test
