#pragma once

#include <cstdint>
#include <string>

namespace vtdirect_cli {

/// Where a checkout stands, in words.
struct CheckoutState {
  std::string state;  ///< none, by-you, by-other, temporary-workspace, workspace, not-possible, unsupported
                      ///< or unknown
  std::string user;   ///< who holds it; empty without one
};

/// Asks the server. Makes requests.
[[nodiscard]] CheckoutState ReadCheckoutState(const std::string& address);

/// The word for a VtCheckoutStatus.
[[nodiscard]] const char* CheckoutWord(std::int32_t status);

}  // namespace vtdirect_cli
