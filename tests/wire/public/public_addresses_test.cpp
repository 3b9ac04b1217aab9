#include "public/vt_direct_manager.h"

#include <unistd.h>

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

/// What a host asks with addresses, on a server that is in its list as "plm".
class PublicAddresses : public LocationTest {
 protected:
  PublicAddresses() { VtDirectManager::UpdateServerList({{"plm", serverUrl}}); }
  ~PublicAddresses() override { VtDirectManager::UpdateServerList({}); }

  /// Answers for the path of "gear.lxz" in the folder "Sub", found there by OData as D1.
  void AnswerPath() {
    AnswerSchemas(5, 2, 0);
    wire.Then(200, Tree()).Then(200, Rows({R"({"ID":"D1","Version":"A.1"})"}));
  }
  static std::vector<std::string> PathLines() {
    return Join(SchemaLines(), {Get(TreePath(2)), Get(FolderSearchPath("gear.lxz"))});
  }
};

constexpr const char* path = "korvufenloom-vfs://plm/Products/Gadget/Folders/Sub/gear.lxz";
constexpr const char* uid = "korvufenloom-vt://plm.example/vt/?id=D1";
const std::string document = Get(DocumentPath("D1"));

TEST_F(PublicAddresses, UidOfAPathIsThatOfTheDocumentItNames) {
  AnswerPath();
  wire.Then(200, Json({}));
  EXPECT_EQ(VtDirectManager::GetUID(path), "korvufenloom-vt://plm.example/vt/?id=D1&file=/gear.lxz");
  EXPECT_EQ(wire.lines(), Join(PathLines(), {document}));
  ExpectQuiet();
}

TEST_F(PublicAddresses, UidOfAPathInAWorkspaceHoldsTheWorkspace) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget")).Then(200, List({Workspace("W2", "Mine")}));
  wire.Then(200, Docs({{}})).Then(200, Json({}));
  EXPECT_EQ(VtDirectManager::GetUID("//plm/Products/Gadget/Workspaces/Mine/gear.lxz"),
            "korvufenloom-vt://plm.example/vt/?id=D1|W2&file=/gear.lxz");
}

TEST_F(PublicAddresses, UidOfAPathThatNamesNothingIsEmpty) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, "[]").Then(200, "[]");
  EXPECT_EQ(VtDirectManager::GetUID(path), "");
  EXPECT_THAT(Traced(), Contains(Miss("Failed to find file Products/Gadget/Folders/Sub/gear.lxz")));
}

TEST_F(PublicAddresses, LatestPathOfAPathIsThePathWithoutItsVersion) {
  EXPECT_EQ(VtDirectManager::GetVFSPathLatest((std::string(path) + "|B.3").c_str()), path);
  EXPECT_THAT(wire.lines(), IsEmpty());
}

TEST_F(PublicAddresses, LatestPathOfAUidTakesOneRequest) {
  wire.Then(200, Json({}));
  EXPECT_EQ(VtDirectManager::GetVFSPathLatest(uid), path);
  EXPECT_THAT(wire.lines(), ElementsAre(document));
}

TEST_F(PublicAddresses, VersionedPathOfAUidNamesTheVersionOfAnOlderDocument) {
  wire.Then(200, Json({}));
  AnswerSchemas(5, 2, 0);
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.2", ""}}));
  EXPECT_EQ(VtDirectManager::GetVFSPathVersioned(uid), std::string(path) + "|A.1");
}

TEST_F(PublicAddresses, VersionedPathOfAPathResolvesIt) {
  AnswerPath();
  wire.Then(200, Json({})).Then(200, Json({})).Then(200, Candidates({{"D1", "A.1", ""}}));
  EXPECT_EQ(VtDirectManager::GetVFSPathVersioned(path), path);
  EXPECT_EQ(wire.lines(), Join(PathLines(), {document, document, Get(DynamicV2Path("gear.lxz"))}));
}

TEST_F(PublicAddresses, VersionedPathLeadsBackToTheSameDocument) {
  wire.Then(200, Json({.iteration = "2"}));
  AnswerSchemas(5, 2, 0);
  wire.Then(200, Json({.iteration = "2"})).Then(200, Candidates({{"D9", "A.3", ""}}));
  const std::string versioned = VtDirectManager::GetVFSPathVersioned(uid);
  EXPECT_EQ(versioned, std::string(path) + "|A.2");
  wire.Then(200, Tree()).Then(200, Rows({R"({"ID":"D9","Version":"A.3"})"}));
  wire.Then(200, Json({.id = "D9"}));
  wire.Then(200, Docs({{.id = "D9", .iteration = "3"}, {.id = "D1", .iteration = "2"}}));
  wire.Then(200, Json({.iteration = "2"}));
  EXPECT_EQ(VtDirectManager::GetUID(versioned.c_str()),
            "korvufenloom-vt://plm.example/vt/?id=D1&file=/gear.lxz");
}

TEST_F(PublicAddresses, FolderPathEndsInASlash) {
  wire.Then(200, Json({}));
  EXPECT_EQ(VtDirectManager::GetVFSFolderPath(uid), "korvufenloom-vfs://plm/Products/Gadget/Folders/Sub/");
  EXPECT_THAT(wire.lines(), ElementsAre(document));
  wire.ClearRequests();
  AnswerPath();
  wire.Then(200, Json({}));
  EXPECT_EQ(VtDirectManager::GetVFSFolderPath(path), "korvufenloom-vfs://plm/Products/Gadget/Folders/Sub/");
  EXPECT_EQ(wire.lines(), Join(PathLines(), {document}));
}

TEST_F(PublicAddresses, PathsOfAUidThatCannotBeReadAreEmpty) {
  wire.Then(404).Then(404).Then(404);
  EXPECT_EQ(VtDirectManager::GetVFSPathLatest(uid), "");
  EXPECT_EQ(VtDirectManager::GetVFSPathVersioned(uid), "");
  EXPECT_EQ(VtDirectManager::GetVFSFolderPath(uid), "");
}

TEST_F(PublicAddresses, UidOfACadNameIsThatOfTheNewestVersion) {
  AnswerSchemas(0, 2, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}})).Then(200, Json({.id = "D9"}));
  EXPECT_EQ(VtDirectManager::UIDFromVantryCadName(serverUrl, "gear.lxz"),
            "korvufenloom-vt://plm.example/vt/?id=D9&file=/gear.lxz");
  EXPECT_EQ(wire.lines(), Join(SchemaLines(), {Get(ObjectsPath("gear.lxz")), document, document,
                                               Get(DynamicV2Path("gear.lxz")), Get(DocumentPath("D9"))}));
  ExpectQuiet();
}

TEST_F(PublicAddresses, UidOfACadNameThatNoDocumentHasIsEmptyAndTraced) {
  AnswerSchemas(0, 2, 0);
  wire.Then(200, "[]");
  EXPECT_EQ(VtDirectManager::UIDFromVantryCadName(serverUrl, "gear.lxz"), "");
  EXPECT_THAT(
      Traced(),
      testing::IsSupersetOf(
          {Error("Failed find any document with CADName gear.lxz"),
           Error("Failed to find a CAD name gear.lxz at server URL https://plm.example/vt\n"),
           Error("Failed to inquire uid for CAD Name gear.lxz, at server URL https://plm.example/vt\n")}));
}

TEST_F(PublicAddresses, UidOfParamsHoldsTheWorkspace) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "Mine")})).Then(200, Json({}));
  EXPECT_EQ(VtDirectManager::UIDFromVantryParams(serverUrl, "D1", "W2", false),
            "korvufenloom-vt://plm.example/vt/?id=D1|W2&file=/gear.lxz");
  EXPECT_THAT(wire.lines(), ElementsAre(document, Get(WorkspacesPath()), document));
  ExpectQuiet();
}

TEST_F(PublicAddresses, UidOfParamsWithoutADocumentIsEmptyAndTraced) {
  wire.Then(404);
  EXPECT_EQ(VtDirectManager::UIDFromVantryParams(serverUrl, "D1", nullptr, false), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1 on server\n"),
                                    Error("Failed to find a sensible object: D1 \n")));
}

TEST_F(PublicAddresses, AFileIsFetchedByItsPath) {
  AnswerPath();
  wire.Then(200, R"({"id":"D1","revision":"A","iteration":"1","epmMaster":{"cadName":"gear.lxz"},
      "cadContent":{"contentSections":[{"contentUrl":["https://content.example/store/1?key=2"]}]}})");
  wire.Then(200, "the content");
  std::string resultUid;
  std::string text;
  const std::string file = directory.File("gear");
  const bool fetched =
      VtDirectManager::GetFile(path, file.c_str(), resultUid,
                               [&](VtDirectManager::StatusCode code, const char* result) {
                                 text += std::to_string(code) + " " + (result != nullptr ? result : "");
                               },
                               {});
  EXPECT_TRUE(fetched);
  EXPECT_EQ(resultUid, "korvufenloom-vt://plm.example/vt/?id=D1&file=/gear.lxz");
  EXPECT_EQ(text, "0 korvufenloom-vt://plm.example/vt/?id=D1&file=/gear.lxz");
  EXPECT_EQ(ReadFile(file), "the content");
  EXPECT_EQ(wire.lines(), Join(PathLines(), {document, "GET /store/1?key=2"}));
  EXPECT_EQ(wire.requests().back().server, "https://content.example");
  EXPECT_EQ(::unlink(file.c_str()), 0);
}

TEST_F(PublicAddresses, WebPagesComeFromAUid) {
  std::string url;
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "Mine")}));
  EXPECT_TRUE(VtDirectManager::BrowserInfo(uid, url));
  EXPECT_EQ(url, "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=D1");
  EXPECT_EQ(VtDirectManager::VantryEditAttributesURL("korvufenloom-vt://plm.example/vt/?id=D1|W2"),
            "https://plm.example/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8"
            "&action=MULTIEDITATTR&oid=D1&wsName=Mine&wscontext=1");
}

}  // namespace
}  // namespace vtdirect_test
