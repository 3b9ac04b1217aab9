#include "browsing/vantry_lookup.h"

#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using testing::ElementsAre;
using testing::IsEmpty;

class IdOfParams : public LocationTest {
 protected:
  std::string Find(const char* workspace = nullptr) { return server->UIDFromVantryParams("D1", workspace); }
};

const std::string document = Get(DocumentPath("D1"));
const Doc copy{.id = "D1", .isCheckoutByYou = true};

TEST_F(IdOfParams, IsTheDocumentsIdWithoutAWorkspace) {
  wire.Then(200, Json({})).Then(200, Json({}));
  EXPECT_EQ(Find(), "D1");
  EXPECT_EQ(Find(""), "D1");
  EXPECT_THAT(wire.lines(), ElementsAre(document, document));
  ExpectQuiet();
}

TEST_F(IdOfParams, IsEmptyAndTracedForADocumentThatCannotBeRead) {
  wire.Then(404);
  EXPECT_EQ(Find("W2"), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1 on server\n")));
}

TEST_F(IdOfParams, IsInTheNamedWorkspaceOfTheUsers) {
  wire.Then(200, Json(copy)).Then(200, List({Workspace("W1", "Other"), Workspace("W2", "Mine")}));
  EXPECT_EQ(Find("W2"), "D1|W2");
  EXPECT_THAT(wire.lines(), ElementsAre(document, Get(WorkspacesPath())));
  ExpectQuiet();
}

TEST_F(IdOfParams, IsEmptyAndTracedForAWorkspaceThatIsUnknownOrTemporaryOrCannotBeListed) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W1", "Mine")}));
  EXPECT_EQ(Find("W2"), "");
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "FenloomTMP00000000")}));
  EXPECT_EQ(Find("W2"), "");
  wire.Then(200, Json({})).Then(500);
  EXPECT_EQ(Find("W2"), "");
  const auto line = Error("Failed to locate workspace W2 for document D1 on server\n");
  EXPECT_THAT(Traced(), ElementsAre(line, line, line));
}

TEST_F(IdOfParams, IsInTheWorkspaceThatHoldsTheUsersWorkingCopy) {
  wire.Then(200, Json(copy)).Then(200, Docs({copy, {.id = "D0"}}));
  wire.Then(200, List({Workspace("W1", "One"), Workspace("W2", "Two"), Workspace("W3", "Three")}));
  wire.Then(200, Docs({{.id = "D9"}})).Then(200, Docs({{.id = "D1"}}));
  EXPECT_EQ(Find(), "D1|W2");
  EXPECT_THAT(wire.lines(),
              ElementsAre(document, Get(NumberPath("0042", "C5")), Get(WorkspacesPath()),
                          Get(WorkspaceDocumentsPath("W1")), Get(WorkspaceDocumentsPath("W2"))));
  ExpectQuiet();
}

TEST_F(IdOfParams, IsTheDocumentsIdForTheOriginalOfTheUsersCheckout) {
  wire.Then(200, Json(copy)).Then(200, Docs({copy}));
  EXPECT_EQ(Find(), "D1");
  ExpectQuiet();
}

TEST_F(IdOfParams, IsEmptyAndTracedWhenTheServerCannotTellCopyFromOriginal) {
  wire.Then(200, Json(copy)).Then(500, "down");
  EXPECT_EQ(Find(), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to find doc number 0042 with response: down"),
                                    Error("Failed to locate document D1 on server\n")));
}

TEST_F(IdOfParams, IsEmptyAndTracedForAWorkingCopyInNoWorkspaceOfTheUsers) {
  wire.Then(200, Json(copy)).Then(200, Docs({{.id = "D0"}})).Then(200, List({Workspace("W1", "One")}));
  wire.Then(200, "[]");
  EXPECT_EQ(Find(), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document D1 on server\n")));
}

TEST_F(IdOfParams, TakesANullDocumentForAnEmptyId) {
  wire.Then(404);
  EXPECT_EQ(server->UIDFromVantryParams(nullptr, nullptr), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate document  on server\n")));
}

class IdOfCadName : public LocationTest {};

TEST_F(IdOfCadName, IsTheNewestVersionOfTheFirstDocumentWithTheName) {
  AnswerSchemas(0, 2, 0);
  wire.Then(200, Objects({{"D1", "1"}, {"D2", "2"}})).Then(200, Json({}));
  wire.Then(200, Json({})).Then(200, Candidates({{"D9", "A.4", ""}}));
  EXPECT_EQ(server->UIDFromVantryCadName("gear.lxz"), "D9");
  EXPECT_EQ(wire.lines(), Join(SchemaLines(), {Get(ObjectsPath("gear.lxz")), document, document,
                                               Get(DynamicV2Path("gear.lxz"))}));
  ExpectQuiet();
}

TEST_F(IdOfCadName, IsEmptyForNullWithoutARequest) {
  EXPECT_EQ(server->UIDFromVantryCadName(nullptr), "");
  EXPECT_THAT(wire.lines(), IsEmpty());
  ExpectQuiet();
}

TEST_F(IdOfCadName, IsEmptyForANameThatNoDocumentHas) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, "[]");
  EXPECT_EQ(server->UIDFromVantryCadName("gear.lxz"), "");
  EXPECT_THAT(Traced(), testing::Contains(Error("Failed find any document with CADName gear.lxz")));
}

TEST_F(IdOfCadName, IsEmptyWhenTheDetailsFail) {
  AnswerSchemas(0, 0, 0);
  wire.Then(200, Objects({{"D1", "1"}})).Then(200, Json({})).Then(500);
  EXPECT_EQ(server->UIDFromVantryCadName("gear.lxz"), "");
  EXPECT_THAT(Traced(), testing::Contains(Error("Failed to locate document D1 on server\n")));
}

}  // namespace
}  // namespace vtdirect_test
