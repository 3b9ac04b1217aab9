#include "documents/checkout/verify_checkout.h"

#include "base/checkout_id.h"
#include "documents/checkout/checkout.h"
#include "documents/checkout/undo_checkout.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

bool ReadAsItStands(const std::shared_ptr<VtConnection>& connection, const char* id, FileInfo& info,
                    VtCheckoutState& state) {
  return GetFileInfo(connection, id, info) == Ok && GetCheckoutState(connection, id, state);
}

// Whether the working copy is one, and stands in the workspace that the id names.
bool StandsInWorkspace(const std::shared_ptr<VtConnection>& connection, const CheckoutId& checkoutId) {
  const std::string& working = WorkingDocumentId(checkoutId);
  DocumentRecord record;
  bool isCopy = false;
  return ReadDocument(connection, working, record) == Ok && IsWorkingCopy(connection, record, isCopy) &&
         isCopy && WorkspaceHoldsDocument(connection, working, checkoutId.field1);
}

// What cannot be checked out again is reported as the undo left it.
bool Renew(const std::shared_ptr<VtConnection>& connection, const char* id, FileInfo& info,
           VtCheckoutState& state) {
  FileInfo undone;
  (void)UndoCheckoutDocument(connection, id, undone);
  if (!CheckoutDocument(connection, undone.id.c_str(), info)) info = undone;
  return GetCheckoutState(connection, info.id.c_str(), state);
}

}  // namespace

bool VerifyCheckout(const std::shared_ptr<VtConnection>& connection, const char* id, FileInfo& info,
                    VtCheckoutState& state) {
  const CheckoutId checkoutId = ParseCheckoutId(id);
  if (checkoutId.field1.empty() || StandsInWorkspace(connection, checkoutId)) {
    return ReadAsItStands(connection, id, info, state);
  }
  return checkoutId.temporary && Renew(connection, id, info, state);
}

}  // namespace lxservices::cms_interface::vantry
