#include "browsing/path_to_document.h"

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using testing::ElementsAre;

/// Paths that a server object resolves. A server without OData is asked unless a test says otherwise.
class PathToDocument : public LocationTest {
 protected:
  /// What was sent after the questions for services.
  std::vector<std::string> LinesBehindSchemas() const {
    const auto lines = wire.lines();
    EXPECT_EQ(std::vector<std::string>(lines.begin(), lines.begin() + 3), SchemaLines());
    return {lines.begin() + 3, lines.end()};
  }
  std::string Resolve(const char* path) { return server->ResolvePath(path); }
};

std::string ObjectsOf(const std::string& name) {
  return Get(ObjectsPath(name));
}

// ---- Folders.

TEST_F(PathToDocument, FindsADocumentInAFolderByOData) {
  AnswerSchemas(5, 2, 0);
  wire.Then(200, Tree()).Then(200, Rows({R"({"ID":"D7","Version":"A.2"})"}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz"), "D7");
  EXPECT_THAT(LinesBehindSchemas(), ElementsAre(Get(TreePath(2)), Get(FolderSearchPath("gear.lxz"))));
  ExpectQuiet();
}

TEST_F(PathToDocument, FindsADocumentByItsCadNameOnAServerWithoutOData) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz"), "D1");
  EXPECT_THAT(LinesBehindSchemas(), ElementsAre(ObjectsOf("gear.lxz"), Get(DocumentPath("D1"))));
}

TEST_F(PathToDocument, FindsADocumentDirectlyBelowTheSection) {
  AnswerSchemas(5, 0, 0);
  wire.Then(200, R"({"value":[{"ID":"C5","Folders":[{"ID":"F1","Name":"Default"}]}]})");
  wire.Then(200, Rows({R"({"ID":"D7","Version":"A.2"})"}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/gear.lxz"), "D7");
  EXPECT_EQ(LinesBehindSchemas()[0], Get(TreePath(1)));
}

TEST_F(PathToDocument, LooksForTheDecodedLeafFirstAndThenForTheLeafAsItStands) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, "[]").Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/a%3fb"), "D1");
  EXPECT_THAT(LinesBehindSchemas(),
              ElementsAre(ObjectsOf("a%3Fb"), ObjectsOf("a%253fb"), Get(DocumentPath("D1"))));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed find any document with CADName a?b"),
                                    Miss("Failed to find file a?b")));
}

TEST_F(PathToDocument, LooksTwiceForALeafThatDecodesToItselfAndTracesThePath) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, "[]").Then(200, "[]");
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz"), "");
  EXPECT_THAT(LinesBehindSchemas(), ElementsAre(ObjectsOf("gear.lxz"), ObjectsOf("gear.lxz")));
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed find any document with CADName gear.lxz"),
                                    Miss("Failed to find file gear.lxz"),
                                    Error("Failed find any document with CADName gear.lxz"),
                                    Miss("Failed to find file gear.lxz"),
                                    Miss("Failed to find file Products/Gadget/Folders/Sub/gear.lxz")));
}

TEST_F(PathToDocument, GivesTheIdOfTheVersionInThePath) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({}));
  wire.Then(200, Docs({{.id = "D3", .revision = "B"}, {.id = "D2", .revision = "A"}, {.id = "D9"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|A.1"), "D2");
  EXPECT_THAT(LinesBehindSchemas(), ElementsAre(ObjectsOf("gear.lxz"), Get(DocumentPath("D1")),
                                                Get(DocumentPath("D1")), Get(VersionsPath("D1"))));
  ExpectQuiet();
}

TEST_F(PathToDocument, GivesNothingWithoutATraceForAVersionThatDoesNotExist) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D2", .revision = "A", .iteration = "2"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|A.1"), "");
  ExpectQuiet();
}

TEST_F(PathToDocument, RefusesAVersionWithoutAFullStopAfterAskingForTheVersions) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({})).Then(200, Docs({{.id = "D2", .revision = "A"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|A"), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Looking for bad version A")));
}

TEST_F(PathToDocument, SplitsAVersionAtItsFirstFullStop) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({}));
  wire.Then(200, Docs({{.id = "D2", .revision = "A.1", .iteration = "2"},
                       {.id = "D3", .revision = "A", .iteration = "1.2"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|A.1.2"), "D3");
}

TEST_F(PathToDocument, TakesAnEmptyVersionForNone) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|"), "D1");
  ExpectQuiet();
}

TEST_F(PathToDocument, TracesAFailureToReadTheDocumentForItsVersions) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({})).Then(500);
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|A.1"), "");
  EXPECT_THAT(Traced(),
              ElementsAre(Miss("Failed to get file Products/Gadget/Folders/Sub/gear.lxz|A.1 versions")));
}

TEST_F(PathToDocument, TracesAFailureToReadTheVersions) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({})).Then(200, Json({})).Then(500);
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz|A.1"), "");
  EXPECT_THAT(Traced(),
              ElementsAre(Miss("Failed to get file Products/Gadget/Folders/Sub/gear.lxz|A.1 versions")));
}

TEST_F(PathToDocument, LooksBelowAnUnknownRootInContextsOfAnyKind) {
  AnswerSchemas(5, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  EXPECT_EQ(Resolve("Gizmos/Gadget/Folders/Sub/gear.lxz"), "D1");
  EXPECT_THAT(Traced(), ElementsAre(Miss("unhandled context type 0")));
}

TEST_F(PathToDocument, GivesTheIdAloneForANewestVersionThatIsFoundInTheContext) {
  AnswerSchemas(0, 2, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({}));
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  EXPECT_EQ(Resolve("Products/Gadget/Folders/Sub/gear.lxz"), "D9");
}

// ---- Workspaces.

TEST_F(PathToDocument, FindsADocumentInAWorkspace) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget"));
  wire.Then(200, List({Workspace("W1", "Other"), Workspace("W2", "Mine"), Workspace("W3", "Mine")}));
  wire.Then(200, Docs({{.id = "D1", .cadName = "x"}, {.id = "D2"}, {.id = "D3"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/gear.lxz"), "D2|W2");
  EXPECT_THAT(LinesBehindSchemas(),
              ElementsAre(Get(ContextsPath("Product")), Get(WorkspacesPath("OR%3Avn.Example%3A5")),
                          Get(WorkspaceDocumentsPath("W2"))));
  ExpectQuiet();
}

TEST_F(PathToDocument, FindsADocumentInATemporaryWorkspaceToo) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget"));
  wire.Then(200, List({Workspace("W1", "FenloomTMP0a1b2c3d")})).Then(200, Docs({{.id = "D1"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/FenloomTMP0a1b2c3d/gear.lxz"), "D1|W1");
}

TEST_F(PathToDocument, FindsTheContextOfAWorkspaceByODataOnASchemaOfVersionFive) {
  AnswerSchemas(5, 0, 0);
  wire.Then(200, Rows({R"({"ID":"C5"})"})).Then(200, List({Workspace("W2", "Mine")}));
  wire.Then(200, Docs({{.id = "D1"}}));
  EXPECT_EQ(Resolve("Libraries/Gadget/Workspaces/Mine/gear.lxz"), "D1|W2");
  EXPECT_EQ(LinesBehindSchemas()[0],
            Get("servlet/odata/v5/DataAdmin/Containers/ZVK.DataAdmin.LibraryContainer?$select=ID&$filter="
                "Name%20eq%20%27Gadget%27"));
}

TEST_F(PathToDocument, PrefersTheDecodedLeafAmongAWorkspacesDocuments) {
  AnswerSchemas(0, 0, 0);
  const auto answer = [&](const std::vector<Doc>& docs) {
    wire.Then(200, Context("OR:vn.Example:5", "Gadget")).Then(200, List({Workspace("W2", "Mine")}));
    wire.Then(200, Docs(docs));
  };
  answer({{.id = "D1", .cadName = "a%3fb"}, {.id = "D2", .cadName = "a?b"}});
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/a%3fb"), "D2|W2");
  answer({{.id = "D1", .cadName = "a%3fb"}});
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/a%3fb"), "D1|W2");
  ExpectQuiet();
}

TEST_F(PathToDocument, TracesAnUnknownContextOfAWorkspace) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, R"({"items":[]})");
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/gear.lxz"), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate context Gadget on server\n")));
}

TEST_F(PathToDocument, TracesAnUnknownWorkspace) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget")).Then(200, List({Workspace("W1", "Other")}));
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/gear.lxz"), "");
  EXPECT_THAT(
      Traced(),
      ElementsAre(Miss("Failed to find workspace for file Products/Gadget/Workspaces/Mine/gear.lxz")));
}

TEST_F(PathToDocument, TracesAWorkspaceThatCannotBeRead) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget")).Then(200, List({Workspace("W1", "Mine")})).Then(500);
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/gear.lxz"), "");
  EXPECT_THAT(Traced(), ElementsAre(Miss("Failed to find workspace documents for file "
                                         "Products/Gadget/Workspaces/Mine/gear.lxz")));
}

TEST_F(PathToDocument, TracesADocumentThatAWorkspaceDoesNotHold) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget")).Then(200, List({Workspace("W1", "Mine")}));
  wire.Then(200, Docs({{.cadName = "other"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/gear.lxz"), "");
  EXPECT_THAT(Traced(), ElementsAre(Miss("Failed to find file Products/Gadget/Workspaces/Mine/gear.lxz")));
}

TEST_F(PathToDocument, LeavesTheVersionInAWorkspacesPathAlone) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Context("OR:vn.Example:5", "Gadget")).Then(200, List({Workspace("W1", "Mine")}));
  wire.Then(200, Docs({{.id = "D1"}}));
  EXPECT_EQ(Resolve("Products/Gadget/Workspaces/Mine/gear.lxz|nonsense"), "D1|W1");
}

// ---- What is no document's path.

TEST_F(PathToDocument, GivesNothingForAnyOtherSectionButAsksForTheServices) {
  AnswerSchemas(5, 2, 1);
  for (const char* path : {"Products/Gadget/Nowhere/Sub/gear.lxz", "Products/Gadget/folders/Sub/gear.lxz",
                           "Products/Gadget/", "Products", "", static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(Resolve(path), "");
  }
  EXPECT_EQ(wire.lines(), SchemaLines());
  ExpectQuiet();
}

}  // namespace
}  // namespace vtdirect_test
