#include "documents/checkout/checkout_state.h"

#include "base/failure_trace.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"

namespace lxservices::cms_interface::vantry {

std::optional<VtCheckoutState> GetCheckoutState(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("ask where the checkout stands");
  const auto [status, record] = ReadDocument(server, id.document);
  if (status != Ok) {
    TracerFor(Follows())(dp::TraceType::Error, "Failed to locate document %s on server\n", id.text.c_str());
    return std::nullopt;
  }
  VtCheckoutState state;
  state.checkedOut = record.isCheckout;
  state.checkedOutByYou = record.isCheckoutByYou;
  state.isLatest = record.isLatest;
  state.checkedOutBy = record.checkoutByUser;
  if (id.temporary) {
    state.inWorkspace = true;
    return state;
  }
  const bool isWorkingCopy = IsWorkingCopy(server, record).value_or(false);
  state.inWorkspace = isWorkingCopy;
  state.inUserWorkspace = isWorkingCopy;
  if (isWorkingCopy) {
    // The server does not count a document that was never checked in as checked out. To the host it is: it is
    // the connected user's alone, and a check-in is what it waits for.
    state.checkedOut = true;
    state.checkedOutByYou = true;
    state.isLatest = false;
  }
  return state;
}

}  // namespace lxservices::cms_interface::vantry
