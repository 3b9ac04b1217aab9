#include "tests/wire/requests/sample_server.h"

#include <string_view>

#include "tests/support/wire_words.h"

namespace vtdirect_test {
namespace {

// An answer for the lines that begin with a text and hold another one; an empty other one asks for the whole
// line.
struct Route {
  std::string_view start;
  std::string_view inside;
  std::string body;
};

bool Matches(const Route& route, const std::string& line) {
  if (route.inside.empty()) return line == route.start;
  return line.starts_with(route.start) && line.find(route.inside) != std::string::npos;
}

const Route* FindRoute(const std::vector<Route>& routes, const std::string& line) {
  for (const Route& route : routes) {
    if (Matches(route, line)) return &route;
  }
  return nullptr;
}

struct Sample {
  std::string id;
  std::string version;
  std::string flags;
  std::string dependencies = {};
};

// `fork.lxz`, in whatever version or copy.
std::string Document(const Sample& sample) {
  return R"({"id":")" + sample.id +
         R"(","context":{"id":"OR:vn.product.Product:101","name":"Bike","type":"Product"},"revision":"A",)"
         R"("iteration":")" +
         sample.version + R"(","pdmIterationState":{)" + sample.flags +
         R"(},"epmMaster":{"id":"M1","name":"Fork","number":"42","cadName":"fork.lxz"},)"
         R"("locationFolder":{"id":"OR:vn.folder.SubFolder:211","path":"/Bike/Frames"},)"
         R"("derivedSourceDependencies":[)" +
         sample.dependencies +
         R"(],"cadContent":{"contentSections":[{"id":"S1","streamId":17,"fileName":"{$CAD_NAME}",)"
         R"("contentUrl":["https://plm.example/content/1"],"fileSize":5}]},"secondaryContents":[]})";
}

const std::string older = Document({"D0", "1", R"("isCheckout":false,"isLatest":false)"});
const std::string newest = Document({"D1", "2", R"("isCheckout":false,"isLatest":true)"});
const std::string original =
    Document({"D2", "2", R"("isCheckout":true,"isCheckoutByYou":true,"isLatest":true)"});
const std::string workingCopy =
    Document({"D3", "2", R"("isCheckout":true,"isCheckoutByYou":true,"isLatest":false)"});
const std::string withSource =
    Document({"D4", "2", R"("isCheckout":false,"isLatest":true)",
              R"({"asStoredChildName":"wheel.lxz","isDirect":true,"source":{"id":"D1"}})"});

const std::string sourceXliff = Document({"D5", "1", R"("isCheckout":false,"isLatest":true)"});
const std::string translation = Document({"D6", "1", R"("isCheckout":false,"isLatest":true)"});

// What the server wants to know of a first source XLIFF, but for the place where it goes.
const std::string preferencesWithoutPlace =
    R"({"Name":"ZVK_DD_TRANSLATE","Value":"yes"},{"Name":"ZVK_DD_LANGUAGE","Value":"en"},)"
    R"({"Name":"ZVK_DD_EXTENDED_DOC_TYPE","Value":"xliff"},{"Name":"UPLOAD_SOFT_TYPE","Value":"Dynamic"},)"
    R"({"Name":"DB_CONTEXT_TYPE","Value":"Product"},{"Name":"DB_CONTEXT_NAME","Value":"Bike"},)";

const std::vector<Route>& RestRoutes() {
  static const std::vector<Route> routes{
      {"GET /vt/servlet/OrvetGW", "",
       "ServerMajorVersion:12\nServerMinorVersion:0\nServerServicepackVersion:0\nServerCPSVersion:0\n"},
      {"GET /vt/servlet/rest/security/csrf", "",
       R"({"items":[{"id":"csrf","attributes":{"nonce_key":"Nonce","nonce":"17"}}]})"},
      {"GET /vt/servlet/rest/v1/contexts/", "/folders",
       R"({"items":[{"id":"F1","attributes":{"name":"Frames"}}]})"},
      {"GET /vt/servlet/rest/v1/contexts", "contexts",
       R"({"items":[{"id":"OR:vn.product.Product:101",)"
       R"("attributes":{"name":"Bike","type":"Product","organizationReference.name":"Acme"}}]})"},
      {"GET /vt/servlet/rest/snx_gw/organizations/Acme/", "?path=Frames",
       R"({"folderContent":["x/folders?path=Old","x/fork.lxz"]})"},
      {"GET /vt/servlet/rest/objects?", "'fork.lxz'", R"([{"id":"D1","attributes":{"number":"42"}}])"},
      {"GET /vt/servlet/rest/objects?", "CADName eq", "[]"},
      {"GET /vt/servlet/rest/v1/dkm/documents/search?", "number=42", List({newest})},
      {"GET /vt/servlet/rest/v1/dkm/documents/", "/versions?", List({older, newest})},
      {"GET /vt/servlet/rest/v1/dkm/documents/D0", "", older},
      {"GET /vt/servlet/rest/v1/dkm/documents/D1", "", newest},
      {"GET /vt/servlet/rest/v1/dkm/documents/D2", "", original},
      {"GET /vt/servlet/rest/v1/dkm/documents/D3", "", workingCopy},
      {"GET /vt/servlet/rest/v1/dkm/documents/D4", "", withSource},
      {"GET /vt/servlet/rest/v1/dkm/documents/D5", "", sourceXliff},
      {"GET /vt/servlet/rest/v1/dkm/documents/D6", "", translation},
      {"GET /vt/servlet/rest/v1/dkm/workspaces/W", "/documents", List({workingCopy})},
      {"GET /vt/servlet/rest/v1/dkm/workspaces?",
       "contextId=", R"([{"id":"W1","name":"Mine"},{"id":"W9","name":"FenloomTMP9"}])"},
      {"POST /vt/servlet/rest/v1/dkm/workspaces/W", "/checkout", List({workingCopy})},
      {"POST /vt/servlet/rest/v1/dkm/workspaces/W", "/checkin", List({newest})},
      {"POST /vt/servlet/rest/v1/dkm/workspaces/W", "/undocheckout", List({newest})},
      {"POST /vt/servlet/rest/v1/dkm/workspaces/W", "/store", List({workingCopy})},
      {"POST /vt/servlet/rest/v1/dkm/workspaces/W", "/delete", "{}"},
      {"POST /vt/servlet/rest/v1/dkm/workspaces", "", R"({"id":"W9","name":"FenloomTMP9"})"},
      {"POST /vt/servlet/rest/v1/dkm/documents", "", List({newest})},
      {"POST /vt/servlet/rest/v1/content/creationFactory", "",
       R"({"masterUrl":"https://plm.example/master","uploadUrl":"https://plm.example/upload/1",)"
       R"("fileNames":["F"],"streamIds":["17"]})"},
      {"POST /upload/1", "", R"({"contentInfos":[{"streamId":17,"encodedInfo":"receipt"}]})"},
      {"GET /content/1", "", "bytes"},
  };
  return routes;
}

const std::vector<Route>& ODataRoutes() {
  static const std::vector<Route> routes{
      {"GET /vt/servlet/odata/v1/ZVK/IsAssemblyInstalled", "kotia", R"({"value":"true"})"},
      {"GET /vt/servlet/odata/v3/Visualization/GetHVDFeatures()", "",
       Rows({R"({"FeatureName":"SeparatedsourceQ7zk","FeatureValues":["true"]})",
             R"({"FeatureName":"uploadvcsinfo","FeatureValues":["true"]})"})},
      {"GET /vt/servlet/odata/v1/DataAdmin/Containers/ZVK.DataAdmin.ProductContainer?", "$expand=Folders",
       Rows({R"({"ID":"C1","Folders":[{"ID":"F0","Name":"Default",)"
             R"("Folders":[{"ID":"F1","Name":"Frames"}]}]})"})},
      {"GET /vt/servlet/odata/v1/DataAdmin/Containers('", "/Folders?$expand=Folders",
       Rows({R"({"ID":"F0","Name":"Default","Folders":[{"ID":"F1","Name":"Frames"}]})"})},
      {"GET /vt/servlet/odata/v1/DataAdmin/Containers('", "/Folders?$select=Name", Rows({})},
      {"GET /vt/servlet/odata/v1/DataAdmin/Containers('", "/Folders?$select=ID,Name&$expand=Folders",
       Rows({R"({"ID":"F2","Name":"Old","Folders":[]})"})},
      {"GET /vt/servlet/odata/v5/DataAdmin/Containers/", "ProductContainer?$select=ID",
       Rows({R"({"ID":"C1","Name":"Bike"})"})},
      {"GET /vt/servlet/odata/v4/DataAdmin/", "$filter=CADName%20eq%20%27fork.lxz%27",
       Rows({R"({"CADName":"fork.lxz","ID":"D1","Version":"A.2"})"})},
      {"GET /vt/servlet/odata/v4/DataAdmin/", "$filter=", Rows({})},
      {"GET /vt/servlet/odata/v", "/FolderContents/", Rows({R"({"CADName":"fork.lxz","ID":"D1"})"})},
      {"GET /vt/servlet/odata/v2/DynamicDocMgmt/DynamicDocuments?", "'fork.lxz'",
       Rows({R"({"ID":"D1","Version":"A.2","CheckOutStatus":""})"})},
      // Every version, newest first.
      {"GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments?", "'fork.lxz'",
       Rows({R"({"ID":"D1","Version":"A.2","CheckOutStatus":""})",
             R"({"ID":"D0","Version":"A.1","CheckOutStatus":""})"})},
  };
  return routes;
}

const std::vector<Route>& TranslationRoutes() {
  static const std::vector<Route> routes{
      {"GET /vt/servlet/odata/v1/ZVK/GetCSRFToken()", "", R"({"NonceKey":"Nonce","NonceValue":"17"})"},
      {"GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')/Xliff", "",
       Rows({R"({"ID":"D5","AuthoringLanguage":"en"})"})},
      {"GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D", "/Xliff", Rows({})},
      {"GET /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')?$expand=Translations", "",
       R"({"ID":"D1","AuthoringLanguage":"en","Translations":[{"ID":"D6","AuthoringLanguage":"de"},)"
       R"({"ID":"D5","AuthoringLanguage":"fr"}]})"},
      {"GET /vt/servlet/odata/v1/DynamicDocMgmt/XliffPreferences(oidForQ7zkDocument='D0'",
       "sourceLanguage='en'",
       R"({"Preferences":[)" + preferencesWithoutPlace + R"({"Name":"CABINET_OID","Value":"F9"}]})"},
      {"GET /vt/servlet/odata/v1/DynamicDocMgmt/XliffPreferences(oidForQ7zkDocument='D2'",
       "sourceLanguage='en'",
       R"({"Preferences":[)" + preferencesWithoutPlace + R"({"Name":"SUB_FOLDER_PATH","Value":"Frames"}]})"},
      {"GET /vt/servlet/odata/v1/DataAdmin/Containers?$expand=Folders", "",
       Rows(
           {R"({"ID":"OR:vn.product.Product:101","Name":"Bike","Type":"Product","Folders":[{"ID":"F9"}]})"})},
      {"POST /vt/servlet/odata/v1/DynamicDocMgmt/CreateXliffLink", "", R"({"value":"Success"})"},
      {"PATCH /vt/servlet/odata/v1/DynamicDocMgmt/DynamicDocuments('D1')", "", R"({"value":"Success"})"},
  };
  return routes;
}

std::string Schema(int version, bool hasFolderContents) {
  return std::string(R"(<Schema><EntityType Name="Folder">)") +
         (hasFolderContents ? R"(<NavigationProperty Name="FolderContents"/>)" : "") +
         R"(</EntityType><Annotation Term="Core.SchemaVersion"><String>)" + std::to_string(version) +
         "</String></Annotation></Schema>";
}

}  // namespace

Answer SampleServer::AnswerTo(const std::string& line) {
  if (line.find(" /vt/servlet/odata/") != std::string::npos) return AnswerOData(line);
  const Route* route = FindRoute(RestRoutes(), line);
  return route != nullptr ? Answer{200, route->body} : Unknown(line);
}

Answer SampleServer::AnswerOData(const std::string& line) {
  if (generation_ == Generation::Gateway) return {404, {}};
  if (line == "GET /vt/servlet/odata/") return {200, R"([{"id":"DynamicDocMgmt"}])"};
  if (line.ends_with("/$metadata")) return Metadata(line);
  // A call to a service's newer version than the generation has is a mistake of the library's.
  const bool tooNew = (generation_ == Generation::Schema1 && line.find("/v1/") == std::string::npos &&
                       line.find("/Visualization/") == std::string::npos) ||
                      (generation_ == Generation::Schema4 && line.find("/v5/") != std::string::npos);
  const Route* route = FindRoute(ODataRoutes(), line);
  if (route == nullptr) route = FindRoute(TranslationRoutes(), line);
  return route != nullptr && !tooNew ? Answer{200, route->body} : Unknown(line);
}

Answer SampleServer::Metadata(const std::string& line) const {
  const bool isOld = generation_ == Generation::Schema1;
  if (line.find("/CADDocumentMgmt/") != std::string::npos) return {200, Schema(1, false)};
  if (line.find("/DynamicDocMgmt/") != std::string::npos) return {200, Schema(isOld ? 1 : 2, false)};
  if (isOld) return {200, Schema(1, false)};
  return {200, Schema(generation_ == Generation::Schema5 ? 5 : 4, true)};
}

Answer SampleServer::Unknown(const std::string& line) {
  const std::lock_guard lock(mutex_);
  unknown_.push_back(line);
  return {404, {}};
}

}  // namespace vtdirect_test
