#include "documents/checkout/checkout.h"

#include "base/failure_trace.h"
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

rapidjson::Document MakeCheckoutBody(const std::string& documentId,
                                     const std::optional<std::string>& masterId) {
  rapidjson::Document body = MakeObjectIdList(documentId);
  auto& allocator = body.GetAllocator();
  body.AddMember("dependenciesOption", "None", allocator);
  if (!masterId) return body;
  rapidjson::Value resolutions(rapidjson::kArrayType);
  resolutions.PushBack(MakeResolution(allocator, checkoutResolution, *masterId), allocator);
  body.AddMember("conflictResolutions", resolutions, allocator);
  return body;
}

}  // namespace

std::optional<FileInfo> CheckoutDocument(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("check out");
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to find document id %s\n", id.text.c_str());
    return std::nullopt;
  }
  if (record.isCheckout) {
    TracerFor({FailureKind::Conflict})(dp::TraceType::Error, "Document %s is already checked out\n",
                                       id.text.c_str());
    return std::nullopt;
  }
  const bool temporary = id.workspace.empty();
  const std::string workspace = temporary ? MakeWorkspaceTraced(server, record.contextId) : id.workspace;
  if (workspace.empty()) return std::nullopt;
  const auto copy = PostCheckout(server, workspace, id.document, record.master.id);
  if (!copy) {
    if (temporary) DeleteTemporaryWorkspace(server, workspace);
    return std::nullopt;
  }
  // After an answer without a working copy the temporary form is empty and the workspace form is not.
  return MakeFileInfo(*copy, temporary ? FormatTemporaryCheckoutId(workspace, id.document, copy->id)
                                       : FormatWorkspaceId(workspace, copy->id));
}

std::optional<DocumentRecord> PostCheckout(ServerContext& server, const std::string& workspaceId,
                                           const std::string& documentId,
                                           const std::optional<std::string>& masterId) {
  JsonPost post(server, WorkspaceOperationPath(workspaceId, "checkout"),
                MakeCheckoutBody(documentId, masterId));
  RestStream& response = post.response();
  // A success whose body is no JSON is traced as a failure and still a success: the document is checked out.
  std::optional<DocumentRecord> copy;
  if (response.succeeded()) copy = ReadFirstDocument(response);
  if (!copy) {
    TracerFor(Follows())(
        dp::TraceType::Error, "Failed to checkout document %s to workspace %s with error %d : %s\n",
        documentId.c_str(), workspaceId.c_str(), response.status(), response.errorText().c_str());
  }
  if (!response.succeeded()) return std::nullopt;
  return copy.value_or(DocumentRecord());
}

}  // namespace lxservices::cms_interface::vantry
