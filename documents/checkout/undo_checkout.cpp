#include "documents/checkout/undo_checkout.h"

#include <utility>

#include "base/failure_trace.h"
#include "documents/reading/document_reads.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/temporary_workspace.h"
#include "documents/workspaces/workspace_post.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The undo itself. A blank record, and nothing sent, when a temporary workspace no longer holds the copy;
// nothing when the refusal ends the operation, which it does in a workspace of the user's only.
std::optional<DocumentRecord> UndoInWorkspace(ServerContext& server, const CheckoutId& id) {
  const std::string& working = WorkingDocumentId(id);
  if (id.temporary && !WorkspaceHoldsDocument(server, working, id.workspace)) return DocumentRecord();
  if (auto undone = PostUndoCheckout(server, id.workspace, working)) return undone;
  TracerFor(Follows())(dp::TraceType::Error, "Failed to undo checkout of %s from temporary workspace %s\n",
                       working.c_str(), id.workspace.c_str());
  if (id.temporary) return DocumentRecord();
  return std::nullopt;
}

}  // namespace

std::optional<FileInfo> UndoCheckoutDocument(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("undo the checkout");
  if (!IsValidTraced(id)) return std::nullopt;
  auto result = UndoInWorkspace(server, id);
  if (!result) return std::nullopt;
  // A refused undo does not keep the temporary workspace: deleting it is what frees the document, and the
  // caller is told of a success as long as the document can be read.
  if (id.temporary) DeleteTemporaryWorkspace(server, id.workspace);
  if (result->id.empty() && HandOver(ReadDocument(server, id.document, *result), *result) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n",
                         id.document.c_str());
    return std::nullopt;
  }
  return MakeFileInfo(*result, FormatWorkspaceId(WorkspaceOf(id), result->id));
}

std::optional<DocumentRecord> PostUndoCheckout(ServerContext& server, const std::string& workspaceId,
                                               const std::string& documentId) {
  JsonPost post(server, WorkspaceOperationPath(workspaceId, "undocheckout"), MakeObjectIdList(documentId));
  RestStream& response = post.response();
  if (!response.succeeded()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to undo check-out of document with error %d : %s\n",
                         response.status(), response.errorText().c_str());
    return std::nullopt;
  }
  return ReadFirstDocument(response).value_or(DocumentRecord());
}

}  // namespace lxservices::cms_interface::vantry
