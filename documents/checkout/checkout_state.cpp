#include "documents/checkout/checkout_state.h"

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/text.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {

bool GetCheckoutState(ServerContext& server, const char* id, VtCheckoutState& state) {
  const FailureStep step("ask where the checkout stands");
  const CheckoutId parsed = ParseCheckoutId(id);
  DocumentRecord record;
  if (ReadDocument(server, parsed.field0, record) != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", TextOrEmpty(id));
    return false;
  }
  state.checkedOut = record.isCheckout;
  state.checkedOutByYou = record.isCheckoutByYou;
  state.isLatest = record.isLatest;
  state.checkedOutBy = record.checkoutByUser;
  if (parsed.temporary) {
    state.inWorkspace = true;
    state.inUserWorkspace = false;
    return true;
  }
  bool isWorkingCopy = false;
  (void)IsWorkingCopy(server, record, isWorkingCopy);
  state.inWorkspace = isWorkingCopy;
  state.inUserWorkspace = isWorkingCopy;
  if (isWorkingCopy) {
    // The server does not count a document that was never checked in as checked out. To the host it is: it is
    // the connected user's alone, and a check-in is what it waits for.
    state.checkedOut = true;
    state.checkedOutByYou = true;
    state.isLatest = false;
  }
  return true;
}

}  // namespace lxservices::cms_interface::vantry
