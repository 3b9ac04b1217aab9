#include "hosts/cli/checkouts/checkout_words.h"

#include "hosts/cli/failures/reasons.h"

namespace vtdirect_cli {

const char* CheckoutWord(std::int32_t status) {
  switch (status) {
    case VtDirectManager::CheckoutNone:
      return "none";
    case VtDirectManager::CheckoutByUserUnrecorded:
      return "by-you";
    case VtDirectManager::CheckoutByOther:
      return "by-other";
    case VtDirectManager::CheckoutInTempWorkspace:
      return "temporary-workspace";
    case VtDirectManager::CheckoutInWorkspace:
      return "workspace";
    case VtDirectManager::CheckoutUnsupported:
      return "unsupported";
    case VtDirectManager::CheckoutNotPossible:
      return "not-possible";
    default:
      return "unknown";
  }
}

bool IsWorkingCopy(VtDirectManager::VtCheckoutStatus status) {
  return status == VtDirectManager::CheckoutInWorkspace || status == VtDirectManager::CheckoutInTempWorkspace;
}

CheckoutState ReadCheckoutState(const std::string& address) {
  const VtDirectManager::Outcome outcome;
  CheckoutState state;
  state.status = VtDirectManager::GetCheckoutStatus(address.c_str(), &state.user);
  // What the server did not answer shows no checkout, and the library takes that for none.
  if (AQuestionFailed(outcome)) return {};
  return state;
}

bool HasEnded(VtDirectManager::VtCheckoutStatus status) {
  return status == VtDirectManager::CheckoutNone || status == VtDirectManager::CheckoutByOther ||
         status == VtDirectManager::CheckoutNotPossible;
}

}  // namespace vtdirect_cli
