#pragma once

#include "connection/server_context.h"
#include "documents/checkout/checkout_state.h"
#include "documents/reading/file_info.h"

namespace lxservices::cms_interface::vantry {

/// Looks a remembered checkout up on the server. One in a temporary workspace that is out of date is renewed:
/// undone and checked out again, which gives it another id. Requests on this thread.
/// @param info   receives the summary of what is there now
/// @param state  receives its state
/// @return false when the checkout no longer exists and is none to renew, or when its state cannot be read
[[nodiscard]] bool VerifyCheckout(ServerContext& server, const char* id, FileInfo& info,
                                  VtCheckoutState& state);

}  // namespace lxservices::cms_interface::vantry
