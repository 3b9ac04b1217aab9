#include "simulator/routes/routes.h"
#include "simulator/routes/write_route.h"
#include "simulator/store/checkouts.h"
#include "simulator/store/folder_store.h"
#include "simulator/store/workspace_store.h"
#include "simulator/wire/json.h"
#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

Response Create(const ServiceContext& context, const Request& request, JsonValue body) {
  std::string problem, name, contextId, description;
  JsonMembers members(body, problem);
  members.Text("name", name, Presence::Required)
      .Text("contextId", contextId, Presence::Required)
      .Text("description", description);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  const auto place = ContextKey(context.database, contextId);
  if (!place) return ErrorResponse(404, "no-such-context", "no context with this id");
  for (const WorkspaceRow& other : WorkspacesOf(context.database, contextId, request.user)) {
    if (other.name == name)
      return ErrorResponse(409, "name-taken", "the user has a workspace of this name: " + other.oid);
  }
  const WorkspaceRow made = MakeWorkspace(context.database, *place, request.user, name, description);
  JsonText json;
  json.StartObject().Member("id", made.oid).Member("name", name).Member("description", description);
  json.Member("contextId", contextId).EndObject();
  Response response;
  response.body = json.Take();
  return response;
}

Response Delete(const ServiceContext& context, const Request& request, JsonValue body) {
  if (!body.IsArray()) return ErrorResponse(400, "bad-body", "the body is an array");
  const auto workspace = FindWorkspace(context.database, request.Path("id"), request.user);
  if (!workspace) return ErrorResponse(404, "no-such-workspace", "this user has no workspace with this id");
  DeleteWorkspace(context.database, *workspace);
  Response response;
  response.body = "[]";
  return response;
}

}  // namespace

void AddWorkspaceWriteRoutes(Router& router, const ServiceContext& context) {
  AddWrite(
      router, context,
      {"servlet/rest/v1/dkm/workspaces",
       "`name`, `contextId`, `description`: the workspace; 409 for a name that its user has in the context"},
      [&context](const Request& request, JsonValue body) { return Create(context, request, body); });
  AddWrite(router, context,
           {"servlet/rest/v1/dkm/workspaces/{id}/delete",
            "`[]`: working copies in it are thrown away, and documents that were never checked in"},
           [&context](const Request& request, JsonValue body) { return Delete(context, request, body); });
}

}  // namespace vantry_sim
