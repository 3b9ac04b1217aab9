#include "simulator/routes/routes.h"
#include "simulator/store/document_json.h"
#include "simulator/store/document_store.h"
#include "simulator/store/workspace_store.h"
#include "simulator/wire/json.h"

namespace vantry_sim {
namespace {

Response List(const ServiceContext& context, const Request& request) {
  const auto contextId = request.Query("contextId");
  if (!contextId) return ErrorResponse(400, "missing-parameter", "contextId is missing");
  JsonText json;
  json.StartArray();
  for (const WorkspaceRow& workspace : WorkspacesOf(context.database, *contextId, request.user)) {
    json.StartObject().Member("id", workspace.oid).Member("name", workspace.name);
    json.Member("description", workspace.description).Member("contextId", workspace.contextOid).EndObject();
  }
  json.EndArray();
  Response response;
  response.body = json.Take();
  return response;
}

Response Documents(const ServiceContext& context, const Request& request) {
  const auto workspace = FindWorkspace(context.database, request.Path("id"), request.user);
  if (!workspace) return ErrorResponse(404, "no-such-workspace", "this user has no workspace with this id");
  JsonText json;
  json.StartArray();
  for (const DocumentRow& document : DocumentsInWorkspace(context.database, workspace->key)) {
    WriteDocumentSummary(json, document, request.user);
  }
  json.EndArray();
  Response response;
  response.body = json.Take();
  return response;
}

}  // namespace

void AddWorkspaceRoutes(Router& router, const ServiceContext& context) {
  router.Add(
      "GET", "servlet/rest/v1/dkm/workspaces",
      [&context](const Request& request) { return List(context, request); },
      "one's own workspaces in the context `?contextId=`");
  router.Add(
      "GET", "servlet/rest/v1/dkm/workspaces/{id}/documents",
      [&context](const Request& request) { return Documents(context, request); }, "what a workspace holds");
}

}  // namespace vantry_sim
