#include "hosts/cli/checkouts/presence.h"

#include <vtdirect/outcome.h>
#include <vtdirect/vt_direct_manager.h>

#include <random>
#include <string_view>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/failures/reasons.h"
#include "hosts/cli/program/interruption.h"

namespace vtdirect_cli {
namespace {

constexpr int mostTries = 5;

// Five letters and digits by chance, so that runs within one second meet in one of sixty million cases.
[[nodiscard]] std::string PartOfThisTry() {
  constexpr std::string_view digits = "0123456789abcdefghijklmnopqrstuvwxyz";
  std::random_device random;
  std::string part;
  for (int i = 0; i < 5; ++i) part += digits[random() % digits.size()];
  return part;
}

/// Gives new temporary workspaces a name of this try's own. It begins as all of them do, so that every client
/// knows it for what it is. Only while it lives: the library would take what other runs have made for
/// workspaces of the user's own.
class WorkspacePrefix {
 public:
  WorkspacePrefix() {
    const std::string prefix = "FenloomTMP" + PartOfThisTry();
    VtDirectManager::SetAppConfig(VtDirectManager::ConfigTempWorkspacePrefix, prefix.c_str());
  }
  ~WorkspacePrefix() { VtDirectManager::SetAppConfig(VtDirectManager::ConfigTempWorkspacePrefix, nullptr); }
  WorkspacePrefix(const WorkspacePrefix&) = delete;
  WorkspacePrefix& operator=(const WorkspacePrefix&) = delete;
};

[[nodiscard]] bool NameWasTaken() {
  const auto reason = LastReason();
  return reason && reason->step == VtDirectManager::stepCreateWorkspace &&
         reason->kind == VtDirectManager::FailureKind::Conflict;
}

}  // namespace

Presence PresenceOf(const std::string& uid) {
  const VtDirectManager::Outcome outcome;
  if (VtDirectManager::FileExists(uid.c_str())) return Presence::There;
  const auto cause = outcome.Cause();
  const bool isGone =
      cause && cause->kind == VtDirectManager::FailureKind::NotFound && cause->httpStatus == 404;
  return isGone ? Presence::Gone : Presence::NotKnown;
}

CheckoutState StateOfTemporaryCopy(const std::string& uid) {
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

Presence PresenceOfWorkingCopy(const std::string& workingCopy) {
  if (!IsTemporaryCopy(workingCopy)) return PresenceOf(workingCopy);
  switch (StateOfTemporaryCopy(workingCopy).status) {
    case VtDirectManager::CheckoutInTempWorkspace:
      return Presence::There;
    case VtDirectManager::CheckoutStatusFailed:
    case VtDirectManager::CheckoutUnsupported:
      return Presence::NotKnown;
    default:
      return Presence::Gone;
  }
}

std::string CheckOutDocument(const std::string& document) {
  for (int tries = 1;; ++tries) {
    ForgetReasons();
    const WorkspacePrefix prefix;
    const std::string uid = VtDirectManager::Checkout(document.c_str());
    if (HasObjectId(uid)) return uid;
    if (tries == mostTries || !NameWasTaken() || Interrupted()) return {};
  }
}

}  // namespace vtdirect_cli
