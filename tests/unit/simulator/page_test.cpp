#include "write_fixture.h"

namespace vantry_sim {
namespace {

const std::string pageDocument = "/app/data/document?id=";

std::string HeaderOf(const Response& response, const std::string& name) {
  for (const auto& [key, value] : response.headers) {
    if (key == name) return value;
  }
  return {};
}

TEST_F(WriteTest, PagesAreWhereClientsSendBrowsers) {
  options_.prefix = "/vt";
  for (const char* target : {"/vt/app/",
                             "/vt/servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction?u8&"
                             "action=MULTIEDITATTR&oid=D1&wsName=a%20b&wscontext=1"}) {
    const Response page = Get(target);
    EXPECT_EQ(page.status, 200) << target;
    EXPECT_EQ(page.contentType, "text/html;charset=UTF-8");
    EXPECT_NE(page.body.find("src=\"/vt/app/files/app.js\""), std::string::npos);
    EXPECT_EQ(page.body.find("{prefix}"), std::string::npos);
    EXPECT_NE(HeaderOf(page, "Content-Security-Policy").find("script-src 'self'"), std::string::npos);
  }
  const Response withoutSlash = Get("/vt/app");
  EXPECT_EQ(withoutSlash.status, 301);
  EXPECT_EQ(HeaderOf(withoutSlash, "Location"), "/vt/app/");
  EXPECT_EQ(Get("/vt/app/files/app.js").contentType, "text/javascript;charset=UTF-8");
  EXPECT_EQ(Get("/vt/app/files/..%2Fapp.js").status, 404);
  // What belongs to the admin port is not shown to clients.
  EXPECT_EQ(Get("/vt/app/files/admin.html").status, 404);
  EXPECT_EQ(Get("/vt/app/files/openapi.json").status, 404);
}

TEST_F(WriteTest, PagesAskForTheTreeAndItsDocuments) {
  const auto tree = GetJson("/app/data/contexts");
  EXPECT_STREQ(tree["contexts"][0]["name"].GetString(), "Trekking Bike");
  EXPECT_STREQ(tree["contexts"][0]["folders"][0]["folders"][0]["folders"][0]["name"].GetString(), "Chains");
  const auto folder = GetJson("/app/data/folder?id=OR:vn.folder.SubFolder:211");
  ASSERT_EQ(folder["documents"].Size(), 3U);
  EXPECT_STREQ(folder["documents"][0]["cadName"].GetString(), "fork.lxz");
  EXPECT_EQ(Get("/app/data/folder?id=none").status, 404);
  const auto document = GetJson(pageDocument + "D1001");
  EXPECT_STREQ(document["version"].GetString(), "B.1");
  EXPECT_EQ(document["versions"].Size(), 3U);
  EXPECT_EQ(document["contents"].Size(), 3U);
  EXPECT_TRUE(document["editable"].GetBool());
  EXPECT_EQ(GetJson("/app/data/workspaces")["workspaces"].Size(), 2U);
  EXPECT_EQ(GetJson("/app/data/workspaces", "bruno")["workspaces"][0]["documents"].Size(), 1U);
}

TEST_F(WriteTest, WorkingCopyOfSomebodyElseIsNotShown) {
  EXPECT_EQ(Get(pageDocument + "D1025").status, 404);
  EXPECT_EQ(Get(pageDocument + "D1025", "bruno").status, 200);
}

TEST_F(WriteTest, AttributesNameAndNumberAreEditedOnThePage) {
  EXPECT_EQ(Outcome(pageDocument + "D1001",
                    R"({"name":"New fork","number":"N-1","attributes":{"ZVK_DD_PAINT":"Rot","NEW":"<b>"}})"),
            "204");
  const auto document = GetJson("/servlet/rest/v1/dkm/documents/D1001");
  EXPECT_STREQ(document["epmMaster"]["name"].GetString(), "New fork");
  EXPECT_STREQ(document["epmMaster"]["number"].GetString(), "N-1");
  EXPECT_STREQ(document["fileBasedAttributes"][1]["parameterValue"]["value"].GetString(), "Rot");
  EXPECT_STREQ(document["fileBasedAttributes"][2]["parameterValue"]["value"].GetString(), "<b>");
  EXPECT_EQ(Outcome(pageDocument + "D1001", R"({"number":""})"), "400 bad-body");
  EXPECT_EQ(Outcome(pageDocument + "D1001", R"({"attributes":{"A":1}})"), "400 bad-body");
  EXPECT_EQ(Outcome(pageDocument + "D9", "{}"), "404 no-such-document");
}

TEST_F(WriteTest, PageEditsTheWorkingCopyOfWhatOneHasCheckedOut) {
  EXPECT_TRUE(GetJson(pageDocument + "D1016")["editable"].GetBool());
  EXPECT_STREQ(GetJson(pageDocument + "D1016&edit=1")["id"].GetString(), "D1026");
  EXPECT_EQ(Outcome(pageDocument + "D1016", R"({"attributes":{"A":"b"}})"), "204");
  EXPECT_EQ(GetJson(pageDocument + "D1026")["attributes"].Size(), 1U);
  EXPECT_EQ(GetJson(pageDocument + "D1016")["attributes"].Size(), 0U);
}

TEST_F(WriteTest, PageRefusesWhatSomebodyElseHasAndWhatIsOld) {
  EXPECT_EQ(Outcome(pageDocument + "D1015", R"({"attributes":{"A":"b"}})"), "409 checked-out");
  EXPECT_EQ(Outcome(pageDocument + "D1101", R"({"attributes":{"A":"b"}})"), "409 not-latest");
  EXPECT_FALSE(GetJson(pageDocument + "D1015")["editable"].GetBool());
  Request request;
  request.method = "POST";
  request.target = pageDocument + "D1001";
  request.user = "anna";
  request.contentType = "application/json";
  request.body = "{}";
  EXPECT_EQ(simulator_->Handle(request).status, 403);
}

}  // namespace
}  // namespace vantry_sim
