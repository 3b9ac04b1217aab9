#include "documents/checkout/verify_checkout.h"

#include "base/checkout_id.h"
#include "base/failure_step.h"
#include "documents/checkout/checkout.h"
#include "documents/checkout/undo_checkout.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

bool ReadAsItStands(ServerContext& server, const char* id, FileInfo& info, VtCheckoutState& state) {
  return GetFileInfo(server, id, info) == Ok && GetCheckoutState(server, id, state);
}

// Whether the working copy is one, and is in the workspace that the id names.
bool StandsInWorkspace(ServerContext& server, const CheckoutId& checkoutId) {
  const std::string& working = WorkingDocumentId(checkoutId);
  DocumentRecord record;
  bool isCopy = false;
  return ReadDocument(server, working, record) == Ok && IsWorkingCopy(server, record, isCopy) && isCopy &&
         WorkspaceHoldsDocument(server, working, checkoutId.field1);
}

// What cannot be checked out again is reported as the undo left it.
bool Renew(ServerContext& server, const char* id, FileInfo& info, VtCheckoutState& state) {
  FileInfo undone;
  (void)UndoCheckoutDocument(server, id, undone);
  if (!CheckoutDocument(server, undone.id.c_str(), info)) info = undone;
  return GetCheckoutState(server, info.id.c_str(), state);
}

}  // namespace

bool VerifyCheckout(ServerContext& server, const char* id, FileInfo& info, VtCheckoutState& state) {
  const FailureStep step("verify the checkout");
  const CheckoutId checkoutId = ParseCheckoutId(id);
  if (checkoutId.field1.empty() || StandsInWorkspace(server, checkoutId)) {
    return ReadAsItStands(server, id, info, state);
  }
  return checkoutId.temporary && Renew(server, id, info, state);
}

}  // namespace lxservices::cms_interface::vantry
