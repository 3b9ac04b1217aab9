#pragma once

#include <vtdirect/vt_direct_manager.h>

#include <cstdint>
#include <string>

namespace vtdirect_cli {

/// The state of a checkout.
struct CheckoutState {
  VtDirectManager::VtCheckoutStatus status = VtDirectManager::CheckoutStatusFailed;
  std::string user;  ///< who holds it; empty without one
};

/// Asks the server. Makes requests.
/// @return CheckoutStatusFailed also for an answer that could not be read
[[nodiscard]] CheckoutState ReadCheckoutState(const std::string& address);

/// The word for a VtCheckoutStatus: none, by-you, by-other, temporary-workspace, workspace, not-possible,
/// unsupported or unknown.
[[nodiscard]] const char* CheckoutWord(std::int32_t status);

/// Whether it is that of a working copy of the connected user's, in a workspace of either kind.
[[nodiscard]] bool IsWorkingCopy(VtDirectManager::VtCheckoutStatus status);

/// Whether the user has it checked out no more, so that what is kept of a checkout has ended.
[[nodiscard]] bool HasEnded(VtDirectManager::VtCheckoutStatus status);

}  // namespace vtdirect_cli
