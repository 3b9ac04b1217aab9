#include <string>

#include "base/checkout_id.h"
#include "base/failure_trace.h"
#include "base/file_name.h"
#include "public/address_text.h"
#include "public/object_address.h"
#include "public/path_resolution.h"
#include "public/vt_direct_manager.h"

namespace VtDirectManager {

using namespace lxservices::cms_interface;

namespace {

// The checkout service of a target; null without a server or the service.
CheckoutServer* CheckoutServerOf(const FileTarget& target) {
  return target.server != nullptr ? target.server->GetCheckoutServer() : nullptr;
}

// The UID to go on with after a checkout has ended: an answer without a document leaves the id that went in.
std::string UidBehindCheckout(const FileTarget& target, const FileInfo& info) {
  return info.id.empty() ? UidOfId(*target.server, target.id) : UidOfInfo(*target.server, info);
}

VtCheckoutStatus StatusOfState(const VtCheckoutState& state) {
  if (!state.checkedOut) return state.isLatest ? CheckoutNone : CheckoutNotPossible;
  if (!state.checkedOutByYou) return CheckoutByOther;
  if (!state.inWorkspace) return CheckoutByUserUnrecorded;
  return state.inUserWorkspace ? CheckoutInWorkspace : CheckoutInTempWorkspace;
}

// Anything but an intact checkout is told in the trace.
void TraceUnlessIntact(VtCheckoutStatus status, const char* path) {
  const char* reason = "";
  switch (status) {
    case CheckoutInWorkspace:
    case CheckoutInTempWorkspace:
      return;
    case CheckoutByUserUnrecorded:
      reason = " : checkout details differ from records";
      break;
    case CheckoutByOther:
      reason = " : file not checked out by user";
      break;
    case CheckoutNone:
      reason = " : file not checked out";
      break;
    default:
      break;
  }
  TracerFor({FailureKind::Conflict})(dp::TraceType::Error, "Failed to confirm checkout of %s%s\n", path,
                                     reason);
}

}  // namespace

std::string Checkout(const char* path) {
  const FailureStep step("check out");
  const FailureMark mark;
  const FileTarget target = ResolveFileTarget(path, {}, 0);
  CheckoutServer* checkout = CheckoutServerOf(target);
  if (checkout == nullptr) return {};
  FileInfo info;
  if (checkout->Checkout(target.id.c_str(), info)) return UidOfInfo(*target.server, info);
  TracerFor(FollowsOr(mark, FailureKind::Refused))(dp::TraceType::Error, "Failed to checkout file %s", path);
  return {};
}

std::string Checkin(const char* path) {
  const FailureStep step("check in");
  const FailureMark mark;
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  CheckoutServer* checkout = CheckoutServerOf(target);
  if (checkout == nullptr) return {};
  FileInfo info;
  if (checkout->Checkin(target.id.c_str(), info)) return UidBehindCheckout(target, info);
  TracerFor(FollowsOr(mark, FailureKind::Refused))(dp::TraceType::Error, "Failed to check-in file %s", path);
  return {};
}

std::string UndoCheckout(const char* path) {
  const FailureStep step("undo the checkout");
  const FailureMark mark;
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  CheckoutServer* checkout = CheckoutServerOf(target);
  if (checkout == nullptr) return {};
  FileInfo info;
  if (checkout->UndoCheckout(target.id.c_str(), info)) return UidBehindCheckout(target, info);
  TracerFor(FollowsOr(mark, FailureKind::Refused))(dp::TraceType::Error, "Failed to undo checkout of file %s",
                                                   path);
  return {};
}

VtCheckoutStatus GetCheckoutStatus(const char* path, std::string* user) {
  const FailureStep step("ask where the checkout stands");
  const FileTarget target = ResolveFileTarget(path, {}, ResolveQuiet);
  if (target.server == nullptr) return CheckoutStatusFailed;
  CheckoutServer* checkout = CheckoutServerOf(target);
  if (checkout == nullptr) return CheckoutUnsupported;
  VtCheckoutState state;
  if (!checkout->GetCheckoutState(target.id.c_str(), state)) return CheckoutStatusFailed;
  if (user != nullptr && state.checkedOut) *user = state.checkedOutBy;
  return StatusOfState(state);
}

VtCheckoutStatus VerifyCheckout(const char* text, std::string& uid) {
  const FailureStep step("verify the checkout");
  const FailureMark mark;
  // A host may hand in the text that is written over.
  const std::string address = text != nullptr ? text : "";
  const char* path = address.c_str();
  uid.clear();
  if (text == nullptr) return CheckoutStatusFailed;
  const FileTarget target = ResolveFileTarget(path, {}, ResolveNeedId);
  if (target.server == nullptr) return CheckoutStatusFailed;
  CheckoutServer* checkout = CheckoutServerOf(target);
  if (checkout == nullptr) return CheckoutUnsupported;
  FileInfo info;
  VtCheckoutState state;
  if (!checkout->VerifyCheckout(target.id.c_str(), info, state)) {
    TracerFor(FollowsOr(mark, FailureKind::Conflict))(dp::TraceType::Error,
                                                      "Failed to confirm checkout of %s\n", path);
    return CheckoutStatusFailed;
  }
  uid = UidOfInfo(*target.server, info);
  const VtCheckoutStatus status = StatusOfState(state);
  TraceUnlessIntact(status, path);
  return status;
}

std::string ConvertLegacyCheckout(const char* uid, const char* legacy) {
  if (uid == nullptr || *uid == '\0') return {};
  if (legacy == nullptr || *legacy == '\0') return uid;
  const UidParts parts = SplitUid(uid);
  if (parts.base.empty() || parts.id.empty()) return uid;
  const std::string text = legacy;
  const auto separator = text.find('|');
  std::string id;
  if (separator != std::string::npos) {
    id = vantry::FormatTemporaryCheckoutId(text.substr(0, separator), parts.id, text.substr(separator + 1));
  }
  const std::string name = UnescapeFileName(GetFileName(uid));
  return MakeUid(parts.base, id, name);
}

}  // namespace VtDirectManager
