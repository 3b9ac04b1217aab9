#include "browsing/document_to_path.h"

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using testing::ElementsAre;

class DocumentToPath : public LocationTest {
 protected:
  std::string Latest(const char* id) { return server->GetVFSPath(id, false, true); }
  std::string Versioned(const char* id) { return server->GetVFSPath(id, false, false); }
  std::string Folder(const char* id) { return server->GetVFSPath(id, true, false); }
};

const std::string document = Get(DocumentPath("D1"));

TEST_F(DocumentToPath, TracesADocumentThatCannotBeRead) {
  wire.Then(404);
  EXPECT_EQ(Versioned("D1|W2"), "");
  EXPECT_THAT(wire.lines(), ElementsAre(document));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1|W2 on server\n")));
}

TEST_F(DocumentToPath, GivesTheFolderWithItsClosingSlashByOneRequest) {
  wire.Then(200, Json({.folderPath = "/Gadget/Sub/Deep"}));
  EXPECT_EQ(Folder("D1"), "Products/Gadget/Folders/Sub/Deep/");
  EXPECT_THAT(wire.lines(), ElementsAre(document));
  wire.Then(200, Json({.folderPath = "/Gadget/Sub/Deep/"}));
  EXPECT_EQ(Folder("D1"), "Products/Gadget/Folders/Sub/Deep/");
  ExpectQuiet();
}

TEST_F(DocumentToPath, GivesTheLatestFormByOneRequest) {
  wire.Then(200, Json({.cadName = "a%b.lxz"}));
  EXPECT_EQ(Latest("D1"), "Products/Gadget/Folders/Sub/a%25b.lxz");
  EXPECT_THAT(wire.lines(), ElementsAre(document));
  ExpectQuiet();
}

TEST_F(DocumentToPath, GivesTheFolderAloneWhateverFormIsAsked) {
  wire.Then(200, Json({}));
  EXPECT_EQ(server->GetVFSPath("D1", true, true), "Products/Gadget/Folders/Sub/");
}

TEST_F(DocumentToPath, AddsTheVersionOfADocumentThatIsNotTheNewest) {
  wire.Then(200, Json({.revision = "B", .iteration = "3", .cadName = "a:b"}));
  AnswerSchemas(5, 2, 0);
  wire.Then(200, Json({.revision = "B", .iteration = "3", .cadName = "a:b"}));
  wire.Then(200, Candidates({{"D9", "B.4", ""}}));
  EXPECT_EQ(Versioned("D1"), "Products/Gadget/Folders/Sub/a%3ab|B.3");
  std::vector<std::string> lines = Join({document}, SchemaLines());
  EXPECT_EQ(wire.lines(), Join(lines, {document, Get(DynamicV2Path("a%3Ab"))}));
  ExpectQuiet();
}

TEST_F(DocumentToPath, AddsNoVersionForTheNewest) {
  wire.Then(200, Json({.revision = "B", .iteration = "4"}));
  AnswerSchemas(0, 2, 0);
  wire.Then(200, Json({.revision = "B", .iteration = "4"})).Then(200, Candidates({{"D9", "B.4", ""}}));
  EXPECT_EQ(Versioned("D1"), "Products/Gadget/Folders/Sub/gear.lxz");
}

TEST_F(DocumentToPath, AddsNoVersionWhenTheServerCannotTell) {
  wire.Then(200, Json({}));
  AnswerSchemas(0, 0, 0);
  wire.Then(500);
  EXPECT_EQ(Versioned("D1"), "Products/Gadget/Folders/Sub/gear.lxz");
  EXPECT_THAT(Traced(), testing::Contains(Error("Failed to locate document D1 on server\n")));
}

TEST_F(DocumentToPath, NamesTheRootOfEachKindOfContext) {
  const std::pair<const char*, const char*> kinds[] = {{"Product", "Products/Gadget/Folders/Sub/"},
                                                       {"Library", "Libraries/Gadget/Folders/Sub/"},
                                                       {"Project", "Projects/Gadget/Folders/Sub/"},
                                                       {"Site", "Sites/Gadget/Folders/Sub/"},
                                                       {"Organization", ""},
                                                       {"product", ""},
                                                       {"", ""}};
  for (const auto& [word, path] : kinds) {
    wire.Then(200, Json({.contextType = word}));
    EXPECT_EQ(Folder("D1"), path) << word;
  }
  ExpectQuiet();
}

TEST_F(DocumentToPath, GivesNothingForADocumentInNoFolder) {
  wire.Then(200, Json({.folderPath = "/Gadget"}));
  EXPECT_EQ(Versioned("D1"), "");
  EXPECT_THAT(wire.lines(), ElementsAre(document));
  ExpectQuiet();
}

TEST_F(DocumentToPath, GivesTheSectionItselfForADocumentInTheCabinet) {
  wire.Then(200, Json({.folderId = "OR:vn.folder.Cabinet:1", .folderPath = "/Gadget"}));
  EXPECT_EQ(Folder("D1"), "Products/Gadget/Folders/");
  wire.Then(200, Json({.folderId = "OR:vn.folder.Cabinet:1", .folderPath = "/Gadget/"}));
  EXPECT_EQ(Latest("D1"), "Products/Gadget/Folders/gear.lxz");
}

TEST_F(DocumentToPath, GivesThePathInAWorkspaceOfTheUsers) {
  wire.Then(200, Json({.cadName = "a?b"}))
      .Then(200, List({Workspace("W1", "Other"), Workspace("W2", "Mine")}));
  EXPECT_EQ(Versioned("D1|W2"), "Products/Gadget/Workspaces/Mine/a%3fb");
  EXPECT_THAT(wire.lines(), ElementsAre(document, Get(WorkspacesPath())));
  ExpectQuiet();
}

TEST_F(DocumentToPath, GivesAWorkspaceWithoutAClosingSlash) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "Mine")}));
  EXPECT_EQ(Folder("D1|W2"), "Products/Gadget/Workspaces/Mine");
}

TEST_F(DocumentToPath, TracesAFailedListOfWorkspaces) {
  wire.Then(200, Json({})).Then(500);
  EXPECT_EQ(Latest("D1|W2"), "");
  EXPECT_THAT(Traced(), ElementsAre(Miss("Failed to find workspace for D1|W2")));
}

TEST_F(DocumentToPath, GivesNothingWithoutATraceForAnUnknownOrATemporaryWorkspace) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W1", "Mine")}));
  EXPECT_EQ(Latest("D1|W2"), "");
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "FenloomTMP12345678")}));
  EXPECT_EQ(Latest("D1|W2"), "");
  ExpectQuiet();
}

TEST_F(DocumentToPath, GivesNothingInAWorkspaceOfAContextWithoutARoot) {
  wire.Then(200, Json({.contextType = "Organization"})).Then(200, List({Workspace("W2", "Mine")}));
  EXPECT_EQ(Latest("D1|W2"), "");
}

TEST_F(DocumentToPath, GivesTheFolderOfADocumentInATemporaryCheckout) {
  wire.Then(200, Json({}));
  EXPECT_EQ(Latest("D1|W2|D3|T"), "Products/Gadget/Folders/Sub/gear.lxz");
  EXPECT_THAT(wire.lines(), ElementsAre(document));
}

}  // namespace
}  // namespace vtdirect_test
