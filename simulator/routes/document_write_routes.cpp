#include <functional>

#include "simulator/routes/routes.h"
#include "simulator/routes/write_route.h"
#include "simulator/store/document_writer.h"
#include "simulator/store/documents_answer.h"
#include "simulator/wire/json_members.h"

namespace vantry_sim {
namespace {

using WriteOne = std::function<OrRefusal<std::string>(const DocumentInstruction&)>;

/// Carries out all instructions, or none of them, and answers with the documents that came of it.
Response WriteAll(const ServiceContext& context, const Request& request, JsonValue body, const char* member,
                  const WriteOne& write) {
  auto instructions = ReadInstructions(body, member);
  if (!instructions) return instructions.TakeRefusal();
  std::vector<std::string> oids;
  for (const DocumentInstruction& instruction : *instructions) {
    auto oid = write(instruction);
    if (!oid) return oid.TakeRefusal();
    oids.push_back(std::move(*oid));
  }
  return DocumentsResponse(context, request, oids);
}

Response Documents(const ServiceContext& context, const Request& request, JsonValue body) {
  std::string problem, contextId;
  JsonMembers members(body, problem);
  members.Text("contextId", contextId, Presence::Required);
  if (!problem.empty()) return ErrorResponse(400, "bad-body", problem);
  Resolutions resolutions;
  if (auto refusal = resolutions.Read(body)) return std::move(*refusal);
  Database& database = context.database;
  const bool creates = members.Has("createInstructions");
  if (creates == members.Has("iterateInstructions")) {
    return ErrorResponse(400, "bad-body", "the body has either createInstructions or iterateInstructions");
  }
  if (creates) {
    return WriteAll(context, request, body, "createInstructions",
                    [&](const DocumentInstruction& instruction) {
                      return CreateDocument(database, request.user, contextId, instruction);
                    });
  }
  return WriteAll(context, request, body, "iterateInstructions", [&](const DocumentInstruction& instruction) {
    return IterateDocument(database, request.user, contextId, instruction, resolutions);
  });
}

Response Store(const ServiceContext& context, const Request& request, JsonValue body) {
  const auto workspace = FindWorkspace(context.database, request.Path("id"), request.user);
  if (!workspace) return ErrorResponse(404, "no-such-workspace", "this user has no workspace with this id");
  Resolutions resolutions;
  if (auto refusal = resolutions.Read(body)) return std::move(*refusal);
  Database& database = context.database;
  return WriteAll(context, request, body, "storeInstructions", [&](const DocumentInstruction& instruction) {
    return instruction.id.empty()
               ? CreateDocumentInWorkspace(database, {request.user, *workspace}, instruction)
               : StoreDocument(database, {request.user, *workspace}, instruction, resolutions);
  });
}

}  // namespace

void AddDocumentWriteRoutes(Router& router, const ServiceContext& context) {
  AddWrite(router, context,
           {"servlet/rest/v1/dkm/documents",
            "`createInstructions` or `iterateInstructions`, `contextId`, `conflictResolutions`: the new "
            "documents or iterations"},
           [&context](const Request& request, JsonValue body) { return Documents(context, request, body); });
  AddWrite(router, context,
           {"servlet/rest/v1/dkm/workspaces/{id}/store",
            "`storeInstructions`, `conflictResolutions`: working copies with new contents under their old "
            "ids; new documents for instructions without an id"},
           [&context](const Request& request, JsonValue body) { return Store(context, request, body); });
}

}  // namespace vantry_sim
