#pragma once

#include <optional>
#include <string>

#include "platform/http_settings.h"

namespace lxservices::cms_interface::vantry {

/// What an address becomes that a server names for a content, a next page or an upload. A file and the nonce
/// that go to an "http" address can be read and changed by anybody on the way, so a server that was asked by
/// "https" can't have them sent there by its word alone. Pure.
/// @param server  URL of the server that names it
/// @param url     the address, or the part of it before the path
/// @return nothing for an address that is refused
[[nodiscard]] std::optional<std::string> AddressToAsk(const std::string& server, const std::string& url,
                                                      du::http::HttpAddresses rule);

/// The rule of the platform's settings. A platform of a host's own may have no such settings: what leaves this
/// machine is then its affair alone, as it always was, and addresses are asked as they are.
[[nodiscard]] du::http::HttpAddresses HttpAddressRule();

}  // namespace lxservices::cms_interface::vantry
