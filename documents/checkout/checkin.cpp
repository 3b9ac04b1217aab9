#include "documents/checkout/checkin.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/tracers.h"
#include "documents/storing/conflict_resolution.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/temporary_workspace.h"
#include "documents/workspaces/workspace_post.h"

namespace lxservices::cms_interface::vantry {
namespace {

rapidjson::Document MakeCheckinBody(const std::string& documentId, const char* comment,
                                    bool removeFromWorkspace) {
  rapidjson::Document body(rapidjson::kObjectType);
  auto& allocator = body.GetAllocator();
  rapidjson::Value instruction(rapidjson::kObjectType);
  instruction.AddMember("id", MakeText(documentId, allocator), allocator);
  rapidjson::Value instructions(rapidjson::kArrayType);
  instructions.PushBack(instruction, allocator);
  body.AddMember("checkinInstructions", instructions, allocator);
  if (removeFromWorkspace) body.AddMember("removeFromWorkspace", true, allocator);
  if (comment != nullptr) body.AddMember("checkinComment", MakeText(comment, allocator), allocator);
  rapidjson::Value resolutions(rapidjson::kArrayType);
  resolutions.PushBack(MakeResolution(allocator, checkinResolution, documentId), allocator);
  body.AddMember("conflictResolutions", resolutions, allocator);
  return body;
}

}  // namespace

bool CheckinDocument(ServerContext& server, const char* text, FileInfo& info) {
  const FailureStep step("check in");
  CheckoutId checkoutId;
  if (!ParseValidCheckoutId(text, checkoutId)) return false;
  const std::string& id = WorkingDocumentId(checkoutId);
  const std::string& workspace = checkoutId.field1;
  DocumentRecord result;
  // The lines were made for a workspace number. A workspace's id is a text, so the text is written.
  if (!PostCheckin(server, workspace, id, nullptr, checkoutId.temporary, &result)) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to check-in document id %s on workspace %s\n",
                         id.c_str(), workspace.c_str());
    return false;
  }
  VtDirectTracer()(dp::TraceType::Miss, "Checked-in document id %s on workspace %s giving id %s\n",
                   id.c_str(), workspace.c_str(), result.id.c_str());
  if (checkoutId.temporary) DeleteTemporaryWorkspace(server, workspace);
  info = MakeFileInfo(result);
  info.id = FormatWorkspaceId(WorkspaceOf(checkoutId), result.id);
  return true;
}

bool PostCheckin(ServerContext& server, const std::string& workspaceId, const std::string& documentId,
                 const char* comment, bool removeFromWorkspace, DocumentRecord* result) {
  JsonPost post(server, WorkspaceOperationPath(workspaceId, "checkin"),
                MakeCheckinBody(documentId, comment, removeFromWorkspace));
  RestStream& response = post.response();
  if (!response.succeeded()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to check-in document with error %d : %s\n",
                         response.status(), response.errorText().c_str());
    return false;
  }
  if (result != nullptr) (void)ReadFirstDocument(response, *result);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
