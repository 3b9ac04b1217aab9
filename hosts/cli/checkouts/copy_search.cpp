#include "hosts/cli/checkouts/copy_search.h"

#include <vector>

#include "hosts/cli/checkouts/kept_checkout.h"
#include "hosts/cli/checkouts/presence.h"
#include "hosts/cli/checkouts/storing_failure.h"
#include "hosts/cli/failures/diagnosis.h"
#include "hosts/cli/failures/reasons.h"

namespace vtdirect_cli {
namespace {

constexpr const char* againAdvice = "the same command can be given again";

using Copies = std::vector<VtDirectManager::TemporaryCheckout>;

[[nodiscard]] Failure Failed(const std::string& what, const std::string& next) {
  return WithNothing("changed", {ExitCode::Failure, what, next});
}

// A question about the checkout got no answer: what is wrong with the server, or that nothing else is.
[[nodiscard]] Failure Unanswered(Host& host, const std::string& uid, const std::string& what) {
  if (auto failure = DiagnoseServer(host, VtDirectManager::GetServerURL(uid.c_str()))) return *failure;
  return Failed(what, againAdvice);
}

[[nodiscard]] Failure NotFoundOut(Host& host, const std::string& address, const std::string& uid) {
  return Unanswered(
      host, uid,
      WithWords("you have " + address + " checked out, and its working copy could not be found out"));
}

[[nodiscard]] Failure Several(const std::string& address, const Copies& copies) {
  std::string names;
  for (const auto& copy : copies) {
    names += (names.empty() ? "" : " and ") + (copy.uid.empty() ? copy.workspaceName : copy.uid);
  }
  return Failed("there are several working copies of " + address + ", and none is kept here: " + names,
                "give the UID of the one that is meant");
}

[[nodiscard]] Failure WithoutDocument(const std::string& address, const std::string& uid,
                                      const std::string& workspaceName) {
  return Failed("you have " + address + " checked out in the temporary workspace " + workspaceName +
                    ", and the server does not tell from which document that working copy was taken",
                CommandToType("browse-url", uid) + " tells where its page is");
}

// A user who holds a document sees it in each workspace that shows it, and only one of them has the copy.
[[nodiscard]] Failure OnlyShown(const std::string& address, const FoundCopy& copy) {
  return Failed(address +
                    " is no working copy: the workspace only shows the document, which you have checked "
                    "out in the temporary workspace " +
                    copy.workspaceName,
                "its working copy is " + copy.uid);
}

[[nodiscard]] bool IsHeldByUser(VtDirectManager::VtCheckoutStatus status) {
  return status == VtDirectManager::CheckoutByUserUnrecorded ||
         status == VtDirectManager::CheckoutInWorkspace;
}

}  // namespace

Result<FoundCopy> SearchForCopy(Host& host, const std::string& address, const std::string& uid) {
  ForgetReasons();
  const VtDirectManager::Outcome outcome;
  const auto copies = VtDirectManager::FindTemporaryCheckouts(uid.c_str());
  // A list that can't be read is not an empty one.
  if (!copies || AQuestionFailed(outcome)) return NotFoundOut(host, address, uid);
  if (copies->empty()) return FoundCopy{};
  if (copies->size() > 1) return Several(address, *copies);
  const auto& copy = copies->front();
  if (copy.uid.empty()) return WithoutDocument(address, uid, copy.workspaceName);
  return FoundCopy{copy.uid, copy.workspaceName};
}

Result<FoundCopy> CopyToGoOnWith(Host& host, const std::string& address,
                                 VtDirectManager::VtCheckoutStatus status, const std::string& uid) {
  if (IsTemporaryCopy(uid)) return FoundCopy{uid, {}};
  if (status == VtDirectManager::CheckoutStatusFailed && PresenceOf(uid) != Presence::Gone) {
    return Unanswered(host, uid, "the state of the checkout of " + address + " could not be found out");
  }
  if (!IsHeldByUser(status)) return FoundCopy{uid, {}};
  const auto found = SearchForCopy(host, address, uid);
  if (!found) return found;
  if (found->uid.empty()) return FoundCopy{uid, {}};
  if (HasWorkspace(uid) && !AreSameUid(uid, ByOwnId(found->uid))) return OnlyShown(address, *found);
  host.output().Note("you have " + address + " checked out in the temporary workspace " +
                     found->workspaceName + ", which is not kept here; its working copy is " + found->uid);
  return found;
}

}  // namespace vtdirect_cli
