#include "simulator/routes/routes.h"
#include "simulator/routes/write_route.h"
#include "simulator/store/checkouts.h"
#include "simulator/store/documents_answer.h"
#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

using Operation = Response (*)(const ServiceContext&, const Request&, JsonValue, const WorkspaceRow&);

/// The ids of `objIdList`.
OrRefusal<std::vector<std::string>> ReadIds(JsonValue body) {
  std::vector<std::string> ids;
  std::string problem;
  const JsonValue list = JsonMembers(body, problem).Array("objIdList", Presence::Required);
  if (problem.empty() && list.Size() == 0) problem = "objIdList is empty";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  for (const JsonValue value : list) {
    if (!value.IsText()) return ErrorResponse(400, "bad-body", "objIdList holds what is no text");
    ids.emplace_back(value.Text());
  }
  return ids;
}

Response CheckOutAll(const ServiceContext& context, const Request& request, JsonValue body,
                     const WorkspaceRow& workspace) {
  auto ids = ReadIds(body);
  if (!ids) return ids.TakeRefusal();
  std::string problem, dependencies;
  JsonMembers(body, problem).Text("dependenciesOption", dependencies);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  if (!dependencies.empty() && dependencies != "None") {
    return ErrorResponse(501, "not-implemented", "dependenciesOption is None");
  }
  Resolutions resolutions;
  if (auto refusal = resolutions.Read(body)) return std::move(*refusal);
  std::vector<std::string> working;
  for (const std::string& id : *ids) {
    auto copy = CheckOut(context.database, {request.user, workspace}, id, resolutions);
    if (!copy) return copy.TakeRefusal();
    working.push_back(std::move(*copy));
  }
  return DocumentsResponse(context, request, working);
}

Response CheckInAll(const ServiceContext& context, const Request& request, JsonValue body,
                    const WorkspaceRow& workspace) {
  std::string problem;
  CheckInOrder order;
  JsonMembers members(body, problem);
  members.Flag("removeFromWorkspace", order.removeFromWorkspace).Text("checkinComment", order.comment);
  const JsonValue instructions = members.Array("checkinInstructions", Presence::Required);
  if (problem.empty() && instructions.Size() == 0) problem = "checkinInstructions is empty";
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  Resolutions resolutions;
  if (auto refusal = resolutions.Read(body)) return std::move(*refusal);
  std::vector<std::string> oids;
  for (const JsonValue instruction : instructions) {
    std::string id;
    JsonMembers(instruction, problem).Text("id", id, Presence::Required);
    if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
    auto oid = CheckIn(context.database, {request.user, workspace}, id, order, resolutions);
    if (!oid) return oid.TakeRefusal();
    oids.push_back(std::move(*oid));
  }
  return DocumentsResponse(context, request, oids);
}

Response UndoAll(const ServiceContext& context, const Request& request, JsonValue body,
                 const WorkspaceRow& workspace) {
  auto ids = ReadIds(body);
  if (!ids) return ids.TakeRefusal();
  std::vector<std::string> oids;
  for (const std::string& id : *ids) {
    auto base = UndoCheckOut(context.database, {request.user, workspace}, id);
    if (!base) return base.TakeRefusal();
    oids.push_back(std::move(*base));
  }
  return DocumentsResponse(context, request, oids);
}

void Add(Router& router, const ServiceContext& context, const char* word, const char* about,
         Operation operation) {
  AddWrite(router, context, {std::string("servlet/rest/v1/dkm/workspaces/{id}/") + word, about},
           [&context, operation](const Request& request, JsonValue body) {
             const auto workspace = FindWorkspace(context.database, request.Path("id"), request.user);
             if (workspace) return operation(context, request, body, *workspace);
             return ErrorResponse(404, "no-such-workspace", "this user has no workspace with this id");
           });
}

}  // namespace

void AddCheckoutRoutes(Router& router, const ServiceContext& context) {
  Add(router, context, "checkout",
      "`objIdList`, `dependenciesOption` `None`, `conflictResolutions`: working copies, each under an id of "
      "its own with the document's version",
      CheckOutAll);
  Add(router, context, "checkin",
      "`checkinInstructions` with `id`, `removeFromWorkspace`, `checkinComment`, `conflictResolutions`: the "
      "new iterations, under new ids",
      CheckInAll);
  Add(router, context, "undocheckout", "`objIdList`: the documents that the working copies were taken from",
      UndoAll);
}

}  // namespace vantry_sim
