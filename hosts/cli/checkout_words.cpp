#include "hosts/cli/checkout_words.h"

#include <vtdirect/vt_direct_manager.h>

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

CheckoutState ReadCheckoutState(const std::string& address) {
  CheckoutState state;
  state.state = CheckoutWord(VtDirectManager::GetCheckoutStatus(address.c_str(), &state.user));
  return state;
}

}  // namespace vtdirect_cli
