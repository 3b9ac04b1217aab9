#include "documents/checkout/undo_checkout.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "documents/reading/document_reads.h"
#include "documents/storing/json_post.h"
#include "documents/workspaces/temporary_workspace.h"
#include "documents/workspaces/workspace_post.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

// The undo itself; nothing is sent when a temporary workspace no longer holds the copy. False when the
// refusal ends the operation, which it does in a workspace of the user's only.
bool UndoInWorkspace(ServerContext& server, const CheckoutId& checkoutId, DocumentRecord& result) {
  const std::string& id = WorkingDocumentId(checkoutId);
  const std::string& workspace = checkoutId.field1;
  if (checkoutId.temporary && !WorkspaceHoldsDocument(server, id, workspace)) return true;
  if (PostUndoCheckout(server, workspace, id, &result)) return true;
  TracerFor(Follows())(dp::TraceType::Error, "Failed to undo checkout of %s from temporary workspace %s\n",
                       id.c_str(), workspace.c_str());
  return checkoutId.temporary;
}

}  // namespace

bool UndoCheckoutDocument(ServerContext& server, const char* text, FileInfo& info) {
  const FailureStep step("undo the checkout");
  CheckoutId checkoutId;
  if (!ParseValidCheckoutId(text, checkoutId)) return false;
  DocumentRecord result;
  if (!UndoInWorkspace(server, checkoutId, result)) return false;
  // A refused undo does not keep the temporary workspace: deleting it is what frees the document, and the
  // caller is told of a success as long as the document can be read.
  if (checkoutId.temporary) DeleteTemporaryWorkspace(server, checkoutId.field1);
  if (result.id.empty() && ReadDocument(server, checkoutId.field0, result) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n",
                         checkoutId.field0.c_str());
    return false;
  }
  info = MakeFileInfo(result);
  info.id = FormatWorkspaceId(WorkspaceOf(checkoutId), result.id);
  return true;
}

bool PostUndoCheckout(ServerContext& server, const std::string& workspaceId, const std::string& documentId,
                      DocumentRecord* result) {
  JsonPost post(server, WorkspaceOperationPath(workspaceId, "undocheckout"), MakeObjectIdList(documentId));
  RestStream& response = post.response();
  if (!response.succeeded()) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to undo check-out of document with error %d : %s\n",
                         response.status(), response.errorText().c_str());
    return false;
  }
  if (result != nullptr) (void)ReadFirstDocument(response, *result);
  return true;
}

}  // namespace lxservices::cms_interface::vantry
