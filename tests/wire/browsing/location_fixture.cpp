#include "tests/wire/browsing/location_fixture.h"

#include <stdlib.h>

#include "base/settings.h"
#include "server/create_file_server.h"

namespace vtdirect_test {
namespace {

std::string Member(const std::string& name, const std::string& json) {
  return Quoted(name) + ":" + json;
}

std::string Flag(bool value) {
  return value ? "true" : "false";
}

std::string Object(std::initializer_list<std::string> members) {
  std::string text;
  for (const auto& member : members) text += (text.empty() ? "" : ",") + member;
  return "{" + text + "}";
}

}  // namespace

std::string Json(const Doc& doc) {
  const std::string context =
      Object({Member("id", Quoted(doc.contextId)), Member("name", Quoted(doc.contextName)),
              Member("type", Quoted(doc.contextType))});
  const std::string state = Object(
      {Member("isCheckout", Flag(doc.isCheckout)), Member("isCheckoutByYou", Flag(doc.isCheckoutByYou)),
       Member("isLatest", Flag(doc.isLatest)), Member("checkoutByUser", Quoted(doc.checkoutByUser))});
  const std::string master =
      Object({Member("id", Quoted(doc.masterId)), Member("name", Quoted(doc.name)),
              Member("number", Quoted(doc.number)), Member("cadName", Quoted(doc.cadName))});
  const std::string folder =
      Object({Member("id", Quoted(doc.folderId)), Member("path", Quoted(doc.folderPath))});
  return Object({Member("id", Quoted(doc.id)), Member("context", context),
                 Member("revision", Quoted(doc.revision)), Member("iteration", Quoted(doc.iteration)),
                 Member("pdmIterationState", state), Member("epmMaster", master),
                 Member("locationFolder", folder)});
}

std::string Docs(const std::vector<Doc>& docs) {
  std::vector<std::string> elements;
  for (const Doc& doc : docs) elements.push_back(Json(doc));
  return List(elements);
}

std::string Candidates(const std::vector<Candidate>& candidates) {
  std::vector<std::string> rows;
  for (const Candidate& candidate : candidates) {
    rows.push_back(Object({Member("ID", Quoted(candidate.id)), Member("Version", Quoted(candidate.version)),
                           Member("CheckOutStatus", Quoted(candidate.checkOutStatus))}));
  }
  return Rows(rows);
}

std::string Workspace(const std::string& id, const std::string& name) {
  return Object({Member("id", Quoted(id)), Member("name", Quoted(name)), Member("contextId", Quoted("C5"))});
}

std::string Schema(int version) {
  return "<edmx><Schema><EntityType Name=\"Folder\"><NavigationProperty "
         "Name=\"FolderContents\"/></EntityType>"
         "<Annotation Term=\"Core.SchemaVersion\"><String>" +
         std::to_string(version) + "</String></Annotation></Schema></edmx>";
}

std::vector<std::string> SchemaLines() {
  return {Get("servlet/odata/DataAdmin/$metadata"), Get("servlet/odata/DynamicDocMgmt/$metadata"),
          Get("servlet/odata/CADDocumentMgmt/$metadata")};
}

LocationTest::LocationTest() {
  setenv("FENLOOM_LANGUAGE", "en", 1);
  lxservices::cms_interface::SetBrowseDynamicDocuments("true");
  lxservices::cms_interface::SetBrowseCadDocuments("false");
  connection = std::make_shared<lxservices::cms_interface::vantry::VtConnection>(
      serverUrl, [](const char*) { return false; });
  server = lxservices::cms_interface::CreateFileServer(serverUrl, [](const char*) { return false; });
}

LocationTest::~LocationTest() {
  EXPECT_EQ(wire.unanswered(), 0u) << "answers that nobody asked for";
  EXPECT_THAT(traces.strayAreas(), testing::IsEmpty());
  EXPECT_THAT(directory.Entries(), testing::IsEmpty()) << "files left behind";
}

void LocationTest::AnswerSchemas(int dataAdmin, int dynamicDoc, int cadDoc) {
  for (const int version : {dataAdmin, dynamicDoc, cadDoc}) {
    version > 0 ? wire.Then(200, Schema(version)) : wire.Then(404);
  }
}

std::vector<TraceLine> LocationTest::Traced() const {
  std::vector<TraceLine> lines;
  for (const TraceLine& line : traces.lines()) {
    if (line.name != "CmsInterface") lines.push_back(line);
  }
  return lines;
}

void LocationTest::ExpectQuiet() const {
  EXPECT_THAT(Traced(), testing::IsEmpty());
}

std::string DocumentPath(const std::string& id) {
  return "servlet/rest/v1/dkm/documents/" + id;
}

std::string VersionsPath(const std::string& id, const std::string& contextId) {
  return "servlet/rest/v1/dkm/documents/" + id + "/versions?contextId=" + contextId;
}

std::string NumberPath(const std::string& number, const std::string& scope) {
  return "servlet/rest/v1/dkm/documents/search?number=" + number + (scope.empty() ? "" : "&scope=" + scope);
}

std::string ObjectsPath(const std::string& escapedName) {
  return "servlet/rest/objects?typeId=vn.epm.EPMDocument&$select=number&$filter=CADName eq '" + escapedName +
         "'";
}

std::string DynamicV2Path(const std::string& escapedName) {
  return "servlet/odata/v2/DynamicDocMgmt/DynamicDocuments?$filter=CADName eq '" + escapedName +
         "'&$orderby=Version desc&$select=ID,Version,CheckOutStatus&zvk.search.latestversion=true";
}

std::string DynamicV1Path(const std::string& escapedName) {
  return "servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?$filter=CADName eq '" + escapedName +
         "'&$orderby=Version desc&$select=ID,Version,CheckOutStatus";
}

std::string CadPath(const std::string& escapedName) {
  return "servlet/odata/v1/CADDocumentMgmt/CADDocuments?$filter=FileName eq '" + escapedName +
         "'&$orderby=Version desc&$select=ID,Version,CheckOutStatus&zvk.search.latestversion=true";
}

std::string ContextsPath(const std::string& word) {
  return "servlet/rest/v1/contexts?type=" + word;
}

std::string WorkspacesPath(const std::string& contextId) {
  return "servlet/rest/v1/dkm/workspaces?contextId=" + contextId;
}

std::string WorkspaceDocumentsPath(const std::string& workspaceId) {
  return "servlet/rest/v1/dkm/workspaces/" + workspaceId + "/documents";
}

std::string TreePath(int levels) {
  return "servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?$expand=Folders($levels=" +
         std::to_string(levels) + ";$select=ID,Name)&$select=ID&$filter=Name%20eq%20%27Gadget%27";
}

std::string FolderSearchPath(const std::string& escapedName) {
  return "servlet/odata/v4/DataAdmin/Containers('C5')/Folders('F1')/Folders('F2')"
         "/FolderContents/ZVK.DynamicDocMgmt.DynamicDocument?$filter=CADName%20eq%20%27" +
         escapedName + "%27&$orderby=Version desc&$select=CADName,ID,Version&$top=1";
}

std::string Tree() {
  return R"({"value":[{"ID":"C5","Folders":[{"ID":"F1","Name":"Default","Folders":[{"ID":"F2","Name":"Sub"}]}]}]})";
}

std::string Context(const std::string& id, const std::string& name) {
  return R"({"items":[{"id":")" + id + R"(","attributes":{"name":")" + name + R"("}}]})";
}

std::string Objects(const std::vector<std::pair<std::string, std::string>>& rows) {
  std::vector<std::string> elements;
  for (const auto& [id, number] : rows) {
    elements.push_back(
        Object({Member("id", Quoted(id)), Member("attributes", Object({Member("number", Quoted(number))}))}));
  }
  return List(elements);
}

}  // namespace vtdirect_test
