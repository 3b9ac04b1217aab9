#include "documents/checkout/verify_checkout.h"

#include <utility>

#include "base/failure_step.h"
#include "documents/checkout/checkout.h"
#include "documents/checkout/undo_checkout.h"
#include "documents/checkout/working_copy.h"
#include "documents/reading/document_reads.h"
#include "documents/workspaces/workspaces.h"

namespace lxservices::cms_interface::vantry {
namespace {

std::optional<VerifiedCheckout> WithState(ServerContext& server, const CheckoutId& id, FileInfo info) {
  auto state = GetCheckoutState(server, id);
  if (!state) return std::nullopt;
  return VerifiedCheckout{std::move(info), std::move(*state)};
}

std::optional<VerifiedCheckout> ReadAsItStands(ServerContext& server, const CheckoutId& id) {
  auto [status, info] = GetFileInfo(server, id);
  if (status != Ok) return std::nullopt;
  return WithState(server, id, std::move(info));
}

// Whether the working copy is one, and is in the workspace that the id names.
bool IsInItsWorkspace(ServerContext& server, const CheckoutId& id) {
  const std::string& working = WorkingDocumentId(id);
  const auto [status, record] = ReadDocument(server, working);
  return status == Ok && IsWorkingCopy(server, record).value_or(false) &&
         WorkspaceHoldsDocument(server, working, id.workspace);
}

// What cannot be checked out again is reported as the undo left it.
std::optional<VerifiedCheckout> Renew(ServerContext& server, const CheckoutId& id) {
  FileInfo info = UndoCheckoutDocument(server, id).value_or(FileInfo());
  if (auto renewed = CheckoutDocument(server, ParseCheckoutId(info.id))) info = std::move(*renewed);
  const CheckoutId current = ParseCheckoutId(info.id);
  return WithState(server, current, std::move(info));
}

}  // namespace

std::optional<VerifiedCheckout> VerifyCheckout(ServerContext& server, const CheckoutId& id) {
  const FailureStep step("verify the checkout");
  if (id.workspace.empty() || IsInItsWorkspace(server, id)) return ReadAsItStands(server, id);
  return id.temporary ? Renew(server, id) : std::nullopt;
}

}  // namespace lxservices::cms_interface::vantry
