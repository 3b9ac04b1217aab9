#include "documents/checkout/checkout.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/text.h"
#include "base/tracers.h"
#include "documents/reading/document_reads.h"
#include "documents/storing/conflict_resolution.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/temporary_workspace.h"
#include "documents/workspaces/workspace_post.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The workspace for a checkout that named none; empty, traced, when it cannot be made.
std::string MakeWorkspaceTraced(ServerContext& server, const std::string& contextId) {
  const FailureMark mark;
  std::string workspace = CreateTemporaryWorkspace(server, contextId);
  if (workspace.empty()) {
    TracerFor(FollowsOr(mark, FailureKind::Refused))(dp::TraceType::Error,
                                                     "Failed to create temporary workspace\n");
  } else {
    VtDirectTracer()(dp::TraceType::Miss, "Created temporary workspace %s\n", workspace.c_str());
  }
  return workspace;
}

rapidjson::Document MakeCheckoutBody(const std::string& documentId, const std::string* masterId) {
  rapidjson::Document body = MakeObjectIdList(documentId);
  auto& allocator = body.GetAllocator();
  body.AddMember("dependenciesOption", "None", allocator);
  if (masterId == nullptr) return body;
  rapidjson::Value resolutions(rapidjson::kArrayType);
  resolutions.PushBack(MakeResolution(allocator, checkoutResolution, *masterId), allocator);
  body.AddMember("conflictResolutions", resolutions, allocator);
  return body;
}

}  // namespace

bool CheckoutDocument(ServerContext& server, const char* id, FileInfo& info) {
  const FailureStep step("check out");
  const CheckoutId checkoutId = ParseCheckoutId(id);
  DocumentRecord record;
  if (ReadDocument(server, checkoutId.field0, record) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to find document id %s\n", TextOrEmpty(id));
    return false;
  }
  if (record.isCheckout) {
    TracerFor({FailureKind::Conflict})(dp::TraceType::Error, "Document %s is already checked out\n",
                                       TextOrEmpty(id));
    return false;
  }
  const bool temporary = checkoutId.field1.empty();
  const std::string workspace = temporary ? MakeWorkspaceTraced(server, record.contextId) : checkoutId.field1;
  if (workspace.empty()) return false;
  DocumentRecord result;
  if (!PostCheckout(server, workspace, checkoutId.field0, result, &record.master.id)) {
    if (temporary) DeleteTemporaryWorkspace(server, workspace);
    return false;
  }
  info = MakeFileInfo(result);
  // After an answer without a working copy the temporary form is empty and the workspace form is not.
  info.id = temporary ? FormatTemporaryCheckoutId(workspace, checkoutId.field0, result.id)
                      : FormatWorkspaceId(workspace, result.id);
  return true;
}

bool PostCheckout(ServerContext& server, const std::string& workspaceId, const std::string& documentId,
                  DocumentRecord& result, const std::string* masterId) {
  JsonPost post(server, WorkspaceOperationPath(workspaceId, "checkout"),
                MakeCheckoutBody(documentId, masterId));
  RestStream& response = post.response();
  // A success whose body is no JSON is traced as a failure and still a success: the document is checked out.
  if (!response.succeeded() || !ReadFirstDocument(response, result)) {
    TracerFor(Follows())(
        dp::TraceType::Error, "Failed to checkout document %s to workspace %s with error %d : %s\n",
        documentId.c_str(), workspaceId.c_str(), response.status(), response.errorText().c_str());
  }
  return response.succeeded();
}

}  // namespace lxservices::cms_interface::vantry
