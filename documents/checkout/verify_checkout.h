#pragma once

#include <optional>

#include "base/checkout_id.h"
#include "connection/server_context.h"
#include "documents/checkout/checkout_state.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// A checkout as the server has it now.
struct VerifiedCheckout {
  FileInfo info;
  VtCheckoutState state;
};

/// Looks a remembered checkout up on the server. One in a temporary workspace that is out of date is renewed:
/// undone and checked out again, which gives it another id. Requests on this thread.
/// @return nothing when the checkout no longer exists and is none to renew, or when its state cannot be read
[[nodiscard]] std::optional<VerifiedCheckout> VerifyCheckout(ServerContext& server, const CheckoutId& id);

}  // namespace lxservices::cms_interface::vantry
