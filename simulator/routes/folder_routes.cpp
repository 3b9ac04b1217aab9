#include "simulator/routes/routes.h"
#include "simulator/store/folder_store.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

void WriteItems(JsonText& json, const std::vector<FolderRow>& folders) {
  for (const FolderRow& folder : folders) {
    json.StartObject().Member("id", folder.oid).Member("typeId", "vn.folder.SubFolder");
    json.Key("attributes").StartObject().Member("name", folder.name).EndObject().EndObject();
  }
}

/// What is right under the roots: a path of folders begins below a root and never names it.
Response FoldersOfContext(const ServiceContext& context, const Request& request) {
  const auto key = ContextKey(context.database, request.Path("id"));
  if (!key) return ErrorResponse(404, "no-such-context", "no context with this id");
  JsonText json;
  json.StartObject().Key("items").StartArray();
  for (const FolderRow& root : RootFolders(context.database, *key)) {
    WriteItems(json, SubFolders(context.database, root.key));
  }
  json.EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

Response FoldersOfFolder(const ServiceContext& context, const Request& request) {
  const auto place = FindFolder(context.database, request.Path("id"));
  if (!place) return ErrorResponse(404, "no-such-folder", "no folder with this id");
  JsonText json;
  json.StartObject().Key("items").StartArray();
  WriteItems(json, SubFolders(context.database, place->folder));
  json.EndArray().EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

void AddFolderRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/v1/contexts/{id}/folders",
      [&context](const Request& request) { return FoldersOfContext(context, request); },
      "folders right below the roots of a context, in `items`");
  router.Add(
      "GET", "servlet/rest/v1/folders/{id}/folders",
      [&context](const Request& request) { return FoldersOfFolder(context, request); },
      "folders of a folder, in `items`");
}

}  // namespace vantry_sim
