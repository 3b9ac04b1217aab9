#include "browsing/web_pages.h"

#include "base/result.h"
#include "server/create_file_server.h"
#include "tests/wire/browsing/location_fixture.h"

namespace vtdirect_test {
namespace {

using namespace lxservices::cms_interface;
using namespace lxservices::cms_interface::vantry;
using testing::ElementsAre;
using testing::IsEmpty;

class WebPages : public LocationTest {
 protected:
  static std::shared_ptr<FileServer> ServerAt(const char* url) {
    return CreateFileServer(url, [](const char*) { return false; });
  }
};

TEST_F(WebPages, InformOnADocumentWithoutARequest) {
  EXPECT_EQ(ServerAt("https://plm.example/")->BrowserInfo("D1001"),
            "https://plm.example/app/#zvk1/tcomp/infoPage?oid=D1001");
  EXPECT_EQ(ServerAt("https://plm.example")->BrowserInfo("D1001"),
            "https://plm.example/app/#zvk1/tcomp/infoPage?oid=D1001");
  EXPECT_EQ(ServerAt("https://plm.example/vt")->BrowserInfo("D1001"),
            "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=D1001");
  EXPECT_THAT(wire.lines(), IsEmpty());
  ExpectQuiet();
}

TEST_F(WebPages, InformOnTheDocumentPartOfAnIdEscaped) {
  EXPECT_EQ(server->BrowserInfo("D1|W2"), "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=D1");
  EXPECT_EQ(server->BrowserInfo("VR:d 1|W2|D3|T"),
            "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=VR%3Ad%201");
  EXPECT_EQ(server->BrowserInfo(""), "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=");
  EXPECT_EQ(server->BrowserInfo(nullptr), "https://plm.example/vt/app/#zvk1/tcomp/infoPage?oid=");
}

TEST_F(WebPages, AreNoneForAConnectionWithoutAUrl) {
  EXPECT_EQ(ServerAt("")->BrowserInfo("D1"), "");
}

TEST_F(WebPages, EditTheAttributesOfADocumentInAWorkspace) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W1", "Other"), Workspace("W2", "My & mine")}));
  EXPECT_EQ(server->EditAttributesURL("VR:d|W2"),
            "https://plm.example/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8"
            "&action=MULTIEDITATTR&oid=VR%3Ad&wsName=My%20%26%20mine&wscontext=1");
  EXPECT_THAT(wire.lines(), ElementsAre(Get(DocumentPath("VR%3Ad")), Get(WorkspacesPath())));
  ExpectQuiet();
}

TEST_F(WebPages, EditTheAttributesInATemporaryWorkspaceToo) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "FenloomTMP00000000")}));
  EXPECT_EQ(server->EditAttributesURL("D1|W2|D3|T"),
            "https://plm.example/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8"
            "&action=MULTIEDITATTR&oid=D1&wsName=FenloomTMP00000000&wscontext=1");
}

TEST_F(WebPages, AddNoSecondSlashToAUrlThatEndsInOne) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W2", "Mine")}));
  EXPECT_EQ(ServerAt("https://plm.example/vt/")->EditAttributesURL("D1|W2"),
            "https://plm.example/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8"
            "&action=MULTIEDITATTR&oid=D1&wsName=Mine&wscontext=1");
}

TEST_F(WebPages, EditNothingWithoutAWorkspaceAndSendNoRequest) {
  EXPECT_EQ(server->EditAttributesURL("D1"), "");
  EXPECT_EQ(server->EditAttributesURL("D1|"), "");
  EXPECT_EQ(server->EditAttributesURL("|W2"), "");
  EXPECT_EQ(server->EditAttributesURL(nullptr), "");
  EXPECT_THAT(wire.lines(), IsEmpty());
  EXPECT_THAT(Traced(),
              ElementsAre(Error("Failed to locate D1 on server\n"), Error("Failed to locate D1| on server\n"),
                          Error("Failed to locate |W2 on server\n"), Error("Failed to locate  on server\n")));
}

TEST_F(WebPages, EditNothingOfADocumentThatCannotBeRead) {
  wire.Then(404);
  EXPECT_EQ(server->EditAttributesURL("D1|W2"), "");
  EXPECT_THAT(Traced(), ElementsAre(Error("Failed to locate D1|W2 on server\n")));
}

TEST_F(WebPages, EditNothingInAWorkspaceThatIsUnknownOrCannotBeListed) {
  wire.Then(200, Json({})).Then(200, List({Workspace("W1", "Mine")}));
  EXPECT_EQ(server->EditAttributesURL("D1|W2"), "");
  wire.Then(200, Json({})).Then(500);
  EXPECT_EQ(server->EditAttributesURL("D1|W2"), "");
  const auto workspace = Error("Failed to locate workspace W2 in context C5 on server\n");
  const auto whole = Error("Failed to locate D1|W2 on server\n");
  EXPECT_THAT(Traced(), ElementsAre(workspace, whole, workspace, whole));
}

TEST_F(WebPages, KnowTheFirstWorkspaceOfAnId) {
  wire.Then(200, R"([{"id":"W1","name":"a"},{"id":"W2","name":"b","description":"c","contextId":"C5"},
                     {"id":"W2","name":"d"}])");
  WorkspaceRecord workspace;
  EXPECT_TRUE(HandOver(FindWorkspaceById(Begin(connection), "W2", "C5"), workspace));
  EXPECT_EQ(workspace.id, "W2");
  EXPECT_EQ(workspace.name, "b");
  EXPECT_EQ(workspace.description, "c");
  EXPECT_EQ(workspace.contextId, "C5");
}

}  // namespace
}  // namespace vtdirect_test
