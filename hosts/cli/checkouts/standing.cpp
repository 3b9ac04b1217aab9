#include "hosts/cli/checkouts/standing.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include "hosts/cli/checkouts/kept_checkout.h"

namespace vtdirect_cli {

Presence PresenceOf(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  if (VtDirectManager::FileExists(uid.c_str())) return Presence::There;
  const auto cause = outcome.Cause();
  const bool isGone =
      cause && cause->kind == VtDirectManager::FailureKind::NotFound && cause->httpStatus == 404;
  return isGone ? Presence::Gone : Presence::NotKnown;
}

CheckoutState StandingOfTemporaryCopy(const std::string& uid) {
  // The state of a temporary checkout is that of the document that it was taken from.
  CheckoutState state = ReadCheckoutState(uid);
  if (state.status != VtDirectManager::CheckoutInTempWorkspace) return state;
  switch (PresenceOf(ByOwnId(uid))) {
    case Presence::There:
      return state;
    case Presence::Gone:
      state.status = VtDirectManager::CheckoutByUserUnrecorded;
      return state;
    default:
      return {};
  }
}

}  // namespace vtdirect_cli
