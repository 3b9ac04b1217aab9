#include "documents/checkout/checkin.h"

#include "base/failure_trace.h"
#include "base/tracers.h"
#include "documents/storing/conflict_resolution.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/temporary_workspace.h"
#include "documents/workspaces/workspace_post.h"

namespace lxservices::cms_interface::vantry {
namespace {

rapidjson::Document MakeCheckinBody(const std::string& documentId, AfterCheckin after,
                                    const std::optional<std::string>& comment) {
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  rapidjson::Value instruction(rapidjson::kObjectType);
  instruction.AddMember("id", MakeText(documentId, allocator), allocator);
  rapidjson::Value instructions(rapidjson::kArrayType);
  instructions.PushBack(instruction, allocator);
  body.AddMember("checkinInstructions", instructions, allocator);
  if (after == AfterCheckin::LeavesWorkspace) body.AddMember("removeFromWorkspace", true, allocator);
  if (comment) body.AddMember("checkinComment", MakeText(*comment, allocator), allocator);
  rapidjson::Value resolutions(rapidjson::kArrayType);
  resolutions.PushBack(MakeResolution(allocator, checkinResolution, documentId), allocator);
  body.AddMember("conflictResolutions", resolutions, allocator);
  return body;
}

}  // namespace

std::optional<FileInfo> CheckinDocument(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("check in");
  if (!IsValidTraced(id)) return std::nullopt;
  const std::string& working = WorkingDocumentId(id);
  const auto after = id.temporary ? AfterCheckin::LeavesWorkspace : AfterCheckin::StaysInWorkspace;
  const auto result = PostCheckin(server, id.workspace, working, after);
  // The lines were made for a workspace number. A workspace's id is a text, so the text is written.
  if (!result) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to check-in document id %s on workspace %s\n",
                         working.c_str(), id.workspace.c_str());
    return std::nullopt;
  }
  VtDirectTracer()(dp::TraceType::Miss, "Checked-in document id %s on workspace %s giving id %s\n",
                   working.c_str(), id.workspace.c_str(), result->id.c_str());
  if (id.temporary) DeleteTemporaryWorkspace(server, id.workspace);
  return MakeFileInfo(*result, FormatWorkspaceId(WorkspaceOf(id), result->id));
}

std::optional<DocumentRecord> PostCheckin(ServerContext& server, const std::string& workspaceId,
                                          const std::string& documentId, AfterCheckin after,
                                          const std::optional<std::string>& comment) {
  JsonPost post(server, WorkspaceOperationPath(workspaceId, "checkin"),
                MakeCheckinBody(documentId, after, comment));
  RestStream& response = post.response();
  if (!response.succeeded()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to check-in document with error %d : %s\n",
                         response.status(), response.errorText().c_str());
    return std::nullopt;
  }
  return ReadFirstDocument(response).value_or(DocumentRecord());
}

}  // namespace lxservices::cms_interface::vantry
