#include "simulator/pages/page_routes.h"

#include "simulator/pages/embedded_files.h"
#include "simulator/pages/page_document.h"
#include "simulator/routes/write_route.h"
#include "simulator/store/folder_store.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

Response Json(JsonText& json) {
  Response response;
  response.body = json.Take();
  return response;
}

Response File(std::string_view name) {
  const EmbeddedFile* file = FindEmbeddedFile(name);
  // What belongs to the other port is nothing that this one shows.
  if (file == nullptr || name.starts_with("admin") || name.ends_with(".json"))
    return ErrorResponse(404, "no-such-file", "this program has no such file in it");
  Response response;
  response.contentType = file->type;
  response.body = file->bytes;
  response.headers = PageHeaders();
  return response;
}

/// The one page, whose script shows what the address names. The prefix holds nothing that means something in
/// HTML.
Response Page(const ServiceContext& context) {
  constexpr std::string_view placeholder = "{prefix}";
  Response response = File("app.html");
  for (auto at = response.body.find(placeholder); at != std::string::npos;
       at = response.body.find(placeholder, at))
    response.body.replace(at, placeholder.size(), context.options.prefix);
  return response;
}

Response ToThePage(const ServiceContext& context) {
  Response response;
  response.status = 301;
  response.headers.emplace_back("Location", context.options.prefix + "/app/");
  return response;
}

void WriteFolders(JsonText& json, Database& database, const std::vector<FolderRow>& folders) {
  json.Key("folders").StartArray();
  for (const FolderRow& folder : folders) {
    json.StartObject().Member("id", folder.oid).Member("name", folder.name);
    WriteFolders(json, database, SubFolders(database, folder.key));
    json.EndObject();
  }
  json.EndArray();
}

Response Contexts(const ServiceContext& context) {
  auto statement = context.database.Prepare("SELECT id, name, kind FROM contexts ORDER BY id");
  JsonText json;
  json.StartObject().Key("contexts").StartArray();
  while (statement.Step()) {
    json.StartObject().Member("name", statement.Text(1)).Member("kind", statement.Text(2));
    WriteFolders(json, context.database, RootFolders(context.database, statement.Integer(0)));
    json.EndObject();
  }
  json.EndArray().EndObject();
  return Json(json);
}

Response Folder(const ServiceContext& context, const Request& request) {
  const auto place = FindFolder(context.database, request.Query("id").value_or(""));
  if (!place) return ErrorResponse(404, "no-such-folder", "there is no folder with this id");
  JsonText json;
  json.StartObject().Key("documents").StartArray();
  WriteFolderDocuments(json, context.database, place->folder);
  json.EndArray().EndObject();
  return Json(json);
}

Response Workspaces(const ServiceContext& context, const Request& request) {
  JsonText json;
  json.StartObject().Key("workspaces").StartArray();
  WritePageWorkspaces(json, context.database, request.user);
  json.EndArray().EndObject();
  return Json(json);
}

Response NoSuchDocument() {
  return ErrorResponse(404, "no-such-document", "there is no document with this id for this user");
}

Response Document(const ServiceContext& context, const Request& request) {
  auto document = FindDocument(context.database, request.Query("id").value_or(""), request.user);
  if (document && request.Query("edit")) document = WorkingCopyOr(context.database, *document, request.user);
  if (!document) return NoSuchDocument();
  JsonText json;
  WritePageDocument(json, context.database, *document, request.user, BaseUrl(context, request));
  return Json(json);
}

Response Edit(const ServiceContext& context, const Request& request, JsonValue body) {
  auto document = FindDocument(context.database, request.Query("id").value_or(""), request.user);
  if (document) document = WorkingCopyOr(context.database, *document, request.user);
  if (!document) return NoSuchDocument();
  if (auto refusal = EditPageDocument(context.database, *document, body)) return std::move(*refusal);
  Response response;
  response.status = 204;
  return response;
}

}  // namespace

void AddPageRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "app", [&context](const Request&) { return ToThePage(context); }, "leads to `app/`");
  router.Add(
      "GET", "app/", [&context](const Request&) { return Page(context); }, "the [pages](#pages)");
  router.Add(
      "GET", "servlet/VantryAuthGW/vn.enterprise.URLProcessor/URLTemplateAction",
      [&context](const Request&) { return Page(context); },
      "the page where the attributes of a document are edited");
  router.Add(
      "GET", "app/files/{name}", [](const Request& request) { return File(request.Path("name")); },
      "styles and scripts of the pages");
  router.Add(
      "GET", "app/data/contexts", [&context](const Request&) { return Contexts(context); },
      "contexts, for the pages");
  router.Add(
      "GET", "app/data/folder", [&context](const Request& request) { return Folder(context, request); },
      "a folder and its documents, for the pages");
  router.Add(
      "GET", "app/data/workspaces",
      [&context](const Request& request) { return Workspaces(context, request); },
      "one's own workspaces, for the pages");
  router.Add(
      "GET", "app/data/document", [&context](const Request& request) { return Document(context, request); },
      "a document with its versions, for the pages");
  AddWrite(router, context, {"app/data/document", "what the page for attributes changed: 204"},
           [&context](const Request& request, JsonValue body) { return Edit(context, request, body); });
}

}  // namespace vantry_sim
